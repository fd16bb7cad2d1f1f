// SPDX-License-Identifier: MIT
#include "qmUtility/ini/ScanFile.h"

#include <gtest/gtest.h>

namespace {

/// The records that a text holds, each as "comments|Commented|Section|Key|Value". `Char` is the width of the
/// text, `To` that of the records.
template <class Char, class To>
std::vector<std::string> Records(const std::string& text)
{
    std::vector<std::string> records;
    const std::basic_string<Char> wide(text.begin(), text.end());
    ini::Scan(std::basic_string_view<Char>(wide), [&](const auto& view) {
        const auto record = ini::ToRecord<To>(view);
        std::basic_string<To> line = record.Comments;
        for (const auto& field :
             {std::basic_string<To>(1, record.Commented), record.Section, record.Key, record.Value})
            (line += To('|')) += field;
        std::string& narrow = records.emplace_back();
        for (const To c : line)
            narrow += static_cast<char>(c);
    });
    return records;
}

struct Case
{
    std::string Text;
    std::vector<std::string> Records;
};

TEST(Grammar, ReadsRecordsOfBothWidths)
{
    using namespace std::string_literals;
    const std::string megabytes(3'000'000, 'v');
    const std::vector<Case> cases = {
        {"", {}},
        {"[General]\n", {"| |General||"}},
        {"[A]", {}},                                                // the last line has no line end
        {"[A]\nk=v", {"| |A||"}},                                   //
        {"[S]\n  key = value  \n", {"| |S||", "| |S|key | value"}}, // outer blanks go, inner ones stay
        {"\t[S]\r\n\r\n \t k=v\r\n", {"| |S||", "| |S|k|v"}},
        {"\f[S]\v\nk\v=\f\n", {"| |[S||", "| |[S|k\v|\f"}}, // form feed and vertical tab are no blanks
        {"a=b=c\n", {"| ||a|b=c"}},
        {"=x\n=\n", {"| |||x", "| |||"}},
        {"[S]\nk=\n", {"| |S||", "| |S|k|"}},
        {"[ S ]\n", {"| | S ||"}},
        {"[]\n", {"| |||"}},
        {"[S] dropped ]\n", {"| |S||"}},
        {"#x=1\n;y=2\n", {"|#||x|1", "|;||y|2"}},
        {"# \t x = 1\n##y=2\n", {"|#||x | 1", "|#||#y|2"}}, // one character makes a comment of a record
        {"[A]\n; [Old]\nk=v\n", {"| |A||", "|;|Old||", "| |Old|k|v"}},
        {"# see [notes]\n", {"|#|ee [notes||"}}, // a "[" anywhere makes a header
        {"x[y]z\n", {"| |[y||"}},                // without its first character
        {"path=C:\\[x]\nk=v\n", {"| |ath=C:\\[x|ath|C:\\[x", "| |ath=C:\\[x|k|v"}},
        {"[a=b]=c\n[=]\n", {"| |a=b|a|b", "| |=||"}},
        {"=[x]\n", {"| |[x||"}},
        {"[S]\njunk\nk=v\n", {"| |S||", "| |||", "| |S|k|v"}}, // no record: empty in all its fields
        {"; a note\nx=1\n", {"; a note\n| ||x|1"}},
        {" ;a \r\n\n \t\n#b\r\n[S]\nx=1\n",
         {";a\n#b\n| |S||", "| |S|x|1"}},                      // blank lines leave comments pending
        {";a\njunk\n#b\n\nx=1\n", {";a\n#b\n| ||x|1"}},        // and so do lines that are no record
        {";lost\n[a=b]\nx=1\n", {"| |a=b|a|b", "| |a=b|x|1"}}, // a header that holds a "="
        {";a\n;x=1\n;b\n", {";a\n|;||x|1"}},                   // below the last record
        {";only\n#comments\n", {}},
        {"k\0=\0v\n[\xE4\xFF]\n"s, {"| ||k\0|\0v"s, "| |\xE4\xFF||"}},
        {"k=" + megabytes + "\n;" + megabytes + "\n[S]\n",
         {"| ||k|" + megabytes, ";" + megabytes + "\n| |S||"}},
    };
    for (const Case& test : cases) {
        EXPECT_EQ((Records<char, char>(test.Text)), test.Records) << test.Text.substr(0, 80);
        EXPECT_EQ((Records<char, wchar_t>(test.Text)), test.Records) << test.Text.substr(0, 80);
        EXPECT_EQ((Records<wchar_t, wchar_t>(test.Text)), test.Records) << test.Text.substr(0, 80);
    }
}

} // namespace
