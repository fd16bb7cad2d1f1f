// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <codecvt>
#include <cstdint>
#include <functional>
#include <limits>
#include <locale>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

constexpr auto Common = INISyntax::Common;
constexpr auto Parser = INISyntax::Parser;
constexpr auto Hash = INICommentChar::Hash;
constexpr auto Semicolon = INICommentChar::Semicolon;
#define BOM "\xEF\xBB\xBF"
#if defined(_WIN32)
constexpr auto Newline = "\r\n"; // of the platform's text files
#else
constexpr auto Newline = "\n";
#endif

/// @return the records of a document, or copies of some, each as "comments|Commented|Section|Key|Value" and a
///   newline.
std::string Flat(const auto& records)
{
    std::string all;
    const auto add = [&](const auto& field, char end) { all.append(field.begin(), field.end()) += end; };
    for (const auto& record : records) {
        if constexpr (requires { record.Comments(); })
            add(record.Comments(), '|');
        else
            add(record.Comments, '|');
        add(std::vector{record.Commented}, '|'), add(record.Section, '|');
        add(record.Key, '|'), add(record.Value, '\n');
    }
    return all;
}

/// @return the records of a text, or what is wrong with it.
template <class Document, class String>
std::string Read(INISyntax syntax, const String& text)
{
    Document document(syntax);
    try {
        const bool isText = document.Parse(text);
        EXPECT_EQ(document.Text(), isText ? text : String());
        return isText ? Flat(document) : "no text";
    } catch (const INIFormatError& error) {
        EXPECT_EQ(document.Text(), String());
        EXPECT_STREQ(error.what(), "invalid string position");
        return "line " + std::to_string(error.Line());
    }
}

TEST(Document, ReadsRecords)
{
    // a text, and its records in both syntaxes
    const std::string cases[][3] = {
        {"[A]\nk=v", "| |A||\n| |A|k|v\n", "| |A||\n"}, // the last line has no newline
        {"[ S ] tail ]\r\n \tk \t=\t v = w\t \r\n", "| |S||\n| |S|k|v = w\n",
         "| | S ||\n| | S |k \t|\t v = w\n"},
        {"a=\n\nb= \r\n", "| ||a|\n| ||b|\n", "| ||a|\n| ||b|\n"},
        {"\fk\v=\f\n", "| ||\fk\v|\f\n", "| ||\fk\v|\f\n"}, // form feed and vertical tab are no blanks
        {"=x\n = \n[]\n[ ]\n", "", "| |||x\n| |||\n| |||\n| | ||\n"},
        {"junk\n;c\njunk\nk=1\n", "| ||k|1\n", "| |||\n;c\n| ||k|1\n"},
        {"k=1\r\n#[S\n", "| ||k|1\n", "line 2"},
        {"Name[de]=x\n[a=b\n", "| ||Name[de]|x\n| ||[a|b\n", "line 2"},
        {"a[b]=c\n", "| ||a[b]|c\n", "| |[b||\n"},
        {"#k=v\n;[S]x\n# \t a = b c\n  ;\t[T]\r\n", "|#||k|v\n|;|S||\n|#|S|a|b c\n|;|T||\n",
         "|#||k|v\n|;|S||\n|#|S|a | b c\n|;|T||\n"},
        {"#Last Folder=x\n# [a=b]\nk=1\n", "|#||Last Folder|x\n|#|a=b||\n| ||k|1\n",
         "|#||Last Folder|x\n|#|a=b|a|b\n| |a=b|k|1\n"},
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
        {"k\0=1\n"s, "no text", "| ||k\0|1\n"s},
    };
    for (const auto& [text, common, parser] : cases) {
        EXPECT_EQ(Read<INIDocument>(Common, text), common) << text;
        EXPECT_EQ(Read<WINIDocument>(Common, Widen(text)), common) << text;
        EXPECT_EQ(Read<INIDocument>(Parser, text), parser) << text;
        EXPECT_EQ(Read<WINIDocument>(Parser, Widen(text)), parser) << text;
    }
    EXPECT_EQ(Read<WINIDocument>(Common, L"\uFEFF[S]\n"s), "| |S||\n");
}

TEST(Document, LookupsFindActiveRecords)
{
    const std::string text =
        "above=0\n; of S\n[S]\n#k=0\n; of k\nk=1\nk=2\nempty=\n[T]\n;[Old]\nk=5\n[S]\nk=6\n";
    // key, section, and the record in both syntaxes
    const std::string cases[][4] = {
        {"k", "S", "; of k\n| |S|k|1\n", "; of k\n| |S|k|1\n"},
        {"", "S", "; of S\n| |S||\n", "; of S\n| |S||\n"},
        {"empty", "S", "| |S|empty|\n", "| |S|empty|\n"},
        {"above", "", "| ||above|0\n", "| ||above|0\n"},
        {"k", "T", "| |T|k|5\n", ""},
        {"k", "Old", "", "| |Old|k|5\n"},
        {"", "Old", "", ""},
        {"K", "S", "", ""},
        {"", "", "", ""},
    };
    const auto check = [&](const auto& document, const auto& key, const auto& section, const auto& fallback,
                           const std::string& expected) {
        const auto found = document.GetRecord(key, section);
        EXPECT_EQ(found ? Flat(std::vector{*found}) : "", expected) << expected;
        EXPECT_EQ(document.RecordExists(key, section), found.has_value()) << expected;
        EXPECT_EQ(document.GetValue(key, section, fallback), found ? found->Value : fallback) << expected;
    };
    INIDocument document;
    WINIDocument wide(Parser);
    ASSERT_TRUE(document.Parse(text) && wide.Parse(Widen(text)));
    for (const auto& [key, section, common, parser] : cases) {
        check(document, key, section, text, common);
        check(wide, Widen(key), Widen(section), Widen(text), parser);
    }
    EXPECT_EQ(document.GetSectionNames(), (std::vector{"S"s, "T"s}));
    EXPECT_EQ(Flat(document.GetSection("S")), "; of k\n| |S|k|1\n| |S|k|2\n| |S|empty|\n| |S|k|6\n");
    EXPECT_EQ(Flat(document.GetSection("")), "| ||above|0\n");
    EXPECT_EQ(Flat(wide.GetSection(L"T")), "");
    EXPECT_TRUE(document.SectionExists("S") && document.SectionExists("") && wide.SectionExists(L""));
    EXPECT_FALSE(document.SectionExists("Old") || wide.SectionExists(L"Old"));
    ASSERT_TRUE(document.Parse("#k=0\n[S]\nk=1\n"));
    EXPECT_FALSE(document.SectionExists("")); // no key above the header is active
}

TEST(Document, GetConverts)
{
    const auto check = [](auto expected, const std::vector<std::string>& values) {
        for (const auto& value : values) {
            INIDocument document;
            WINIDocument wide;
            EXPECT_TRUE(document.SetValue("k", value, "S") && wide.SetValue(L"k", Widen(value), L"S"));
            using Value = typename decltype(expected)::value_type;
            EXPECT_EQ(document.Get<Value>("k", "S"), expected) << value;
            EXPECT_EQ(wide.Get<Value>(L"k", L"S"), expected) << value;
            EXPECT_EQ(document.Get<Value>("l", "S"), std::nullopt);
        }
    };
    check(std::optional(true), {"true", "YES", "On", "1"});
    check(std::optional(false), {"False", "no", "oFF", "0"});
    check(std::optional<bool>(), {"", "2", "t", "true."});
    check(std::optional(-12), {"-12", "-0012"});
    check(std::optional<int>(), {"", "-", "+1", "1 2", "0x1", "1.0", "2147483648", "1\xB2"});
    check(std::optional<unsigned>(), {"-1", "4294967296"});
    check(std::optional<std::int8_t>(), {"128", "A"});
    check(std::optional(std::numeric_limits<std::int64_t>::min()), {"-9223372036854775808"});
    check(std::optional(-1250.0), {"-1250", "-1.25e3", "-1250.00", "-125E+1"});
    check(std::optional<double>(), {"", "1e400", "0x1p3", "inf", "nan", "infinity", "1.5x", "1,5", "e1"});
    check(std::optional<float>(), {"1e39"});
    INIDocument document;
    EXPECT_TRUE(document.SetValue("k", "a b", "S"));
    EXPECT_EQ(document.Get<std::string>("k", "S"), "a b");
}

/// An edit of either width.
struct Edit
{
    Edit(auto edit) : OfNarrow(edit), OfWide(edit) {}
    std::function<bool(INIDocument&)> OfNarrow;
    std::function<bool(WINIDocument&)> OfWide;
};

/// @return an argument in the width of a document.
template <class Char>
auto As(const BasicINIDocument<Char>& /*document*/, const auto& argument)
{
    if constexpr (!std::is_convertible_v<decltype(argument), std::string>)
        return argument;
    else if constexpr (std::is_same_v<Char, char>)
        return std::string(argument);
    else
        return Widen(argument);
}

/// Defines a function that makes an `Edit` of the arguments of an operation.
#define EDIT(Operation)                                                                                      \
    Edit Operation(const auto&... arguments)                                                                 \
    {                                                                                                        \
        return [=](auto& document) { return document.Operation(As(document, arguments)...); };               \
    }
EDIT(SetValue)
EDIT(AddSection)
EDIT(DeleteRecord)
EDIT(DeleteSection)
EDIT(RenameSection)
EDIT(CommentRecord)
EDIT(CommentSection)
EDIT(UnCommentRecord)
EDIT(UnCommentSection)
EDIT(SetRecordComments)
EDIT(SetSectionComments)
EDIT(Sort)

/// A text, an edit, and the text after it; none for an edit that is refused.
struct Case
{
    std::string Before;
    Edit Operation;
    std::optional<std::string> After;
};

std::string WithNewlines(std::string text, const std::string& newline)
{
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += newline.size())
        text.replace(at, 1, newline);
    return text;
}

/// Checks edits in a syntax, with each newline where the cases have no CR of their own.
void Check(INISyntax syntax, const std::vector<Case>& cases)
{
    for (const auto& [before, edit, after] : cases)
        for (const std::string newline : {"\n", "\r\n"}) {
            const auto text = WithNewlines(before, newline);
            if (text.find("\r\r") != std::string::npos || (text == before && newline != Newline))
                continue;
            SCOPED_TRACE((syntax == Common ? "Common: " : "Parser: ") + text);
            INIDocument document(syntax);
            INIDocument fresh(syntax);
            WINIDocument wide(syntax);
            ASSERT_TRUE(document.Parse(text) && wide.Parse(Widen(text)));
            EXPECT_EQ(edit.OfNarrow(document), after.has_value());
            EXPECT_EQ(edit.OfWide(wide), after.has_value());
            EXPECT_EQ(document.Text(), WithNewlines(after.value_or(before), newline));
            EXPECT_EQ(wide.Text(), Widen(document.Text()));
            EXPECT_TRUE(fresh.Parse(document.Text()));
            EXPECT_EQ(Flat(document), Flat(fresh));
            EXPECT_EQ(Flat(wide), Flat(fresh));
        }
}

void InCommon(const std::vector<Case>& cases) { Check(Common, cases); }
void InParser(const std::vector<Case>& cases) { Check(Parser, cases); }
void InBoth(const std::vector<Case>& cases) { InCommon(cases), InParser(cases); }

std::vector<Case> Refused(const std::string& text, const std::vector<Edit>& edits)
{
    std::vector<Case> cases;
    for (const auto& edit : edits)
        cases.push_back({text, edit, {}});
    return cases;
}

TEST(Document, RefusesEdits)
{
    const std::string text = "[S]\na=1\n";
    InBoth(Refused(text, {SetValue("a", "1\n", "S"), SetValue("a", "1 ", "S"), SetValue("", "1", "S"),
                          SetValue("a=b", "1", "S"), SetValue("a\n", "1", "S"), SetValue(" a", "1", "S"),
                          SetValue(";a", "1", "S"), SetValue("a", "1", "T]"), SetValue("a", "1", "T\n")}));
    InBoth(Refused(text, {AddSection("S"), AddSection(""), AddSection("T]"), AddSection("T\n"),
                          RenameSection("S", "S"), RenameSection("S", ""), RenameSection("S", "T]")}));
    InBoth(Refused(text, {SetRecordComments("b", "a", "S"), SetRecordComments(" ; b", "a", "S"),
                          SetRecordComments("; b\n\n; c", "a", "S"), SetRecordComments("; b=1", "a", "S")}));
    InBoth(Refused(text, // no such record or section
                   {DeleteRecord("b", "S"), DeleteRecord("", "S"), DeleteSection("T"), DeleteSection(""),
                    RenameSection("T", "U"), CommentRecord(Hash, "a", ""), CommentRecord(Hash, "", "S"),
                    CommentSection(Hash, "T"), UnCommentRecord("a", "S"), UnCommentSection("T"),
                    SetRecordComments("; b", "b", "S"), SetRecordComments("; b", "", "S"),
                    SetSectionComments("; b", "T"), SetSectionComments("; b", "")}));
    InBoth(Refused("#[S]\n#k=0\n[T]\n", // what is commented out
                   {DeleteRecord("k", "S"), DeleteSection("S"), RenameSection("S", "U"),
                    CommentRecord(Hash, "k", "S"), CommentSection(Hash, "S"), UnCommentRecord("", "S"),
                    UnCommentRecord("k", "T"), SetRecordComments("; a", "k", "S"),
                    SetSectionComments("; a", "S")}));
    InCommon(Refused(text, {SetValue("a", " 1", "S"), SetValue("a", "\0"s, "S"), SetValue("[a", "b]", "S"),
                            AddSection(" T"), RenameSection("S", "T ")}));
    InCommon(Refused("", {SetValue(BOM "a", "1", "")}));
    InCommon(
        Refused("[S]\na=1\n  b=2\n    more\n", // which continues a and b
                {SetValue("a", "5", "S"), SetValue("b", "5", "S"), CommentRecord(Hash, "a", "S"),
                 CommentSection(Hash, "S"), DeleteRecord("a", "S"), SetRecordComments("; c", "b", "S")}));
    InCommon(Refused("[A]\n#[B]\nz=3\n#y=4\n", // a record would be in another section
                     {CommentRecord(Hash, "z", "A"), CommentSection(Hash, "A"), UnCommentSection("B"),
                      UnCommentRecord("y", "B")}));
    InParser(Refused("[S]\na=1\n[a=b]\n##k=1\nl=2\n",
                     {SetValue("a", "[x]", "S"), SetValue("a", "[", "S"), SetValue("a", "c", "a=b"),
                      DeleteRecord("a", "a=b"), UnCommentRecord("#k", "a=b"),
                      SetRecordComments("# say x = 1", "a", "S")}));
}

TEST(Document, EditsChangeWhatTheyAreAbout)
{
    InBoth({
        {"[S]\n#a=0\n ; c\n a=1\t\na=2\n", SetValue("a", "5=5", "S"), "[S]\n#a=0\n ; c\n a=5=5\t\na=2\n"},
        {"a=\n", SetValue("a", "5", ""), "a=5\n"},
        {"a=1\n", SetValue("a", "", ""), "a=\n"},
        // A new key.
        {"[S]\n #k=0\n#k=1\n\ta=2\nb=3\n", SetValue("k", "5", "S"), "[S]\n #k=0\n\tk=5\n#k=1\n\ta=2\nb=3\n"},
        {"[S]\na=1\n[S]\n b=2\n\n# c\n[T]\n", SetValue("k", "5", "S"),
         "[S]\na=1\n[S]\n b=2\n k=5\n\n# c\n[T]\n"},
        {"\t[S] tail\n# c\n[T]\n[S]\n", SetValue("k", "5", "S"), "\t[S] tail\n\tk=5\n# c\n[T]\n[S]\n"},
        {"a=1\n#[S]\n", SetValue("k", "5", "S"), "a=1\n#[S]\n\n[S]\nk=5\n"},
        {"a=1\n \n", SetValue("k", "5", "S"), "a=1\n \n[S]\nk=5\n"},
        {"", SetValue("k", "5", "S"), "[S]\nk=5\n"},
        {"; head\n", SetValue("k", "5", ""), "; head\nk=5\n"},
        {"a=1\n\n[S]\n", SetValue("k", "5", ""), "a=1\nk=5\n\n[S]\n"},
        {"#a=1\n; c\n#[S]\n[T]\n", SetValue("k", "5", ""), "#a=1\nk=5\n\n; c\n#[S]\n[T]\n"},
        {"[S]\r\na=1\n", SetValue("k", "5", "S"), "[S]\r\na=1\nk=5\r\n"},

        {"#[S]\n", AddSection("S"), "#[S]\n\n[S]\n"},
        {"#k=0\n; c\n k=1\nk=2\n", DeleteRecord("k", ""), "#k=0\nk=2\n"},
        {"a=1\n\n; c\n[S]\n#x=1\n;\ny=2\njunk\n\n; e\n[T]\n", DeleteSection("S"), "a=1\n\n; e\n[T]\n"},
        {"[S]\n[T]\n[S]\nx=1\n#[U]\n", DeleteSection("S"), "[T]\n#[U]\n"},
        {"[S]\n#[S]\n; c\nx=1\n#x=1\n[T]\n", DeleteSection("S"), "#[S]\n#x=1\n[T]\n"},
        {"; c\na=1\n\n[S]\nb=1\n", DeleteSection(""), "\n[S]\nb=1\n"},
        {" [S] x\n#[S]\n#[U]\n[S]\nk=1\n", RenameSection("S", "U"), " [U] x\n#[S]\n#[U]\n[U]\nk=1\n"},

        {"; c\n  a b=1\na b=2\n", CommentRecord(Hash, "a b", ""), "; c\n  #a b=1\na b=2\n"},
        {"k=1\n # \tk=1 \n#k=2\n", UnCommentRecord("k", ""), "k=1\n k=1 \n#k=2\n"},
        {"[S]\n a=1\n[T]\n[S] x\n#b=2\n", CommentSection(Semicolon, "S"), ";[S]\n ;a=1\n[T]\n;[S] x\n#b=2\n"},
        {"; [S]\n# a=1\n; c\n#b=2\n#[T]\n#c=3\n", UnCommentSection("S"), "[S]\na=1\n; c\nb=2\n#[T]\n#c=3\n"},

        {"#k=0\n  k=1\n", SetRecordComments("; a\n# b", "k", ""), "#k=0\n  ; a\n  # b\n  k=1\n"},
        {" ; x\n#y\nk=1\n", SetRecordComments("; a\n", "k", ""), "; a\nk=1\n"},
        {"; x\n#y\nk=1\n", SetRecordComments("", "k", ""), "k=1\n"},
        {" ; x \nk=1\n", SetRecordComments("; x", "k", ""), " ; x \nk=1\n"}, // equal ones stay
        {"#[S]\n[S]\n[S]\n", SetSectionComments("; a", "S"), "#[S]\n; a\n[S]\n[S]\n"},

        {"b=1\n# of a\na=2\n\nB=3\n\xC3=4\n", Sort(false), "B=3\n# of a\na=2\n\nb=1\n\xC3=4\n"},
        {"b=1\na=1\nb=2\na=2\n", Sort(true), "b=1\nb=2\na=1\na=2\n"}, // stable
        {"d=1\n#[S]\n#c=1\nb=2\n;a=3\n", Sort(false), "d=1\n#[S]\n;a=3\nb=2\n#c=1\n"},
        {"[B]\nb=1\n\n\n[A]\n\n; of C\n [C] x\n", Sort(true), "; of C\n [C] x\n\n\n[B]\nb=1\n\n[A]\n"},
        {"b=1\na=2\n\n[B]\nx=1\n[A]\n[B]\nx=2\n", Sort(false), "a=2\nb=1\n\n[A]\n[B]\nx=1\n[B]\nx=2\n"},
        {"[B]\n[A]\nb=1\n\n# end\n", Sort(false), "[A]\nb=1\n[B]\n\n# end\n"},
    });
    InCommon({
        {"a = 1 ; c \n", SetValue("a", "[x]", ""), "a = [x] \n"},
        {"a =  \r\n", SetValue("a", "5", ""), "a =  5\r\n"}, // behind the blanks, before the CR
        {"a = 1 \r\n", SetValue("a", "", ""), "a =  \r\n"},
        {BOM "a=1", SetValue("a", "5", ""), BOM "a=5"},
        {"a=1\n  b=2\n more\n", SetValue("b", "5", ""), "a=1\n  b=5\n more\n"}, // which continues only a
        {"a=1\n  b=2\n", SetValue("a", "5", ""), "a=5\n  b=2\n"},
        {" a=1\n more\n", SetValue("a", "5", ""), " a=5\n more\n"},
        {"a=1\n\n  more\n", SetValue("a", "5", ""), "a=5\n\n  more\n"},
        {"a=1\n  #b=2\n  more\n", SetValue("a", "5", ""), "a=5\n  #b=2\n  more\n"},
        // A new key.
        {"[S]\nb = 1\n#k=0\na=2\n", SetValue("k", "5", "S"), "[S]\nb = 1\n#k=0\nk = 5\na=2\n"},
        {"[S]\n#k=0\nb =\t\na=2\n", SetValue("k", "5", "S"), "[S]\n#k=0\nk =\t5\nb =\t\na=2\n"},
        {"[S]\n # k = 0\n", SetValue("k", "5", "S"), "[S]\n # k = 0\n k = 5\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "S"), "[S]\n#[T]\n#k=0\nk=5\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "T"), "[S]\n#[T]\n#k=0\n\n[T]\nk=5\n"},
        {"[S]\na=1", SetValue("k", "5", "S"), "[S]\na=1\nk=5\n"},
        {"[S]\na=1\n  more\n b=2\n[T]\n", SetValue("k", "5", "S"), "[S]\na=1\n  more\n b=2\nk=5\n[T]\n"},
        {"[S]\n#k=1\n  junk\n", SetValue("k", "5", "S"), "[S]\n#k=1\n  junk\nk=5\n"}, // would continue it
        {BOM "# head\n\n[S]\n", SetValue("k", "5", ""), BOM "# head\n\nk=5\n\n[S]\n"},
        {BOM "[S]\n", SetValue("k", "5", ""), BOM "k=5\n\n[S]\n"},

        {"a=1", AddSection("S"), "a=1\n\n[S]\n"},
        {"; c\n\nk=1\n[S]\n", DeleteRecord("k", ""), "; c\n\n[S]\n"},
        {"k=1\n  more\n more\nl=2\n", DeleteRecord("k", ""), "l=2\n"},
        {"[S]\na=1\n# x\n\n[T]\n", DeleteSection("S"), "[T]\n"},
        {"[S]\na=1\n#[B]\n#b=2\n; c\nz=3\n[T]\n", DeleteSection("S"), "#[B]\n#b=2\n[T]\n"},
        {"[ S ]\n", RenameSection("S", "a[b"), "[ a[b ]\n"},

        {BOM "k=1\n  l=2", CommentRecord(Hash, "k", ""), BOM "#k=1\n  l=2"},
        {"[A]\n#[B]\n#z=3\n", UnCommentRecord("z", "A"), "[A]\n#[B]\nz=3\n"},
        {"; x\n\n; y\nk=1", SetRecordComments("# say x = 1", "k", ""), "; x\n\n# say x = 1\nk=1"},

        {BOM "b=1\na=2", Sort(false), BOM "a=2\nb=1\n"}, // a last line that moves gets its newline
        {"[A]\n[B]", Sort(false), "[A]\n[B]"},
        {"# head\n\nb=1\n  more\n # c\na=2\n", Sort(false), "# head\n\n # c\na=2\nb=1\n  more\n"},
        {"#c=1\n# note\nb=2\na=3\n", Sort(false), "a=3\n#c=1\n# note\nb=2\n"}, // c counts as a comment of b
        {"[B]\n# tail\n\n[A]\n; of C\n[C]\n", Sort(false), "[A]\n[B]\n# tail\n\n; of C\n[C]\n"},
        {"#[Z]\nk=1\n[B]\n#[Z]\n[A]\n#[C]\n", Sort(false), "#[Z]\nk=1\n[A]\n#[C]\n[B]\n#[Z]\n"},
    });
    InParser({
        {" a = 1 \n", SetValue("a ", " 5\0"s, ""), " a = 5\0 \n"s},
        {"[S]\n  b = 1\n  more\n", SetValue("k", "5", "S"), "[S]\n  b = 1\n  k=5\n  more\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "T"), "[S]\n#[T]\n#k=0\nk=5\n"},
        {"# head\n\n[S]\n", SetValue("k", "5", ""), "k=5\n\n# head\n\n[S]\n"},
        {"[S]\na=1", SetValue("k", "5", "S"), "[S]\nk=5\na=1"}, // the last line is not read
        {"a=1\nrest", AddSection(" S"), "a=1\n\n[ S]\nrest"},
        {"; c\n\njunk\nk=1\n  l=2\n", DeleteRecord("k", ""), "  l=2\n"},
        {"[S]\na=1\n# x\n\n[T]\n", DeleteSection("S"), "# x\n\n[T]\n"},
        {"[S]\na=1\n#[B]\nz=3\n[T]\n", DeleteSection("S"), "#[B]\nz=3\n[T]\n"},
        {"[A]\n#[B]\nz=3\n  more\n", CommentRecord(Hash, "z", "B"), "[A]\n#[B]\n#z=3\n  more\n"},
        {"[A]\n#[B]\nz=3\n", UnCommentSection("B"), "[A]\n[B]\nz=3\n"},
        {"; x\n\n; y\njunk\nk=1\n", SetRecordComments("; a", "k", ""), "; a\n\njunk\nk=1\n"},
        {"[B]\n[A]", Sort(false), "[B]\n[A]"},
        {"# head\n\nb=1\n  more\na=2\n", Sort(false), "a=2\n  more\n# head\n\nb=1\n"},
        {"[B]\n#[Z]\n[A]\n#[C]\n", Sort(false), "[A]\n[B]\n#[C]\n#[Z]\n"},
    });
}

TEST(Document, NewKeysFollowTheLastKeyOfTheirSection)
{
    const std::tuple<INISyntax, std::string, std::string, std::string, std::string> cases[] = {
        {Common, "B", "[B]\n#c=0\na=1\n[C]\nz=0\n", "xcy", "[B]\n#c=0\nc=1\na=1\nx=1\ny=1\n[C]\nz=0\n"},
        {Parser, "B", "\n\n\n\n\n#[B]\n#c=0\n", "xcy", "\n\n\n\n\n#[B]\n#c=0\nc=1\n\n[B]\nx=1\ny=1\n"},
        {Parser, "a=b", "[a=b]\nc=0\n[C]\n", "xcy", "[a=b]\nc=1\nx=1\ny=1\n[C]\n"},
        {Common, "a=b", "[a=b]\nc=0\n[C]\n", "xcy", "[a=b]\nc=1\nx=1\ny=1\n[C]\n"},
    };
    for (const auto& [syntax, section, text, keys, expected] : cases) {
        INIDocument document(syntax);
        EXPECT_TRUE(document.Parse(text));
        for (const char key : keys)
            EXPECT_TRUE(document.SetValue({&key, 1}, "1", section)) << text << key;
        EXPECT_EQ(document.Text(), expected);
    }
}

TEST(Document, ArgumentsMayPointIntoIt)
{
    const auto edit = [](auto& document) {
        const auto key = *++document.begin();
        return document.SetValue(key.Value, key.Key, key.Key); // in a new section
    };
    InBoth({{"[S]\nk=a rather long value\n", edit,
             "[S]\nk=a rather long value\n\n[k]\na rather long value=k\n"}});
}

TEST(Document, CopiesAreIndependent)
{
    INIDocument document;
    EXPECT_TRUE(document.Parse("[S]\nk=1\n"));
    INIDocument copy = document;
    EXPECT_TRUE(copy.SetValue("k", "2", "S") && document.SetValue("l", "3", "S"));
    std::swap(copy, document);
    EXPECT_EQ(document.Text() + copy.Text(), "[S]\nk=2\n[S]\nk=1\nl=3\n");
    document = std::move(copy);
    EXPECT_EQ(document.Text(), "[S]\nk=1\nl=3\n");
    // What it was moved from is as a new one.
    // NOLINTBEGIN(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
    EXPECT_TRUE(copy.Text().empty() && copy.begin() == copy.end());
    EXPECT_TRUE(copy.SetValue("k", "1", "") && copy.RecordExists("k", ""));
    // NOLINTEND(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
}

using DocumentFile = TemporaryFolder;

TEST_F(DocumentFile, LoadsWhatWasSaved)
{
    const std::string text = BOM "; \xC3\r\n\t[S]\r\n\r\nk = \x1A\n#l=2\n  more";
    for (const INISyntax syntax : {Common, Parser}) {
        INIDocument document(syntax);
        INIDocument loaded(syntax);
        WINIDocument wide(syntax);
        std::error_code error = std::make_error_code(std::errc::io_error);
        ASSERT_TRUE(document.Parse(text) && document.Save(Path("new.ini"), error) && !error);
        ASSERT_TRUE(wide.Load(Path("new.ini")) && wide.Save(WidePath("new.ini")));
        EXPECT_EQ(wide.Text(), Widen(text));
        error = std::make_error_code(std::errc::io_error);
        ASSERT_TRUE(loaded.Load(Path("new.ini"), error) && !error);
        EXPECT_EQ(loaded.Text(), text);
    }
    EXPECT_TRUE(INIDocument().Save(Path("new.ini"))); // an empty text
    EXPECT_EQ(Read(Path("new.ini")), "");
}

TEST_F(DocumentFile, AFailureHasAReason)
{
    INIDocument document;
    INIDocument parser(Parser);
    std::error_code error;
    ASSERT_TRUE(document.Parse("[S]\n") && parser.Parse("[S]\n"));
    EXPECT_FALSE(document.Load(Path("missing.ini"), error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(document.Load(Path(""), error));
    EXPECT_EQ(error, std::errc::is_a_directory);
    EXPECT_FALSE(document.Load(Write("a\0=1\n"s), error));
    EXPECT_EQ(error, std::errc::illegal_byte_sequence);
    const auto path = Write("k=1\n[Broken\n");
    EXPECT_THROW(parser.Load(path), INIFormatError);
    std::filesystem::permissions(path, std::filesystem::perms::none);
    if (!std::ifstream(path)) { // unless the user may read any file
        EXPECT_FALSE(document.Load(path, error));
        EXPECT_EQ(error, std::errc::permission_denied);
    }
    std::filesystem::permissions(path,
                                 std::filesystem::perms::owner_all); // Windows deletes no read-only file
    EXPECT_FALSE(document.Save(Path("no such folder/new.ini"), error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(document.Text() + parser.Text(), "[S]\n[S]\n");
}

TEST_F(DocumentFile, TheLocaleConvertsTheWideForm)
{
    const std::locale utf8(std::locale::classic(), new std::codecvt_utf8<wchar_t>);
    WINIDocument document(Common, utf8);
    WINIDocument classic(Common, std::locale::classic());
    std::error_code error;
    ASSERT_TRUE(document.Load(Write("k=\u00E4\n")) && classic.Load(Path("test.ini")));
    EXPECT_EQ(document.GetValue(L"k", L""), L"\u00E4");
    EXPECT_TRUE(document.SetValue(L"k", L"\u20AC", L"") && document.Save(Path("test.ini")));
    EXPECT_EQ(Read(Path("test.ini")), "k=\u20AC\n");

    // A character that cannot be encoded, and bytes that cannot be decoded.
    EXPECT_TRUE(classic.SetValue(L"k", L"\u20AC", L""));
    EXPECT_FALSE(classic.Save(Path("test.ini"), error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(classic.Save(Path("new.ini")) || std::filesystem::exists(Path("new.ini")));
    EXPECT_EQ(Read(Path("test.ini")), "k=\u20AC\n");
    for (const auto& text : {"k=\xFF\n"s, "k=\xC3"s, "k=\xE2\x82\0\xAC\n"s}) {
        EXPECT_FALSE(document.Load(Write(text), error)) << text;
        EXPECT_EQ(error, std::errc::illegal_byte_sequence) << text;
        EXPECT_EQ(document.Text().substr(0, 3), L"k=\u20AC");
    }
}

} // namespace
