# SPDX-License-Identifier: MIT
# Extracts the fenced blocks of a document. The words after the language say what a block is for:
#
#   ```cpp                 statements, run as part of a test
#   ```ini before          settings.ini becomes this
#   ```ini after           settings.ini is expected to be this
#   ```text console        what the statements above write to the console log; numbers may differ
#   ```text debugger       ... and to the debugger
#   ```LANGUAGE FILE       a file of a project that the document describes
#
# In statements, "EXPRESSION;  // == VALUE" and "EXPRESSION;  // throws TYPE" are checked.
#
# Prints a source file with one test for each heading that has statements below it. With -v project=FOLDER it
# writes the project's files instead. A block of another kind is an error.

function raw(text) { return "R\"~~(" text ")~~\"" }

# Adds code to the test, with the place of the block in the document.
function add(code) { body = body "#line " first " \"" FILENAME "\"\n" code }

function flush_test() {
    if (index(body, "Run();"))
        tests = tests "\nTEST_F(Document, " name "_line" start ")\n{\n" body "}\n"
    body = ""
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
    text = ""
    first = FNR + 1
    next
}

in_block && /^```$/ {
    in_block = 0
    if (role ~ /^[a-z]+ [^ ]*\.[^ ]*$/) {
        if (project != "") {
            path = project "/" substr(role, index(role, " ") + 1)
            system("mkdir -p \"$(dirname '" path "')\"")
            printf "%s", text > path
            close(path)
        }
    } else if (role == "cpp") {
        body = body "Run();\n"
        add(text "Ran();\n")
    } else if (role == "ini before")
        add("Write(" raw(text) ", \"settings.ini\");\n")
    else if (role == "ini after")
        add("EXPECT_EQ(Read(\"settings.ini\"), " raw(text) ");\n")
    else if (role == "text console" || role == "text debugger")
        add("EXPECT_EQ(m_" substr(role, 6) ", Figures(" raw(text) "));\n")
    else
        includes = includes "#error " FILENAME ":" first - 1 ": unknown kind of block: " role "\n"
    next
}

in_block && role == "cpp" && match($0, /;  *\/\/ (==|throws) /) {
    check = substr($0, RSTART + RLENGTH - 3, 2) == "==" ? "EXPECT_EQ(" : "EXPECT_THROW("
    $0 = check substr($0, 1, RSTART - 1) ", " substr($0, RSTART + RLENGTH) ");"
}
in_block && role == "cpp" && /^#include/ { includes = includes $0 "\n"; $0 = "" }
in_block { text = text $0 "\n" }

END {
    flush_test()
    if (project == "")
        print includes "#include \"tests/docs/Document.h\"\n" tests
}
