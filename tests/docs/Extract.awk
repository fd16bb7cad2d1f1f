# SPDX-License-Identifier: MIT
# Extracts the fenced blocks of a document. The words after the language say what a block is for:
#
#   ```cpp                 statements, run as part of a test
#   ```ini before          settings.ini becomes this; "ini before, cut" leaves the last newline out
#   ```ini after           settings.ini is expected to be this
#   ```ini rewritten       ... once INIParser has rewritten it
#   ```text console        what the statements above write to the console log; numbers may differ
#   ```text debugger       ... and to the debugger
#   ```LANGUAGE FILE       a file of a project that the document describes
#
# In statements, "EXPRESSION;  // == VALUE" and "EXPRESSION;  // throws TYPE" are checked.
#
# Prints a source file with one test for each heading that has statements below it. With -v project=FOLDER it writes
# the project's files instead. A block of another kind is an error.

function raw(text) { return "R\"~~(" text ")~~\"" }

function flush_test() {
    if (has_statements)
        tests = tests "\nTEST_F(Document, " name "_line" start ")\n{\n" body "}\n"
    body = ""
    has_statements = 0
    start = FNR
}

FNR == 1 {
    name = FILENAME
    gsub(/.*\/|\.md$/, "", name)
    gsub(/[^A-Za-z0-9]/, "_", name)
    start = 1
}

!in_block && /^#/ { flush_test() }

!in_block && /^```./ {
    in_block = 1
    role = substr($0, 4)
    file = (role ~ /^[a-z]+ [^ ]*\.[^ ]*$/) ? substr(role, index(role, " ") + 1) : ""
    text = ""
    first = FNR + 1
    next
}

in_block && /^```$/ {
    in_block = 0
    if (file != "" && project != "") {
        path = project "/" file
        folder = path
        sub(/\/[^\/]*$/, "", folder)
        system("mkdir -p '" folder "'")
        printf "%s", text > path
        close(path)
    } else if (role == "cpp") {
        body = body "    Run();\n#line " first " \"" FILENAME "\"\n" text "Ran();\n"
        has_statements = 1
    } else if (role == "ini before")
        body = body "    Write(" raw(text) ", \"settings.ini\");\n"
    else if (role == "ini before, cut")
        body = body "    Write(" raw(substr(text, 1, length(text) - 1)) ", \"settings.ini\");\n"
    else if (role == "ini after" || role == "ini rewritten")
        body = body (role == "ini after" ? "" : "    INIParser::DeleteSection(\"none of this name\", \"settings.ini\");\n") \
            "    Expect(" first ", Read(\"settings.ini\"), " raw(text) ");\n"
    else if (role == "text console")
        body = body "    Expect(" first ", m_console, Figures({" raw(text) "}));\n"
    else if (role == "text debugger")
        body = body "    Expect(" first ", m_debugger, Figures({" raw(text) "}));\n"
    else if (file == "")
        includes = includes "#error " FILENAME ":" first - 1 ": unknown kind of block: " role "\n"
    next
}

in_block && role == "cpp" && match($0, /;  *\/\/ (==|throws) /) {
    value = substr($0, RSTART + RLENGTH)
    $0 = (substr($0, RSTART + RLENGTH - 3, 2) == "==" ? "EXPECT_EQ(" : "EXPECT_THROW(") substr($0, 1, RSTART - 1) ", " value ");"
}
in_block && role == "cpp" && /^#include/ { includes = includes $0 "\n"; next }
in_block { text = text $0 "\n" }

END {
    flush_test()
    if (project == "")
        print includes "#include \"tests/docs/Document.h\"\n" tests
}
