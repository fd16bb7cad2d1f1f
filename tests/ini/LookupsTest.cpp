// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/ini/Records.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace {

using namespace std::string_literals;

/// @return the result of a call, or "line " and the number of the malformed header that it reports.
std::string ResultOrLine(const std::function<std::string()>& call) {
    try {
        return call();
    } catch (const INIFormatError& error) {
        EXPECT_STREQ(error.what(), "invalid string position");
        return "line " + std::to_string(error.Line());
    }
}

/// @return the records of a text, or what is wrong with it, which leaves the document as it was.
template <class Char>
std::string Records(INISyntax syntax, const std::basic_string<Char>& text) {
    const std::basic_string<Char> before = {'k', '=', '1', '\n'};
    BasicINIDocument<Char> document(syntax);
    EXPECT_TRUE(document.Parse(before));
    std::string records = ResultOrLine([&] { return document.Parse(text) ? Flat(document) : "no text"; });
    EXPECT_EQ(document.Text(), records == "no text" || records.starts_with("line") ? before : text);
    return records;
}

class Lookups : public TemporaryFolder {
protected:
    /// Checks which record `INIParser` finds in both widths, if any.
    void ExpectInFile(const std::string& narrowKey, const std::string& narrowSection,
                      const std::string& record) const {
        const auto check = [&](const auto& key, const auto& section, const auto& path) {
            const auto found = INIParser::GetRecord(key, section, path);
            EXPECT_EQ(Flat(found), record);
            EXPECT_EQ(INIParser::RecordExists(key, section, path), !record.empty());
            EXPECT_TRUE(INIParser::SectionExists(section, path) || record.empty());
            EXPECT_EQ(INIParser::GetValue(key, section, path),
                      found.empty() ? key.substr(0, 0) : found[0].Value);
        };
        check(narrowKey, narrowSection, m_path);
        check(Widen(narrowKey), Widen(narrowSection), m_widePath);
    }
};

TEST_F(Lookups, ReadRecords) {
    struct {
        std::string Text, InCommon, InParser;
    } const cases[] = {
        {"[A]\nk=v", "| |A||\n| |A|k|v\n", "| |A||\n"},  // the last line has no newline
        {"\t[ S ] tail ]\r\n \tk \t=\t v = w\t \r\n", "| |S||\n| |S|k|v = w\n",
         "| | S ||\n| | S |k \t|\t v = w\n"},
        {"a=\n\nb= \r\n", "| ||a|\n| ||b|\n", "| ||a|\n| ||b|\n"},
        // Form feed and vertical tab are no blanks.
        {"\f[S]\v\nk\v=\f\n", "| ||k\v|\f\n", "| |[S||\n| |[S|k\v|\f\n"},
        {"[]\n[ ]\n", "", "| |||\n| | ||\n"},
        {"[S]\njunk\n;c\njunk\n#d\nk=1\n", "| |S||\n#d\n| |S|k|1\n", "| |S||\n| |||\n;c\n#d\n| |S|k|1\n"},
        {";a\n\n ;b\r\n[S]\nk=1\n[Fine]\n[\n]\n", ";b\n| |S||\n| |S|k|1\n| |Fine||\n", "line 7"},
        {"Name[de]=x\n[a=b\n", "| ||Name[de]|x\n| ||[a|b\n", "line 2"},
        {"a[b]=c\n=[x]\n", "| ||a[b]|c\n", "| |[b||\n| |[x||\n"},
        {"#k=v\n;[S]x\n# \t a = b c\n  ;\t[T]\r\n##y=2\n", "|#||k|v\n|;|S||\n|#|S|a|b c\n|;|T||\n",
         "|#||k|v\n|;|S||\n|#|S|a | b c\n|;|T||\n|#|T|#y|2\n"},
        // A header that holds a "=" loses its comments in `Parser`.
        {";c\n[a=b]=c\nx=1\n[=]\n", ";c\n| |a=b||\n| |a=b|x|1\n| |=||\n", "| |a=b|a|b\n| |a=b|x|1\n| |=||\n"},
        {"# say x = 1\n# [To do] a\n##x=1\n#;x=1\n#=x\n#[]\n#\nk=1\n# [a\n",
         "# say x = 1\n# [To do] a\n##x=1\n#;x=1\n#=x\n#[]\n#\n| ||k|1\n", "line 9"},
        {"; a\n\t# b \r\n#x=1\n;c\n\nk=1\n;d\n \t\r\n[S]\n;e\n", "; a\n# b\n|#||x|1\n| ||k|1\n| |S||\n",
         "; a\n# b\n|#||x|1\n;c\n| ||k|1\n;d\n| |S||\n"},
        {"#[B]\ny=1\n#z=2\n[A]\n#[C]\ny=3\n;z=4\n",
         "|#|B||\n| ||y|1\n|#|B|z|2\n| |A||\n|#|C||\n| |A|y|3\n|;|C|z|4\n",
         "|#|B||\n| |B|y|1\n|#|B|z|2\n| |A||\n|#|C||\n| |C|y|3\n|;|C|z|4\n"},
        {"a=1\n  b=2\n   more\n", "| ||a|1\n| ||b|2\n", "| ||a|1\n| ||b|2\n| |||\n"},
        {BOM "[S]\n", "| |S||\n", "| |\xBB\xBF[S||\n"},
        {BOM ";c\nk=1\n", ";c\n| ||k|1\n", "| |||\n| ||k|1\n"},
        {"k\0=\0v\n[\xE4\xFF]\n"s, "no text", "| ||k\0|\0v\n| |\xE4\xFF||\n"s},
    };
    for (const auto& [text, inCommon, inParser] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Records(Common, text), inCommon);
        EXPECT_EQ(Records(Common, Widen(text)), inCommon);
        EXPECT_EQ(Records(Parser, text), inParser);
        EXPECT_EQ(Records(Parser, Widen(text)), inParser);

        Write(text);
        if (inParser.starts_with("line")) {
            EXPECT_EQ(ResultOrLine([&] { return INIParser::GetValue("k", "S", m_path); }), inParser);
            EXPECT_EQ(ResultOrLine([&] { return Flat(INIParser::GetRecord(L"k", L"S", m_widePath)); }),
                      inParser);
            EXPECT_EQ(ResultOrLine([&] { return INIParser::Sort(m_path, true) ? "sorted" : ""; }), inParser);
            EXPECT_EQ(Read(m_path), text);
            continue;
        }
        INIDocument document(Parser);
        document.Parse(text);
        for (const auto& record : document)
            ExpectInFile(std::string(record.Key), std::string(record.Section), Flat(std::vector{record}));
    }
    EXPECT_EQ(Records(Common, L"\uFEFF[S]\n"s), "| |S||\n");
}

TEST_F(Lookups, FindTheFirstMatch) {
    const std::string text =
        "above=0\n; of S\n[S]\n#off=0\n; of k\nk=1\nk=2\nempty=\noff=3\n[T]\njunk\n;[Old]\nk=5\n"
        "; of S, too\n[S]\nk=6\n=7\ni=a[S]\nk=8\n[S";
    struct {
        std::string Key, Section;
        std::string InCommon, InParser;  ///< of active ones
        std::string InFile;              ///< of those of `INIParser`, which are commented out as well
    } const cases[] = {
        {"k", "S", "; of k\n| |S|k|1\n", "; of k\n| |S|k|1\n", "; of k\n| |S|k|1\n"},
        {"", "S", "; of S\n| |S||\n", "; of S\n| |S||\n", "; of S\n| |S||\n"},
        {"above", "", "| ||above|0\n", "| ||above|0\n", "| ||above|0\n"},
        {"off", "S", "| |S|off|3\n", "| |S|off|3\n", "|#|S|off|0\n"},
        {"k", "T", "| |T|k|5\n", "", ""},
        {"k", "Old", "", "| |Old|k|5\n", "| |Old|k|5\n"},
        {"", "Old", "", "", "|;|Old||\n"},
        {"", "", "", "", "| |||\n"},  // the line "junk"
        {"k", "=a[S", "", "| |=a[S|k|8\n", "| |=a[S|k|8\n"},
        {"K", "S", "", "", ""},
    };
    INIDocument document;
    WINIDocument wide(Parser);
    ASSERT_TRUE(document.Parse(text) && wide.Parse(Widen(text)));
    Write(text);
    const auto check = [](const auto& in, const auto& key, const auto& section, const std::string& record) {
        const auto found = in.GetRecord(key, section);
        EXPECT_EQ(found ? Flat(std::vector{*found}) : "", record);
        EXPECT_EQ(in.RecordExists(key, section), found.has_value());
        EXPECT_EQ(in.GetValue(key, section, in.Text()), found ? found->Value : in.Text());
    };
    for (const auto& [key, section, inCommon, inParser, inFile] : cases) {
        SCOPED_TRACE(section + '/' + key);
        check(document, key, section, inCommon);
        check(wide, Widen(key), Widen(section), inParser);
        ExpectInFile(key, section, inFile);
    }

    EXPECT_EQ(document.GetSectionNames(), (std::vector{"S"s, "T"s}));
    // The line "=7" has an empty key, so `INIParser` counts it as one more header of its section.
    EXPECT_EQ(INIParser::GetSectionNames(m_path),
              (std::vector{"S"s, "T"s, ""s, "Old"s, "S"s, "S"s, "=a[S"s}));
    const std::string first = "; of k\n| |S|k|1\n| |S|k|2\n| |S|empty|\n| |S|off|3\n| |S|k|6\n";
    EXPECT_EQ(Flat(document.GetSection("S")), first + "| |S|i|a[S]\n| |S|k|8\n");
    EXPECT_EQ(Flat(wide.GetSection(L"S")), first);
    EXPECT_EQ(Flat(INIParser::GetSection("S", m_path)), "|#|S|off|0\n" + first);
    EXPECT_EQ(Flat(document.GetSection("")), "| ||above|0\n");
    EXPECT_EQ(Flat(wide.GetSection(L"T")) + Flat(INIParser::GetSection("none", m_path)), "");

    EXPECT_TRUE(document.SectionExists("S") && document.SectionExists("") && wide.SectionExists(L""));
    EXPECT_FALSE(document.SectionExists("Old") || wide.SectionExists(L"Old"));
    EXPECT_FALSE(INIParser::SectionExists("s", m_path) || INIParser::SectionExists(L"s", m_widePath));
    // Without a header of the empty name, a key above the first header makes the section.
    EXPECT_TRUE(document.Parse("#k=0\n[S]\nk=1\n") && !document.SectionExists(""));
    EXPECT_TRUE(INIParser::SectionExists("", Write("#k=0\n;lost\n[a=b]\n;c\n[S]\n")));
    EXPECT_EQ(INIParser::Content(m_path), "#k=0\na=b\n;c\n[S]\n");
}

TEST(Document, GetConverts) {
    const auto check = [](auto expected, const std::vector<std::string>& values) {
        for (const auto& value : values) {
            INIDocument document;
            WINIDocument wide;
            EXPECT_TRUE(document.SetValue("k", value, "S") && wide.SetValue(L"k", Widen(value), L"S"));
            using Value = typename decltype(expected)::value_type;
            EXPECT_EQ(document.Get<Value>("k", "S"), expected) << value;
            EXPECT_EQ(wide.Get<Value>(L"k", L"S"), expected) << value;
            EXPECT_EQ(document.Get<Value>("l", "S"), std::nullopt);
            EXPECT_EQ(document.Get<std::string>("k", "S"), value);
        }
    };
    check(std::optional(true), {"true", "YES", "On", "1"});
    check(std::optional(false), {"False", "no", "oFF", "0"});
    check(std::optional<bool>(), {"", "2", "t", "true.", "t rue"});
    check(std::optional(-12), {"-12", "-0012"});
    check(std::optional<int>(), {"", "-", "+1", "1 2", "1-2", "0x1", "1.0", "2147483648", "1\xB2"});
    check(std::optional<unsigned>(), {"-1", "4294967296"});
    check(std::optional<std::int8_t>(), {"128", "A"});
    check(std::optional(std::numeric_limits<std::int64_t>::min()), {"-9223372036854775808"});
    check(std::optional(-1250.0), {"-1250", "-1.25e3", "-1250.00", "-125E+1"});
    check(std::optional<double>(), {"", "1e400", "0x1p3", "inf", "nan", "infinity", "1.5x", "1,5", "e1"});
    check(std::optional<float>(), {"1e39"});
}

}  // namespace
