// SPDX-License-Identifier: MIT
#include "tests/qmini/Qmini.h"

#include <iostream>
#include <tuple>

using namespace std::string_literals;

namespace {

TEST_F(Qmini, AnswersOrSaysWhyNot) {
    const std::string text =
        "top=1\n[S]\n k = a \"b\"\\\n#[T]\nx=3\n#old=2\n[N N]\nk=1\nk=2\n m\n[S]\n#x=4\n"
        "[E]\nlong=a\n b\nl2=\n l3=\n";
    Write(text, "f");
    Write("k\0=1\n"s, "bin");
    // What is said: all of it when it is empty or ends in a newline, else its beginning.
    const std::tuple<std::string, int, std::string> cases[] = {
        {"get|f|S|k", 0, "a \"b\"\\\n"},
        {"get|f|T|old|--commented", 0, "2\n"},
        {"get|f|S|old|--default=|", 0, "\n"},
        {"get|f|T|old", 1, "qmini: key \"old\" in section \"T\" of f is commented out\n"},
        {"get|f|S|K", 1, "qmini: no key \"K\" in section \"S\" of f; did you mean \"k\"?\n"},
        {"get|f|n\nn|k", 1, "qmini: no section \"n?n\" in f\n"},
        {"--parser|get|f|S|k ", 0, " a \"b\"\\\n"},
        {"get|-|S|k|--parser<k=1\n[\n", 1, "qmini: standard input:2: header without \"]\"\n"},
        {"get|bin||k", 1, "qmini: cannot read bin: binary file or UTF-16?\n"},
        {"keys|f|N N|-z", 0, "k\0"s},
        {"keys|f|T|--commented", 0, "old\n"},
        {"sections|f|--commented", 0, "S\nT\nN N\nE\n"},
        {"list|f", 0, "top=1\nS.k=a \"b\"\\\nS.x=3\nN N.k=1\nN N.k=2\nE.long=a\nE.l2=\nE.l3=\n"},
        {"list|f|S|-z", 0, "S.k\na \"b\"\\\0S.x\n3\0"s},
        {"list|f||", 0, "top=1\n"},
        {"list|-|--json<j=\xC3\xA9\n#l=\n[\"]\n[\\]\nk=\x1F\nk=2\n[\"]\nk=\x07\nj=", 0,
         "{\n  \"\": {\n    \"j\": \"\xC3\xA9\"\n  },\n  \"\\\"\": {\n    \"k\": \"\\u0007\",\n    \"j\": "
         "\"\"\n  },\n"
         "  \"\\\\\": {\n    \"k\": \"\\u001f\"\n  }\n}\n"},
        {"list|-|E|--json<[S]\n[E]", 0, "{\n  \"E\": {}\n}\n"},
        {"list|-|--json<k=\xFF\n", 1, "qmini: standard input: not UTF-8, so no JSON: \"\xFF\"\n"},
        {"check|-<; note\r\n\r\n[S]\r\nk=v ]\n#c=1\n;[S]\n;k=v=w\n  \t\nd=\\\n", 0, ""},
        {"check|f|--quiet", 1, ""},
        {"check|-<[S]\nk=1\n[T]\nk=1\n[S]\nk=2\nk=3\n;k=4\n", 1,
         "standard input:5: duplicate section \"S\": first in line 1\n"
         "standard input:6: duplicate key \"k\" in section \"S\": first in line 2\n"
         "standard input:7: duplicate key \"k\" in section \"S\": first in line 2\n"},
        {"check|-<\xEF\xBB\xBF[S\n#k=1\nk=2\ntext\n[T] x\nl=\\\ne=\\\\\nf=1\n  g=2\n h", 1,
         "standard input:1: byte order mark: INIParser reads it as text\n"
         "standard input:1: header without \"]\"\n"
         "standard input:3: key \"k\" in section \"\": INIParser finds commented-out line 2\n"
         "standard input:4: neither a header nor a key nor a comment\n"
         "standard input:5: text after \"]\": \"x\"\n"
         "standard input:7: continuation line: the line above ends in a backslash\n"
         "standard input:9: continuation line: it is indented deeper than the key above\n"
         "standard input:10: continuation line: it is indented deeper than the key above\n"
         "standard input:10: last line without a newline: INIParser does not read it\n"},
        {"check|-<#[B]\nz=3\ny=1\r=x\n", 1,
         "standard input:2: INIParser reads it in section \"B\"\n"
         "standard input:3: carriage return inside the line: many programs end it there\n"
         "standard input:3: INIParser reads it in section \"B\"\n"},
        {"check|-<k=x[1]\n# see [b\n[ S ]\n[a=b]\nk =v\n# a = b\n", 1,
         "standard input:1: INIParser reads the header of section \"=x[1\"\n"
         "standard input:2: INIParser cannot read the file: \"[\" without \"]\"\n"
         "standard input:3: INIParser reads the header of section \" S \"\n"
         "standard input:4: INIParser reads the header of section \"a=b\"\n"
         "standard input:5: INIParser reads key \"k \" with value \"v\"\n"
         "standard input:6: INIParser reads key \"a \" with value \" b\"\n"},
        {"frob", 2, "qmini: no command \"frob\"; "},
        {"set|f|S|k", 2, "qmini: set: missing VALUE\nusage: qmini set FILE SECTION KEY VALUE [--force]"},
        {"get|f|S|k|v", 2, "qmini: get: one argument too many: \"v\"\nusage: qmini get FILE"},
        {"set|f|S|k|--v", 2, "qmini: set: no option --v; after \"--\" it is an argument\nu"},
        {"get|f|S|k|--default", 2, "qmini: get: missing the value of --default\nusage: "},
        {"get|f|S||", 2, "qmini: get: an empty argument cannot"},
        {"set|f|S|a=b|v", 2, "qmini: \"a=b\" cannot be the name of a key\n"},
        {"set|f|S|k|a[0]|--parser", 2, "qmini: \"a[0]\" cannot be a value\n"},
        {"set|f|S|a|b\rc", 2, "qmini: \"b?c\" holds a carriage return\n"},
        {"add|f||", 2, "qmini: \"\" cannot be the name of a section\n"},
        {"note|f|S|k|a\nb=c", 2, "qmini: a note cannot hold"},
        {"comment|f|S|--with|x", 2, "qmini: --with takes"},
        {"rename|f||X", 1, "qmini: the keys above the first header have no header\n"},
        {"rename|f|S|N N", 1, "qmini: section \"N N\" exists already in f\n"},
        {"uncomment|f|S|k", 1, "qmini: \"k\" is active\n"},
        {"set|f|N N|k|3", 3, "qmini: f:9: one of several lines of key \"k\"; --force edits the first line\n"},
        {"set|f|E|long|c", 3, "qmini: f:15: continues the value of key \"long\"\n"},
        {"comment|-|S|k<[S]\nk=a\\\nb=1\n", 3,
         "qmini: standard input:3: continues the value of key \"k\"; --"},
        {"comment|-|A|z<[A]\n#[B]\nz=3\n", 3, "qmini: standard input:3: refused, since a line"},
        {"delete|-|S|k<[S]\nk=a\n\n# c\n  more\n", 3,
         "qmini: standard input:5: continues the value of key \"k\"\n"},
        {"uncomment|-||j<k=1\n#j=2\n  l\n", 3, "qmini: standard input:3: continues the value of key \"j\"\n"},
        {"sort|-|--descending<b=1\n\xEF\xBB\xBF=2\n", 3,
         "qmini: standard input: refused, since a line would"},
        {"create|f", 1, "qmini: f exists already\n"},
        {"create|new|--dry-run", 0, ""},
        {"get|new||k", 1, "qmini: cannot read new: "},
        {"create|new", 0, ""},
        {"create|-", 1, "qmini: standard input exists already\n"},
        {"list|new", 0, ""},
        {"sort|.", 1, "qmini: cannot edit .: no regular file\n"},
        {"edit|-", 2, "qmini: edit takes its commands from standard input"},
        {"edit|f<add N\nset S 'k", 2, "qmini: line 2: no closing '"},
        {"edit|f<get S k", 2, "qmini: line 1: \"get\" does not edit"},
        {"edit|f<set S a b --force", 2, "qmini: line 1: set: --dry-run"},
        {"edit|f<set S a 'b\0c'"s, 2, "qmini: line 1: \"b?c\" holds a NUL\n"},
        {"edit|f<set E z 1\nrename 'N N' R\nset R k 1", 3, "qmini: line 3: f:9: one of several lines"},
        {"edit|f<set E l2 1", 3, "qmini: line 1: f:17: continues the value of key \"l2\"\n"},
        {"edit|f<set S y 1\nuncomment S x\nset S x 1", 3, "qmini: line 3: f:13: one of several lines"},
    };
    for (const auto& [call, code, expected] : cases) {
        const auto [result, said] = Run(call);
        EXPECT_EQ(result, code) << call << said;
        EXPECT_EQ(expected.empty() || expected.ends_with('\n') ? said : said.substr(0, expected.size()),
                  expected)
            << call;
    }
    EXPECT_EQ(Read("f"), text);

    std::istream none(nullptr);
    std::ostream full(nullptr);
    std::ostringstream out;
    EXPECT_EQ(qmini::Run({"-h"}, {none, full, out}), 1);
    EXPECT_EQ(out.str(), "qmini: cannot write to standard output\n");
    EXPECT_EQ(qmini::Run({"list", "-"}, {none, full, out}), 1);
    EXPECT_TRUE(out.str().ends_with("qmini: cannot read standard input\n"));
}

TEST_F(Qmini, EditsWriteWhatDryRunsShow) {
    const std::string batch =
        "<# c\r\n\tset S k 'a \"b\"'\"c\"\r\n\nadd 'N N'\nset S j 1\nset S j 2\ndelete S k\nset S k 3\n";
    // The difference is that of the dry run, without its first two lines, or empty.
    const std::tuple<std::string, std::string, std::string, std::string, std::string> cases[] = {
        {"set", "|S|k|--|--v", "\xEF\xBB\xBF[S] ; c\r\n\r\nk = 1\r\nx",
         "\xEF\xBB\xBF[S] ; c\r\n\r\nk = --v\r\nx", ""},
        {"set", "|S|k|2", "[S]\n;k=1\nj = 3", "[S]\n;k=1\nk = 2\nj = 3",
         "@@ -1,3 +1,4 @@\n [S]\n ;k=1\n+k = 2\n j = 3\n\\ No newline at end of file\n"},
        {"set", "|S|k|-h|--force", "[S]\nk=1\n k=2\n", "[S]\nk=-h\n k=2\n", ""},
        {"set", "|S|k|2|--parser", "[S]\nk=1\n#[T]\nk=1\n[", "[S]\nk=2\n#[T]\nk=1\n[", ""},
        {"add", "|N", "", "[N]\n", "@@ -0,0 +1,1 @@\n+[N]\n"},
        {"delete", "|S|k", "[S]\n# c\n\n# d\nk=1\n  more\nj=2\n", "[S]\n# c\n\nj=2\n",
         "@@ -1,7 +1,4 @@\n [S]\n # c\n \n-# d\n-k=1\n-  more\n j=2\n"},
        {"delete", "|S", "[S]\nk=1", "", "@@ -1,2 +0,0 @@\n-[S]\n-k=1\n\\ No newline at end of file\n"},
        {"rename", "|S|T", "1\n2\n3\n4\n[ S ]\na=\n[S] x\n5\n6\n7\n8\n",
         "1\n2\n3\n4\n[ T ]\na=\n[T] x\n5\n6\n7\n8\n",
         "@@ -2,9 +2,9 @@\n 2\n 3\n 4\n-[ S ]\n-a=\n-[S] x\n+[ T ]\n+a=\n+[T] x\n 5\n 6\n 7\n"},
        {"comment", "|S|k", "[S]\n k=1\nk=2\n", "[S]\n #k=1\nk=2\n", ""},
        {"comment", "|S|--with=;", "[S]\nk=1\n", ";[S]\n;k=1\n", ""},
        {"uncomment", "|S|k", "[S]\n; k=1\n", "[S]\nk=1\n", ""},
        {"uncomment", "|S", "#[S]\n#k=1\n", "[S]\nk=1\n", ""},
        {"sort", "", "[b]\n[a]\n", "[a]\n[b]\n", ""},
        {"sort", "|--descending", "[a]\nx=2\ny=1\n", "[a]\ny=1\nx=2\n", ""},
        {"note", "|S|k|one\n\n; two\n", "[S]\n; old\nk=1\n", "[S]\n; one\n;\n; two\nk=1\n", ""},
        {"note", "|S||", "; old\n[S]\n", "[S]\n", ""},
        {"edit", "|--force<set S k 3", "[S]\nk=1\nk=2\n", "[S]\nk=3\nk=2\n", ""},
        {"edit", "|--parser<set S k 3", "[S]\nk =0\nk=1\n", "[S]\nk =0\nk=3\n", ""},
        {"edit", batch, "[S]\nk=1\n", "[S]\nj=2\nk=3\n\n[N N]\n", ""},
    };
    const auto withoutReturns = [](std::string text) {  // of the platform's newlines
        std::erase(text, '\r');
        return text;
    };
    for (const auto& [command, words, before, after, difference] : cases) {
        const std::string call = command + "|my f" + words;
        Write(before, "my f");
        const auto [dryCode, shown] = Run(command + "|--dry-run|my f" + words);
        EXPECT_TRUE(withoutReturns(shown).starts_with("--- my f\t\n+++ my f\t\n" + difference))
            << call << shown;
        EXPECT_EQ(Read("my f"), before) << call << dryCode;
        EXPECT_EQ(Run(call), std::pair(0, ""s)) << call;
        EXPECT_EQ(Read("my f"), after) << call;
        if (command != "edit") {
            EXPECT_EQ(withoutReturns(Run(command + "|-" + words + "<" + before).second),
                      withoutReturns(after));
        }
    }
}

}  // namespace
