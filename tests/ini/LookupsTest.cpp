// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <tuple>
#include <vector>

namespace {

class Lookups : public TemporaryFolder
{
protected:
    /// @return each record as "comments|Commented|Section|Key|Value"
    static std::vector<std::string> Flat(const auto& records)
    {
        std::vector<std::string> flat;
        const auto add = [&](const auto& field) { flat.back().append(field.begin(), field.end()) += '|'; };
        for (const auto& [comments, commented, section, key, value] : records) {
            flat.emplace_back();
            add(comments), add(std::vector{commented}), add(section), add(key), add(value);
            flat.back().pop_back();
        }
        return flat;
    }

    /// Compares what both widths find.
    void ExpectFirst(const std::string& key, const std::string& section,
                     const std::vector<std::string>& record)
    {
        SCOPED_TRACE(testing::Message() << section << "/" << key);
        const std::wstring wideKey = Widen(key);
        const std::wstring wideSection = Widen(section);
        EXPECT_EQ(Flat(INIParser::GetRecord(key, section, m_path)), record);
        EXPECT_EQ(Flat(INIParser::GetRecord(wideKey, wideSection, m_widePath)), record);
        EXPECT_EQ(INIParser::RecordExists(key, section, m_path), !record.empty());
        EXPECT_EQ(INIParser::RecordExists(wideKey, wideSection, m_widePath), !record.empty());
        const std::string value = record.empty() ? "" : record[0].substr(record[0].rfind('|') + 1);
        EXPECT_EQ(INIParser::GetValue(key, section, m_path), value);
        EXPECT_EQ(INIParser::GetValue(wideKey, wideSection, m_widePath), Widen(value));
    }

    const std::string m_path = Path("test.ini");
    const std::wstring m_widePath = WidePath("test.ini");
};

TEST_F(Lookups, ReadRecordsOfBothWidths)
{
    using namespace std::string_literals;
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"[A]\nk=v", {"| |A||"}},                                   // the last line has no newline
        {"[S]\n  key = value  \n", {"| |S||", "| |S|key | value"}}, // outer blanks go, inner ones stay
        {"\t[S]\r\n\r\n \t k=v\r\n", {"| |S||", "| |S|k|v"}},
        {"\f[S]\v\nk\v=\f\n", {"| |[S||", "| |[S|k\v|\f"}}, // form feed and vertical tab are no blanks
        {"=x\n=\n", {"| |||x", "| |||"}},
        {"[ S ]\n", {"| | S ||"}},
        {"[]\n", {"| |||"}},
        {"[S] dropped ]\n", {"| |S||"}},
        {"# \t x = 1\n##y=2\n", {"|#||x | 1", "|#||#y|2"}}, // one character makes a comment of a record
        {"[A]\n; [Old]\nk=v\n", {"| |A||", "|;|Old||", "| |Old|k|v"}},
        {"x[y]z\n", {"| |[y||"}}, // a "[" anywhere makes a header, without the first character
        {"[a=b]=c\n[=]\n", {"| |a=b|a|b", "| |=||"}},
        {"=[x]\n", {"| |[x||"}},
        {"[S]\njunk\nk=v\n", {"| |S||", "| |||", "| |S|k|v"}}, // no record: empty in all its fields
        {" ;a \r\n\n \t\n#b\r\n[S]\nx=1\n",
         {";a\n#b\n| |S||", "| |S|x|1"}},                      // blank lines leave comments pending
        {";a\njunk\n#b\n\nx=1\n", {";a\n#b\n| ||x|1"}},        // and so do lines that are no record
        {";lost\n[a=b]\nx=1\n", {"| |a=b|a|b", "| |a=b|x|1"}}, // a header that holds a "="
        {";a\n;x=1\n;b\n", {";a\n|;||x|1"}},                   // below the last record
        {"k\0=\0v\n[\xE4\xFF]\n"s, {"| ||k\0|\0v"s, "| |\xE4\xFF||"}},
    };
    for (const auto& [text, records] : cases) {
        SCOPED_TRACE(text);
        Write(text);
        std::string content;
        std::set<std::string> found;
        for (const std::string& record : records) {
            std::array<std::string, 5> fields;
            for (std::istringstream stream(record); std::string & field : fields)
                std::getline(stream, field, '|');
            const auto& [comments, commented, section, key, value] = fields;
            content += comments + (commented == " " ? "" : commented) +
                       (key.empty() ? '[' + section + ']' : key + '=' + value) + '\n';
            if (found.insert(section + '|' + key).second) // of equal ones the first is found
                ExpectFirst(key, section, {record});
        }
        EXPECT_EQ(INIParser::Content(m_path), content);
    }
}

// The "[" of a value begins a section, one in a last line without a newline does not.
constexpr auto Sample = "above=0\n; of S\n[S]\n; of k\nk=1\nk=2\n#off=3\nempty=\n[T]\nt=4\njunk\n"
                        ";[Old]\nk=5\n; of S, too\n[S]\nk=6\n=7\ni=a[S]\nk=8\n[S";

TEST_F(Lookups, FindTheFirstMatch)
{
    Write(Sample);
    ExpectFirst("k", "S", {"; of k\n| |S|k|1"});
    ExpectFirst("off", "S", {"|#|S|off|3"});
    ExpectFirst("empty", "S", {"| |S|empty|"});
    ExpectFirst("k", "Old", {"| |Old|k|5"});
    ExpectFirst("k", "=a[S", {"| |=a[S|k|8"});
    ExpectFirst("above", "", {"| ||above|0"});
    ExpectFirst("", "S", {"; of S\n| |S||"});
    ExpectFirst("", "", {"| |||"}); // the line "junk"
    ExpectFirst("k", "s", {});
    ExpectFirst("K", "S", {});
    ExpectFirst("", "none", {});
}

TEST_F(Lookups, ListSectionsAndKeys)
{
    Write(Sample);
    // The line "=7" has an empty key, so it counts as one more header of its section.
    EXPECT_EQ(INIParser::GetSectionNames(m_path),
              (std::vector<std::string>{"S", "T", "", "Old", "S", "S", "=a[S"}));
    const std::map<std::string, std::vector<std::string>> keys = {
        {"S", {"; of k\n| |S|k|1", "| |S|k|2", "|#|S|off|3", "| |S|empty|", "| |S|k|6"}},
        {"", {"| ||above|0"}},
        {"=a[S", {"| |=a[S|k|8"}},
        {"none", {}},
    };
    for (const auto& [section, records] : keys)
        EXPECT_EQ(Flat(INIParser::GetSection(section, m_path)), records) << section;
}

TEST_F(Lookups, SectionsExistThatARecordNames)
{
    Write("above=0\n[S]\n;[Old]\n");
    // No header declares the empty name, but a key carries it.
    for (const auto& [section, exists] : std::map<std::string, bool>{
             {"S", true}, {"Old", true}, {"", true}, {"s", false}, {"S ", false}, {"none", false}}) {
        EXPECT_EQ(INIParser::SectionExists(section, m_path), exists) << section;
        EXPECT_EQ(INIParser::SectionExists(Widen(section), m_widePath), exists) << section;
    }
}

/// @return the line of the error that the call throws, or 0.
std::size_t ErrorLine(auto call)
{
    try {
        call();
        return 0;
    } catch (const INIFormatError& error) {
        EXPECT_STREQ(error.what(), "invalid string position");
        return error.Line();
    }
}

TEST_F(Lookups, ReportAMalformedHeaderWhateverIsAsked)
{
    const std::pair<std::string, std::size_t> cases[] = {
        {"#[Broken\n", 1}, {"]x[\n", 1}, {"k=[\n", 1}, {";a\n\n ;b\r\n[S]\nk=1\n[Fine]\n[\n]\n", 7}};
    for (const auto& [text, line] : cases) {
        SCOPED_TRACE(text);
        Write(text);
        EXPECT_EQ(ErrorLine([&] { INIParser::GetValue("k", "S", m_path); }), line);
        EXPECT_EQ(ErrorLine([&] { INIParser::GetRecord("", "S", m_path); }), line);
        EXPECT_EQ(ErrorLine([&] { INIParser::SectionExists(L"S", m_widePath); }), line);
        EXPECT_EQ(ErrorLine([&] { INIParser::SetValue("k", "2", "S", m_path); }), line);
        EXPECT_EQ(ErrorLine([&] { INIParser::SetValue(L"k", L"2", L"S", m_widePath); }), line);
        EXPECT_EQ(Read(m_path), text);
    }
}

} // namespace
