// SPDX-License-Identifier: MIT
#include "qmini/Check.h"

#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <regex>

namespace {

TEST(Check, FindsWhatItsOwnerMayNotExpect)
{
    using namespace std::string_literals;
    // Each finding begins with its line and the initial of its kind; its text may go on.
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"; note\r\n\r\n[S]\r\nk\f=v ]\n#c=1\n;[T]\n;k=v=w\n  \t", {}},
        {"[S]\n# a\n\nx\n; b\nk=v", {"2L comments", "4L neither a header nor a key: dropped", "6L last"}},
        {"[ S]\n=v\n", {"1O blanks inside the brackets", "2L no key before \"=\": an edit turns"}},
        {"x[1]\n# see [b]\n", {"1L \"[\" inside the line", "2L comment with \"[\": read as the header"}},
        {"a b =v\n# say a = b\n", {"1O blanks next to \"=\"", "2O comment with \"=\": read as"}},
        {"[S]\nk=1\n;[S]\nk=3\nb=1\n", {"3O duplicate section", "4O duplicate key \"k\"", "4N an edit"}},
        {"x\n# c\n[a=b]\n", {"1L neither a header nor a key", "3L comments above", "3L header"}},
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
    // Blank lines go, and so do blanks around lines and after a "#".
    const std::regex blanks(" *\n[ \n]*(#?) *");
    const auto normalized = [&](const std::string& text) {
        return std::regex_replace('\n' + text + '\n', blanks, "\n$1");
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

} // namespace
