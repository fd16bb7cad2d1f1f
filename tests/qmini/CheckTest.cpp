#include "qmini/Check.h"

#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <regex>

namespace {

using qmini::Check;
using qmini::Kind;

TEST(Check, FindsWhatItsOwnerMayNotExpect)
{
    using namespace std::string_literals;
    const std::string header = "header with \"=\" in its name: an edit turns it into the key line ";
    const std::string nothing = "neither a header nor a key: ";
    const std::string duplicateKey =
        "duplicate key \"k\" in section \"S\": lookups and edits find the one in ";
    // Each finding begins with its line and the initial of its kind.
    const std::pair<std::string, std::string> cases[] = {
        {"; note\r\n\r\n[S]\r\nk\f=v ]\n#c=1\n;[T]\n;k=v=w\n  \t", ""},
        {"[S]\nk=v", "2L last line without a newline: not read, and lost by an edit\n"},
        {"[S]\n# a\n\nx\n; b\n",
         "2L comments below the last record: lost by an edit\n4L " + nothing + "dropped by an edit\n"},
        {"[S] x \n", "1L text after \"]\": lost by an edit: \"x\"\n"},
        {"[ S]\n", "1O blanks inside the brackets belong to the section's name: \" S\"\n"},
        {"list=x[1]\n", "1L \"[\" inside the line: read as the header of section \"ist=x[1\"\n1L " + header +
                            "\"ist=x[1\", after which no operation can read the file\n"},
        {"# see [notes]\n", "1L comment with \"[\": read as the header of section \"ee [notes\"\n"},
        {"# c\n[a=b]\n",
         "2L comments above a header with \"=\" in its name: lost by an edit\n2L " + header + "\"a=b\"\n"},
        {"[S]\n=v\n", "2L no key before \"=\": an edit turns the line into the header \"[S]\"\n"},
        {"a b =v\n", "1O blanks next to \"=\" belong to the key and the value: \"a b \" and \"v\"\n"},
        {"# say a = b\n", "1O comment with \"=\": read as the commented-out key \"say a \"\n"},
        {" [S]\n k=1\n#k=2\n [T]\n;[S]\n k=3\n",
         "3O " + duplicateKey + "line 2\n5O duplicate section \"S\": the first header is in line 1\n6O " +
             duplicateKey + "line 2\n"},
        {"x\n", "1L " + nothing + "an edit turns it into the header \"[]\", which takes the keys below\n"},
        {"[S]\n;[T\n", "2M header without \"]\": no operation can read the file\n"},
        {"[S]\na=1\n#b=1\nc=2\nd=3\n", "4N an edit indents active lines by a space: readers that know "
                                       "continuation lines join this line to the key above\n"},
        {"\xEF\xBB\xBFk=1\n", "1L byte order mark: read as text, and moved by an edit\n"},
        {"\xFF\xFE[\0\n\0"s, "1L UTF-16 byte order mark: only encodings that extend ASCII are known\n"},
        {"[S]\na\0=1\n"s, "2L NUL byte: this is no text, or one in UTF-16\n"},
    };
    for (const auto& [text, expected] : cases) {
        std::string lines;
        for (const auto& [line, kind, finding] : Check(text, Kind::Note))
            lines += std::to_string(line) + "NOLM"[static_cast<int>(kind)] + ' ' + finding + '\n';
        EXPECT_EQ(lines, expected) << text;
    }
}

/// @return a text without blank lines and the white space that an edit may change.
std::string Normalized(const std::string& text)
{
    static const std::regex outer("[ \r]*\n[ \r\n]*");
    static const std::regex inner("\n# +");
    return std::regex_replace(std::regex_replace('\n' + text + '\n', outer, "\n"), inner, "\n#");
}

// Every text of four characters that matter, alone and inside a file.
TEST_F(TemporaryFolder, ARewriteKeepsEveryLineUnlessALossIsFound)
{
    const std::string alphabet = "[]=# a\n";
    for (std::size_t number = 0; number != std::size_t{7} * 7 * 7 * 7; ++number) {
        std::string text;
        for (std::size_t rest = number; text.size() != 4; rest /= 7)
            text += alphabet[rest % 7];
        for (const std::string& whole : {text, "# c\n" + text + "\nk=v\n"}) {
            std::filesystem::remove(Path("test.ini")); // a new file is written faster than an old one emptied
            const std::string path = Write(whole);
            const auto losses = Check(whole, Kind::Loss);
            if (std::ranges::count(losses, Kind::Malformed, &qmini::Finding::What) == 0) {
                INIParser::RenameSection("no such section", "", path); // rewrites the file
                ASSERT_EQ(Normalized(Read(path)) == Normalized(whole), losses.empty()) << whole;
            } else
                ASSERT_ANY_THROW(INIParser::Content(path)) << whole;
        }
    }
}

} // namespace
