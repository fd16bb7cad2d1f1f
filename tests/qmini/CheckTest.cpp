#include "qmini/Check.h"

#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <stdexcept>

namespace {

TEST(Check, FindsWhatItsOwnerMayNotExpect)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"; note\r\n\r\n[S]\r\nk\f=v ]\n#c=1\n;[T]\n;k=v=w\n  \t", ""},
        {"[S]\nk=v", "2: last line without a line end: it is not read, and lost in a rewrite\n"},
        {"[S]\n# a\n\nx\n; b\n", "2: comments after the last record are lost in a rewrite\n"
                                 "4: neither a header nor a key: dropped\n"},
        {"[S] x \n", "1: text after \"]\" is lost in a rewrite: \"x\"\n"},
        {"[ S]\n", "1: blanks inside the brackets belong to the section's name: \" S\"\n"},
        {"list=x[1]\n", "1: \"[\" inside the line: read as the header of section \"ist=x[1\"\n"
                        "1: header with \"=\" in its name: a rewrite turns it into the key line \"ist=x[1\", "
                        "after which no operation can read the file\n"},
        {"# see [notes] below\n", "1: comment with \"[\": read as the header of section \"ee [notes\"\n"
                                  "1: text after \"]\" is lost in a rewrite: \"below\"\n"},
        {"# c\n[a=b]\n", "2: the comments above a header with \"=\" in its name are lost in a rewrite\n"
                         "2: header with \"=\" in its name: a rewrite turns it into the key line \"a=b\"\n"},
        {"# c\n[=b]\n", "2: the comments above a header with \"=\" in its name are lost in a rewrite\n"},
        {"[S]\n=v\n", "2: no key before \"=\": a rewrite turns the line into the header \"[S]\"\n"},
        {"a b =v\nk= v\n", "1: blanks next to \"=\" belong to the key and the value: \"a b \" and \"v\"\n"
                           "2: blanks next to \"=\" belong to the key and the value: \"k\" and \" v\"\n"},
        {"# say a = b\n", "1: comment with \"=\": read as the commented-out key \"say a \"\n"},
        {"k=1\n[S]\nk=1\n#k=2\n[T]\n;[S]\nk=3\n",
         "4: duplicate key \"k\" in section \"S\": lookups and edits find that of line 3\n"
         "6: duplicate section \"S\": line 2 has its first header\n"
         "7: duplicate key \"k\" in section \"S\": lookups and edits find that of line 3\n"},
        {"x\n# c\nx\nk=1\n",
         "1: neither a header nor a key: a rewrite turns it into the header \"[]\", which "
         "takes the keys below\n"
         "3: neither a header nor a key: dropped\n"},
        {"[S]\n;[T\n[U\n", "2: header without \"]\": no operation can read the file (!)\n"
                           "3: header without \"]\": no operation can read the file (!)\n"},
        {"\xEF\xBB\xBFk=1\n", "1: byte order mark: it is read as part of the line\n"},
    };
    for (const auto& [text, expected] : cases) {
        std::string lines;
        for (const auto& [line, finding, malformed] : qmini::Check(text))
            lines += std::to_string(line) + ": " + finding + (malformed ? " (!)\n" : "\n");
        EXPECT_EQ(lines, expected) << text;
    }
}

// Every text of four characters that matter, alone and inside a file.
TEST_F(TemporaryFolder, NoFindingMeansThatARewriteKeepsEveryRecord)
{
    const std::string alphabet = "[]=# a\n";
    for (std::size_t number = 0; number != std::size_t{7} * 7 * 7 * 7; ++number) {
        std::string text;
        for (std::size_t rest = number; text.size() != 4; rest /= 7)
            text += alphabet[rest % 7];
        for (const std::string& whole : {text, "# c\n" + text + "\nk=v\n"}) {
            std::filesystem::remove(Path("test.ini")); // a new file is written faster than an old one emptied
            const std::string path = Write(whole);
            // The records, and how many of them are in the section without a name.
            const auto records = [&] {
                return INIParser::Content(path) + std::to_string(INIParser::GetSection("", path).size());
            };
            const auto findings = qmini::Check(whole);
            if (std::ranges::any_of(findings, &qmini::Finding::malformed))
                ASSERT_THROW(records(), std::out_of_range) << whole;
            else if (const std::string before = records(); findings.empty()) {
                INIParser::RenameSection("no such section", "", path); // rewrites the file
                ASSERT_EQ(records(), before) << whole;
            }
        }
    }
}

} // namespace
