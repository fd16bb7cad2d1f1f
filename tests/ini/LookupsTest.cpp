#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <map>

namespace {

using Lookups = TemporaryFolder;

std::wstring Wide(const std::string& text) { return {text.begin(), text.end()}; }

constexpr auto sample = "above=0\n; of S\n[S]\n; of k\nk=1\nk=2\n#off=3\nempty=\n[T]\nt=4\n"
                        ";[Old]\nk=5\n[S]\nk=6\n=7\n";

TEST_F(Lookups, FindTheFirstMatch)
{
    const std::string path = Write(sample);
    const char* const missing = "missing";
    const char* const cases[][3] = {
        {"k", "S", "1"},     {"off", "S", "3"}, {"empty", "S", ""},   {"k", "Old", "5"},
        {"above", "", "0"},  {"", "S", ""},     {"K", "S", missing},  {"k", "s", missing},
        {"k", "T", missing}, {"", "", missing}, {" k", "S", missing},
    };
    for (const auto& [key, section, value] : cases) {
        const bool exists = value != missing;
        const std::string found = exists ? value : "";
        EXPECT_EQ(INIParser::RecordExists(key, section, path), exists) << section << '/' << key;
        EXPECT_EQ(INIParser::GetValue(key, section, path), found) << section << '/' << key;
        EXPECT_EQ(INIParser::RecordExists(Wide(key), Wide(section), Wide(path)), exists) << section << key;
        EXPECT_EQ(INIParser::GetValue(Wide(key), Wide(section), Wide(path)), Wide(found)) << section << key;
    }
}

TEST_F(Lookups, ReturnWholeRecords)
{
    const std::string path = Write(sample);
    const auto key = INIParser::GetRecord("k", "S", path).at(0);
    EXPECT_EQ(key.Comments + key.Commented + key.Section + '|' + key.Key + '|' + key.Value, "; of k\n S|k|1");
    const auto off = INIParser::GetRecord(L"off", L"S", Wide(path)).at(0);
    EXPECT_EQ(off.Comments + off.Commented + off.Section + L'|' + off.Key + L'|' + off.Value, L"#S|off|3");
    EXPECT_EQ(INIParser::GetRecord(L"", L"S", Wide(path)).at(0).Comments, L"; of S\n");
    EXPECT_TRUE(INIParser::GetRecord("K", "S", path).empty());
}

TEST_F(Lookups, ListSectionsAndKeys)
{
    const std::string path = Write(sample);
    // The line "=7" has an empty key, which makes it count as one more header of its section.
    EXPECT_EQ(INIParser::GetSectionNames(path), (std::vector<std::string>{"S", "T", "Old", "S", "S"}));
    std::string keys;
    for (const char* const section : {"S", "", "none"})
        for (const auto& record : INIParser::GetSection(section, path))
            keys += record.Section + '.' + record.Key + '=' + record.Value + ' ';
    EXPECT_EQ(keys, "S.k=1 S.k=2 S.off=3 S.empty= S.k=6 .above=0 ");

    // No header declares the empty name, but a key carries it.
    for (const auto& [section, exists] : std::map<std::string, bool>{
             {"S", true}, {"Old", true}, {"", true}, {"s", false}, {"S ", false}, {"none", false}}) {
        EXPECT_EQ(INIParser::SectionExists(section, path), exists) << section;
        EXPECT_EQ(INIParser::SectionExists(Wide(section), Wide(path)), exists) << section;
    }
}

TEST_F(Lookups, RenderTheContent)
{
    EXPECT_EQ(INIParser::Content(Write("k=1\r\n\n; a\n  [S]  tail\n#x=1\njunk\n; lost\n")),
              "k=1\n; a\n[S]\n#x=1\n[]\n");
    EXPECT_EQ(INIParser::Content(Write("; only comments\n")), "");
}

TEST_F(Lookups, ReportAMalformedHeaderWhateverIsAsked)
{
    const std::string path = Write("[S]\nk=1\n[Broken\n");
    EXPECT_THROW(INIParser::GetValue("k", "S", path), std::out_of_range);
    EXPECT_THROW(INIParser::SectionExists(L"S", Wide(path)), std::out_of_range);
    EXPECT_THROW(INIParser::GetSection("S", path), std::out_of_range);
    EXPECT_THROW(INIParser::SetValue("k", "2", "S", path), std::out_of_range);
    EXPECT_EQ(Read(path), "[S]\nk=1\n[Broken\n");
}

} // namespace
