# SPDX-License-Identifier: MIT
# Makes the manual page of Help.txt.
#
#   awk -v date=DATE -v version=VERSION -f Manual.awk Help.txt

BEGIN {
    printf ".TH QMINI 1 %s \"qmini %s\"\n.SH NAME\nqmini \\- read and edit INI files\n", date, version
    print ".SH SYNOPSIS\n.B qmini\n.I COMMAND FILE\n[\\fIARGUMENT\\fR...]\n.SH COMMANDS"
}
NR == 1 || /^\)"$/ { next } # the ends of the string
{
    isEmpty = $0 == ""
    gsub(/\\/, "\\e")
    gsub(/-/, "\\-")
}
sub(/^usage: qmini /, "") {
    gsub(/"/, "\\(dq")
    print ".SS \"" $0 "\""
    isFirst = 1
    next
}
/^[A-Z][a-z ]*:$/ {
    print (inExamples ? ".fi\n" : "") ".SH " toupper(substr($0, 1, length($0) - 1))
    inExamples = /^Examples/
    if (inExamples)
        print ".nf"
    isFirst = 1
    next
}
isEmpty {
    pending = 1
    next
}
inExamples {
    print "\\&" substr($0, 3)
    next
}
/^  \\- / { print ".IP \\(bu 2" }
/^  [^ \\]|^  \\-[^ ]/ { # a term, two blanks or more, its meaning
    match($0, /^  [^ ]+( [A-Z]+)?/)
    print ".TP 4\n.B " substr($0, 3, RLENGTH - 2)
    $0 = substr($0, RLENGTH + 1)
}
/^[^ ]/ && pending && !isFirst { print ".PP" }
{
    sub(/^ +(\\- )?/, "")
    print "\\&" $0 # or a "." or "'" at the start of a line is a request
    pending = isFirst = 0
}
END { print ".fi" }
