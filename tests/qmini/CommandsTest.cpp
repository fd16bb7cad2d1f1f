// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "qmini/Check.h"
#include "qmini/Difference.h"
#include "tests/qmini/Qmini.h"

#include <algorithm>
#include <iostream>
#include <tuple>

namespace {

TEST(Check, FindsWhatIsSurprising)
{
    using namespace std::string_literals;
    // Each finding begins with its line and the initial of its kind; its text may go on.
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"; note\r\n\r\n[S]\r\nk\f=v ]\n#c=1\n;[T]\n;k=v=w\n  \t", {}},
        {"[S]\n# a\n\nx\n; b\nk=v",
         {"2L comments below", "4L neither a header nor a key: dropped", "6L last"}},
        {"[ S]\n=v\n", {"1O blanks inside the brackets", "2L no key before \"=\": an edit turns"}},
        {"x[1]\n# see [b]\n", {"1L \"[\" inside the line", "2L comment with \"[\": read as the header"}},
        {"# c\n[a=b]\n", {"2L comments above a header", "2L header with \"=\" in its name"}},
        {"a b =v\n# say a = b\n", {"1O blanks next to \"=\"", "2O comment with \"=\": read as"}},
        {"[S]\nk=1\n;[S]\n k=3\n", {"3O duplicate section", "4O duplicate key \"k\" in section \"S\""}},
        {"x\n", {"1L neither a header nor a key: an edit turns it into the header"}},
        {"[S]\na=1\n#b=1\nc=2\nd=3\n", {"4N an edit indents active lines"}},
        {"\xEF\xBB\xBFk=1\n a\0=1\n"s, {"1L byte order mark", "2L NUL byte"}},
        {"\xFF\xFE[\0\n\0"s, {"1L UTF-16"}},
    };
    const auto begins = [](const qmini::Finding& finding, const std::string& expected) {
        const char kind = "NOLM"[static_cast<int>(finding.What)];
        return (std::to_string(finding.Line) + kind + ' ' + finding.Text).starts_with(expected);
    };
    for (const auto& [text, expected] : cases)
        EXPECT_TRUE(std::ranges::equal(qmini::Check(text, qmini::Kind::Note), expected, begins)) << text;
}

// Every text of four characters that matter, alone and inside a file.
TEST_F(TemporaryFolder, ARewriteKeepsEveryLineUnlessALossIsFound)
{
    const auto normalized = [](const std::string& text) { // without blanks, so without blank lines
        std::string lines = '\n' + text + '\n';
        std::erase(lines, ' ');
        const auto areNewlines = [](char a, char b) { return a == '\n' && b == '\n'; };
        lines.erase(std::unique(lines.begin(), lines.end(), areNewlines), lines.end());
        return lines;
    };
    const std::string alphabet = "[]=# a\n";
    for (std::size_t number = 0; number != std::size_t{7} * 7 * 7 * 7; ++number) {
        std::string text;
        for (std::size_t rest = number; text.size() != 4; rest /= 7)
            text += alphabet[rest % 7];
        for (const std::string& whole : {text, "# c\n" + text + "\nk=v\n"}) {
            const auto losses = qmini::Check(whole, qmini::Kind::Loss);
            if (std::ranges::count(losses, qmini::Kind::Malformed, &qmini::Finding::What) != 0)
                continue;
            std::filesystem::remove(Path("test.ini")); // a new file is written faster than an old one emptied
            INIDocument document;
            ASSERT_TRUE(document.Load(Write(whole)));
            ASSERT_EQ(normalized(document.SavedText()) == normalized(whole), losses.empty()) << whole;
        }
    }
}

TEST_F(Qmini, AnswersOrSaysWhyNot)
{
    const std::string text = "top=1\n; c\n [S]\n k=a b\n x =1\n#old=2\n\n [T] x\n [S]\n k=3\n old=4\n";
    Write(text, "f");
    Write("k = v\n[S]\n# c\n[T\n", "bad");
    const std::string heading = "--- standard input\t\n+++ standard input\t\n";
    // What is said: all of it when it ends in a newline, else its beginning.
    const std::tuple<const char*, int, std::string> cases[] = {
        {"get|f|S|k", 0, "a b\n"},
        {"get|f|S|old", 0, "2\nqmini: note: key \"old\" in section \"S\" is commented out, an active"},
        {"get|f|S|z|--default|d", 0, "d\n"},
        {"keys|f|S", 0, "k\nx \nold\nk\nold\n"},
        {"sections|f|-z", 0, std::string("S\0T\0S\0", 6)},
        {"frob", 2, "qmini: no command \"frob\"; "},
        {"note|f|S", 2, "qmini: note: missing TEXT\nusage: qmini note FILE SECTION [KEY] TEXT [--dry-run]"},
        {"get|f|S|k|v", 2, "qmini: get: one argument too many: \"v\"\nusage: qmini get FILE"},
        {"get|f|S|k|--dry-run", 2, "qmini: get: no option --dry-run\nusage: "},
        {"get|f|S|k|--default", 2, "qmini: get: missing --default TEXT\nusage: "},
        {"delete|f|S||", 2, "qmini: delete: an empty argument"},
        {"get|f|S|X", 1, "qmini: no key \"X\" in section \"S\" of f; did you mean \"x \"?\n"},
        {"rename|f|s|U", 1, "qmini: no section \"s\" in f; did you mean \"S\"?\n"},
        {"get|f|a\nb|z", 1, "qmini: no section \"a?b\" in f\n"},
        {"rename|f|S|a\nb", 2, "qmini: a section name cannot hold"},
        {"set|f|S|a=b|v", 2, "qmini: a key cannot hold"},
        {"set|f|S|;k|v", 2, "qmini: a key cannot begin with"},
        {"set|f|S|k|a[0]", 2, "qmini: a value cannot hold"},
        {"set|f|S|k|v\r", 2, "qmini: a value cannot end with"},
        {"note|f|S|a\nb=c", 2, "qmini: a comment cannot hold"},
        {"check|bad", 1, "bad:1: warning: blanks"},
        {"get|bad|S|k", 1, "qmini: bad:4: header without \"]\""},
        {"set|bad|S|k|v", 3, "qmini: bad:4: header without \"]\""},
        {"edit|f<\nset S old 2", 3,
         "qmini: f: refused (--force does it anyway, --dry-run shows it):\nf:8: text after \"]\": lost "
         "by an edit: \"x\"\nline 2: key \"old\" is commented out, an active one follows: say --activate"},
        {"create|f", 1, "qmini: f exists already\n"},
        {"create|new|--dry-run", 0, ""},
        {"create|new", 0, ""},
        {"sort|.|--dry-run", 1, "qmini: cannot read .: "},
        {"set|-|S|k|v<[S]\n", 0, " [S]\n k=v\n"},
        {"add|-|N|--dry-run<", 0, heading + "@@ -0,0 +1,1 @@\n+ [N]\n"},
        {"set|-|N|k|v|--dry-run|--force<[", 0,
         heading + "@@ -1,1 +1,2 @@\n-[\n\\ No newline at end of file\n+ [N]\n+ k=v\n"},
        {"rename|-|S|T|--dry-run<\n [S]\n a=\n b=\n c=\n d=\n e=\n f=\n [S]\n a=\n b=\n c=\n d=\n e=\n f=\n "
         "g=\n [S]\n",
         0,
         heading + "@@ -1,12 +1,11 @@\n-\n- [S]\n+ [T]\n  a=\n  b=\n  c=\n  d=\n  e=\n  f=\n- [S]\n+ [T]\n  "
                   "a=\n  b=\n  c=\n@@ -14,4 +13,4 @@\n  e=\n  f=\n  g=\n- [S]\n+ [T]\n"},
        {"edit|-", 2, "qmini: edit takes its commands from standard input"},
        {"edit|f<add N\nadd S", 1, "qmini: line 2: section \"S\" exists already"},
        {"edit|f<add N\nset S 'k", 2, "qmini: line 2: no closing '"},
        {"edit|f<get S k", 2, "qmini: line 1: \"get\" does not edit"},
        {"edit|f<add N --force", 2, "qmini: line 1: add: --dry-run"},
    };
    for (const auto& [call, code, said] : cases) {
        EXPECT_EQ(Run(call), code) << call;
        EXPECT_EQ(said.ends_with('\n') ? m_said : m_said.substr(0, said.size()), said) << call;
    }
    EXPECT_EQ(Read("f"), text);

    std::ostream full(nullptr);
    EXPECT_EQ(qmini::Run({"-h"}, {std::cin, full, full}), 1);
}

TEST_F(Qmini, EditsWriteWhatDryRunsShow)
{
    const std::string batch = "<# c\r\n\tset --activate S k 'a \"b\"'\"c\"\r\n\nadd 'N N'";
    // Edits with the code 3 are refused, and made with --force.
    const std::tuple<std::string, std::string, int, std::string, std::string> cases[] = {
        {"set", "|N|k|--|--v", 0, "[S]\n", " [S]\n [N]\n k=--v\n"},
        {"set", "|S|k|2|--keep-commented", 0, "[S]\n;k=1\nk=3\n", " [S]\n;k=2\n k=3\n"},
        {"set", "|S|k|2|--activate", 0, "[S]\n;k=1\n", " [S]\n k=2\n"},
        {"set", "|S|x|2", 3, "[S]\nx = 1\n", " [S]\n x=2\n x = 1\n"},
        {"set", "|E|k|2", 3, "[E]\nk=1\nk[de]=\n# x", " [E]\n k=2\n [[de]\n"},
        {"add", "|N", 3, "\xEF\xBB\xBF[S]\n", " [\xBB\xBF[S]\n [N]\n"},
        {"delete", "|S|k", 3, "[S]\n#k=1\nk=2\n", " [S]\n k=2\n"},
        {"delete", "|S", 0, "[S]\nk=1\n#[T]\n", "#[T]\n"},
        {"comment", "|S|--with=;", 0, "[S]\nk=1\n", ";[S]\n;k=1\n"},
        {"uncomment", "|S|k", 0, "#[S]\n;k=1\n", "#[S]\n k=1\n"},
        {"sort", "", 3, "t=1\n[b]\n[a]\n", " [a]\n [b]\n"},
        {"sort", "|--descending", 3, "[a]\nx=2\n[b]\n[a]\n", " [b]\n [a]\n x=2\n [a]\n x=2\n"},
        {"note", "|S|k|one\n; two\n", 0, "[S]\n; old\nk=1\n", " [S]\n; one\n; two\n k=1\n"},
        {"edit", batch, 0, " [S]\n;k=1\n", " [S]\n k=a \"b\"c\n [N N]\n"},
        {"note", "|S|#", 0, "[S]\nk=1\n", "# \n [S]\n k=1\n"},
    };
    const auto edit = [&](const std::string& command, const std::string& option, const std::string& words) {
        return Run(command + "|f" + option + words);
    };
    for (const auto& [command, words, code, before, after] : cases) {
        Write(before, "f");
        EXPECT_EQ(edit(command, "|--dry-run", words), code) << command << words;
        EXPECT_TRUE(m_said.starts_with(qmini::UnifiedDifference("f", before, after))) << words << m_said;
        EXPECT_TRUE(code == 0 || edit(command, "", words) == code) << command << words;
        EXPECT_EQ(Read("f"), before) << command << words;
        EXPECT_EQ(edit(command, code == 0 ? "" : "|--force", words), 0) << command << words;
        EXPECT_EQ(Read("f"), after) << command << words;
    }
}

} // namespace
