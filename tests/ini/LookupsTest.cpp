// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <map>

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

    template <class Char>
    static std::basic_string<Char> Flat(const std::vector<INIParser::BasicRecord<Char>>& records)
    {
        std::basic_string<Char> all;
        for (const auto& record : records)
            for (const auto& field : {record.Comments, std::basic_string<Char>(1, record.Commented),
                                      record.Section, record.Key, record.Value})
                (all += field) += Char('|');
        return all;
    }

    const std::string m_path = Path("test.ini");
    const std::wstring m_widePath = WidePath("test.ini");
    INIDocument m_document;
    WINIDocument m_wideDocument;
};

constexpr auto Sample = "above=0\n; of S\n[S]\n; of k\nk=1\nk=2\n#off=3\nempty=\n[T]\nt=4\n"
                        ";[Old]\nk=5\n[S]\nk=6\n=7\n";

TEST_F(Lookups, FindTheFirstMatch)
{
    Open(Sample);
    const char* const cases[][3] = {
        // key, section, and what is found of the record
        {"k", "S", "; of k\n| |S|k|1|"},
        {"off", "S", "|#|S|off|3|"},
        {"empty", "S", "| |S|empty||"},
        {"k", "Old", "| |Old|k|5|"},
        {"above", "", "| ||above|0|"},
        {"", "S", "; of S\n| |S|||"},
        {"K", "S", ""},
        {"k", "s", ""},
        {"k", "T", ""},
        {"", "", ""},
        {" k", "S", ""},
    };
    for (const auto& [key, section, record] : cases) {
        SCOPED_TRACE(std::string(section) + '/' + key);
        const std::wstring wideKey = Widen(key);
        const std::wstring wideSection = Widen(section);
        EXPECT_EQ(Flat(INIParser::GetRecord(key, section, m_path)), record);
        EXPECT_EQ(Flat(INIParser::GetRecord(wideKey, wideSection, m_widePath)), Widen(record));
        EXPECT_EQ(Flat(m_document.GetRecord(key, section)), record);
        EXPECT_EQ(Flat(m_wideDocument.GetRecord(wideKey, wideSection)), Widen(record));

        const bool exists = *record != 0;
        EXPECT_EQ(INIParser::RecordExists(key, section, m_path), exists);
        EXPECT_EQ(INIParser::RecordExists(wideKey, wideSection, m_widePath), exists);
        EXPECT_EQ(m_document.RecordExists(key, section), exists);

        const std::string value = exists ? INIParser::GetRecord(key, section, m_path).at(0).Value : "";
        EXPECT_EQ(INIParser::GetValue(key, section, m_path), value);
        EXPECT_EQ(INIParser::GetValue(wideKey, wideSection, m_widePath), Widen(value));
        EXPECT_EQ(m_document.GetValue(key, section), value);
    }
}

TEST_F(Lookups, ListSectionsAndKeys)
{
    Open(Sample);
    // The line "=7" has an empty key, so it counts as one more header of its section.
    const std::vector<std::string> names = {"S", "T", "Old", "S", "S"};
    EXPECT_EQ(INIParser::GetSectionNames(m_path), names);
    EXPECT_EQ(m_document.GetSectionNames(), names);
    const std::map<std::string, std::string> keys = {
        {"S", "; of k\n| |S|k|1|| |S|k|2||#|S|off|3|| |S|empty||| |S|k|6|"},
        {"", "| ||above|0|"},
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

TEST_F(Lookups, RenderTheContent)
{
    Open("k=1\r\n\n; a\n  [S]  tail\n#x=1\njunk\n; lost\n");
    EXPECT_EQ(INIParser::Content(m_path), "k=1\n; a\n[S]\n#x=1\n[]\n");
    EXPECT_EQ(INIParser::Content(Write("; only comments\n")), "");
}

TEST_F(Lookups, ReportAMalformedHeaderWhateverIsAsked)
{
    for (const char* const text :
         {"[S]\nk=1\n[Broken\n", "#[Broken\n", "]x[\n", "k=[\n", "k=1\n[Fine]\n[\n"}) {
        Write(text);
        EXPECT_THROW(INIParser::GetValue("k", "S", m_path), std::out_of_range) << text;
        EXPECT_THROW(INIParser::SectionExists(L"S", m_widePath), std::out_of_range) << text;
        EXPECT_THROW(INIParser::SetValue("k", "2", "S", m_path), std::out_of_range) << text;
        EXPECT_EQ(Read(m_path), text);
    }
}

} // namespace
