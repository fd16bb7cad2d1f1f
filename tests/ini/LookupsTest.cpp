// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <map>
#include <stdexcept>
#include <tuple>

namespace {

/// Asks `INIParser` and a document of the same file in both widths.
class Lookups : public TemporaryFolder
{
protected:
    void Open(const std::string& text)
    {
        Write(text);
        ASSERT_TRUE(m_document.Load(m_path) && m_wideDocument.Load(m_widePath));
    }

    /// @return the records or the document, each record as "comments|Commented|Section|Key|Value" and a newline
    static std::string Flat(const auto& records)
    {
        std::string all;
        const auto add = [&](const auto& field, char end) { all.append(field.begin(), field.end()) += end; };
        for (const auto& [comments, commented, section, key, value] : records) {
            add(comments, '|'), add(std::vector{commented}, '|'), add(section, '|');
            add(key, '|'), add(value, '\n');
        }
        return all;
    }

    const std::string m_path = Path("test.ini");
    const std::wstring m_widePath = WidePath("test.ini");
    INIDocument m_document;
    WINIDocument m_wideDocument;
};

TEST_F(Lookups, ReadRecordsOfBothWidths)
{
    using namespace std::string_literals;
    const std::pair<std::string, std::string> cases[] = {
        {"[A]\nk=v", "| |A||\n"},                                 // the last line has no newline
        {"[S]\n  key = value  \n", "| |S||\n| |S|key | value\n"}, // outer blanks go, inner ones stay
        {"\t[S]\r\n\r\n \t k=v\r\n", "| |S||\n| |S|k|v\n"},
        {"\f[S]\v\nk\v=\f\n", "| |[S||\n| |[S|k\v|\f\n"}, // form feed and vertical tab are no blanks
        {"=x\n=\n", "| |||x\n| |||\n"},
        {"[ S ]\n", "| | S ||\n"},
        {"[]\n", "| |||\n"},
        {"[S] dropped ]\n", "| |S||\n"},
        {"# \t x = 1\n##y=2\n", "|#||x | 1\n|#||#y|2\n"}, // one character makes a comment of a record
        {"[A]\n; [Old]\nk=v\n", "| |A||\n|;|Old||\n| |Old|k|v\n"},
        {"x[y]z\n", "| |[y||\n"}, // a "[" anywhere makes a header, without the first character
        {"[a=b]=c\n[=]\n", "| |a=b|a|b\n| |=||\n"},
        {"=[x]\n", "| |[x||\n"},
        {"[S]\njunk\nk=v\n", "| |S||\n| |||\n| |S|k|v\n"}, // no record: empty in all its fields
        {" ;a \r\n\n \t\n#b\r\n[S]\nx=1\n",
         ";a\n#b\n| |S||\n| |S|x|1\n"},                      // blank lines leave comments pending
        {";a\njunk\n#b\n\nx=1\n", ";a\n#b\n| ||x|1\n"},      // and so do lines that are no record
        {";lost\n[a=b]\nx=1\n", "| |a=b|a|b\n| |a=b|x|1\n"}, // a header that holds a "="
        {";a\n;x=1\n;b\n", ";a\n|;||x|1\n"},                 // below the last record
        {"k\0=\0v\n[\xE4\xFF]\n"s, "| ||k\0|\0v\n| |\xE4\xFF||\n"s},
    };
    for (const auto& [text, records] : cases) {
        Open(text);
        EXPECT_EQ(Flat(m_document), records) << text;
        EXPECT_EQ(Flat(m_wideDocument), records) << text;
    }
}

constexpr auto Sample = "above=0\n; of S\n[S]\n; of k\nk=1\nk=2\n#off=3\nempty=\n[T]\nt=4\n"
                        ";[Old]\nk=5\n[S]\nk=6\n=7\n";

TEST_F(Lookups, FindTheFirstMatch)
{
    Open(Sample);
    // key, section, and the record that is found
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"k", "S", "; of k\n| |S|k|1\n"},
        {"off", "S", "|#|S|off|3\n"},
        {"k", "Old", "| |Old|k|5\n"},
        {"above", "", "| ||above|0\n"},
        {"", "S", "; of S\n| |S||\n"},
        {"k", "s", ""},
        {"", "", ""},
    };
    const auto check = [](const auto& document, const auto& path, const auto& key, const auto& section,
                          const std::string& record) {
        const auto found = document.GetRecord(key, section);
        EXPECT_EQ(Flat(found), record);
        EXPECT_EQ(Flat(INIParser::GetRecord(key, section, path)), record);
        EXPECT_EQ(document.RecordExists(key, section), !found.empty());
        EXPECT_EQ(INIParser::RecordExists(key, section, path), !found.empty());
        const auto value = found.empty() ? key.substr(key.size()) : found[0].Value;
        EXPECT_EQ(document.GetValue(key, section), value);
        EXPECT_EQ(INIParser::GetValue(key, section, path), value);
    };
    for (const auto& [key, section, record] : cases) {
        SCOPED_TRACE(testing::Message() << section << "/" << key);
        check(m_document, m_path, key, section, record);
        check(m_wideDocument, m_widePath, Widen(key), Widen(section), record);
    }
}

TEST_F(Lookups, ListSectionsAndKeys)
{
    Open(Sample);
    EXPECT_EQ(INIParser::Content(m_path), m_document.Content());
    // The line "=7" has an empty key, so it counts as one more header of its section.
    const std::vector<std::string> names = {"S", "T", "Old", "S", "S"};
    EXPECT_EQ(INIParser::GetSectionNames(m_path), names);
    EXPECT_EQ(m_document.GetSectionNames(), names);
    const std::map<std::string, std::string> keys = {
        {"S", "; of k\n| |S|k|1\n| |S|k|2\n|#|S|off|3\n| |S|empty|\n| |S|k|6\n"},
        {"", "| ||above|0\n"},
        {"none", ""},
    };
    for (const auto& [section, records] : keys) {
        EXPECT_EQ(Flat(INIParser::GetSection(section, m_path)), records);
        EXPECT_EQ(Flat(m_document.GetSection(section)), records);
    }
    // No header declares the empty name, but a key carries it.
    for (const auto& [section, exists] : std::map<std::string, bool>{
             {"S", true}, {"Old", true}, {"", true}, {"s", false}, {"S ", false}, {"none", false}}) {
        EXPECT_EQ(INIParser::SectionExists(section, m_path), exists) << section;
        EXPECT_EQ(INIParser::SectionExists(Widen(section), m_widePath), exists) << section;
        EXPECT_EQ(m_document.SectionExists(section), exists) << section;
    }
}

TEST_F(Lookups, ReportAMalformedHeaderWhateverIsAsked)
{
    for (const char* const text : {"#[Broken\n", "]x[\n", "k=[\n", "k=1\n[Fine]\n[\n"}) {
        Write(text);
        EXPECT_THROW(INIParser::GetValue("k", "S", m_path), std::out_of_range) << text;
        EXPECT_THROW(INIParser::SectionExists(L"S", m_widePath), std::out_of_range) << text;
        EXPECT_THROW(INIParser::SetValue("k", "2", "S", m_path), std::out_of_range) << text;
        EXPECT_EQ(Read(m_path), text);
    }
}

} // namespace
