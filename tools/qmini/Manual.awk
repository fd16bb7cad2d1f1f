# SPDX-License-Identifier: MIT
# Makes the manual page of Help.txt.
#
#   awk -v date=DATE -v version=VERSION -f Manual.awk Help.txt

BEGIN {
    printf ".TH QMINI 1 %s \"qmini %s\"\n.SH NAME\nqmini \\- read and edit INI files\n", date, version
    print ".SH SYNOPSIS\n.B qmini\n.I COMMAND FILE\n[\\fIARGUMENT\\fR...]\n.SH COMMANDS"
}
NR == 1 || /^\)"$/ { next } # the ends of the string
/^$/ {
    isAfterEmpty = 1
    next
}
{
    gsub(/\\/, "\\e")
    gsub(/-/, "\\-")
}
sub(/^usage: qmini /, "") {
    print ".SS \"" $0 "\""
    next
}
/^[A-Z][a-z ]*:$/ {
    print ".SH " toupper(substr($0, 1, length($0) - 1)) (/^Examples/ ? "\n.nf" : "")
    next
}
/^[^ ]/ && isAfterEmpty { print ".PP" }
/^  \\- / { print ".IP \\(bu 2" }
/^  [^ \\]|^  \\-[^ ]/ { # a term, two blanks or more, its meaning
    match($0, /^  [^ ]+( [A-Z]+)?/)
    print ".TP 4\n.B " substr($0, 3, RLENGTH - 2)
    $0 = substr($0, RLENGTH + 1)
}
{
    sub(/^ +(\\- )?/, "")
    print "\\&" $0 # or a "." or "'" at the start of a line is a request
    isAfterEmpty = 0
}
