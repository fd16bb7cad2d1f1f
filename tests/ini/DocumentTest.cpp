// SPDX-License-Identifier: MIT
#include "qmUtility/platform/File.h"
#include "tests/ini/Records.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

/// An edit of either width.
struct Edit {
    std::function<bool(INIDocument&)> OfNarrow;
    std::function<bool(WINIDocument&)> OfWide;
};

/// @return an argument of an edit for the wide form.
auto Wide(const auto& argument) {
    if constexpr (std::is_convertible_v<decltype(argument), std::string>)
        return Widen(argument);
    else
        return argument;
}

/// Defines a function that makes an `Edit` of the arguments of an operation.
#define EDIT(Operation)                                                                  \
    Edit Operation(auto... arguments) {                                                  \
        return {[=](auto& document) { return document.Operation(arguments...); },        \
                [=](auto& document) { return document.Operation(Wide(arguments)...); }}; \
    }
EDITS
EDIT(Sort)

/// @return an edit that sets three keys of a section.
Edit SetKeys(const std::string& section) {
    const Edit x = SetValue("x", "1", section);
    const Edit c = SetValue("c", "1", section);
    const Edit y = SetValue("y", "1", section);
    return {[=](auto& d) { return x.OfNarrow(d) && c.OfNarrow(d) && y.OfNarrow(d); },
            [=](auto& d) { return x.OfWide(d) && c.OfWide(d) && y.OfWide(d); }};
}

/// A text, an edit, and the text after it; none for an edit that is refused.
struct Case {
    std::string Before;
    Edit Operation;
    std::optional<std::string> After;
};

std::string WithNewlines(std::string text, const std::string& newline) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += newline.size())
        text.replace(at, 1, newline);
    return text;
}

/// Checks edits in each syntax, with each newline where the cases have no CR of their own.
void Check(const std::vector<INISyntax>& syntaxes, const std::vector<Case>& cases) {
    for (const INISyntax syntax : syntaxes)
        for (const auto& [before, edit, after] : cases)
            for (const std::string newline : {"\n", "\r\n"}) {
                const auto text = WithNewlines(before, newline);
                if (text.find("\r\r") != std::string::npos ||
                    (text == before && newline != platform::Newline))
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

void CheckRefused(const std::vector<INISyntax>& syntaxes, const std::string& text,
                  const std::vector<Edit>& edits) {
    for (const Edit& edit : edits) Check(syntaxes, {{text, edit, {}}});
}

TEST(Document, RefusesEdits) {
    CheckRefused(
        {Common, Parser}, "[S]\na=1\n",
        {SetValue("a", "1\n", "S"), SetValue("a", "1 ", "S"), SetValue("", "1", "S"),
         SetValue("a=b", "1", "S"), SetValue("a\n", "1", "S"), SetValue(" a", "1", "S"),
         SetValue(";a", "1", "S"), SetValue("a", "1", "T]"), SetValue("a", "1", "T\n"), AddSection("S"),
         AddSection(""), AddSection("T]"), AddSection("T\n"), RenameSection("S", "S"), RenameSection("S", ""),
         RenameSection("S", "T]"), SetRecordComments("b", "a", "S"), SetRecordComments(" ; b", "a", "S"),
         SetRecordComments("; b\n\n; c", "a", "S"), SetRecordComments("; b=1", "a", "S"),
         // no such record or section
         DeleteRecord("b", "S"), DeleteRecord("", "S"), DeleteSection("T"), DeleteSection(""),
         RenameSection("T", "U"), CommentRecord(Hash, "a", ""), CommentRecord(Hash, "", "S"),
         CommentSection(Hash, "T"), UnCommentRecord("a", "S"), UnCommentSection("T"),
         SetRecordComments("; b", "b", "S"), SetRecordComments("; b", "", "S"),
         SetSectionComments("; b", "T"), SetSectionComments("; b", "")});
    CheckRefused({Common, Parser}, "#[S]\n#k=0\n[T]\n",  // what is commented out
                 {DeleteRecord("k", "S"), DeleteSection("S"), RenameSection("S", "U"),
                  UnCommentRecord("", "S"), UnCommentRecord("k", "T")});
    CheckRefused({Common}, "[S]\na=1\n",
                 {SetValue("a", " 1", "S"), SetValue("a", "\0"s, "S"), SetValue("[a", "b]", "S"),
                  AddSection(" T"), RenameSection("S", "T ")});
    CheckRefused({Common}, "", {SetValue(BOM "a", "1", "")});
    CheckRefused({Common}, "[S]\na=1\n  b=2\n    more\n",  // which continues a and b
                 {SetValue("a", "5", "S"), SetValue("b", "5", "S"), CommentRecord(Hash, "a", "S"),
                  CommentSection(Hash, "S"), DeleteRecord("a", "S"), SetRecordComments("; c", "b", "S")});
    CheckRefused({Common}, "[A]\n#[B]\nz=3\n#y=4\n",  // a record would be in another section
                 {CommentRecord(Hash, "z", "A"), CommentSection(Hash, "A"), UnCommentSection("B"),
                  UnCommentRecord("y", "B")});
    CheckRefused(
        {Parser}, "[S]\na=1\n[a=b]\n##k=1\nl=2\n",
        {SetValue("a", "[x]", "S"), SetValue("a", "[", "S"), SetValue("a", "c", "a=b"),
         DeleteRecord("a", "a=b"), UnCommentRecord("#k", "a=b"), SetRecordComments("# say x = 1", "a", "S")});
}

TEST(Document, EditsChangeWhatTheyAreAbout) {
    const std::vector<Case> inBoth = {
        {"[S]\n#a=0\n ; c\n a=1\t\na=2\n", SetValue("a", "5=5", "S"), "[S]\n#a=0\n ; c\n a=5=5\t\na=2\n"},
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

        {"#k=0\n; c\n k=1\nk=2\n", DeleteRecord("k", ""), "#k=0\nk=2\n"},
        {"a=1\n\n; c\n[S]\n#x=1\n;\ny=2\njunk\n\n; e\n[T]\n", DeleteSection("S"), "a=1\n\n; e\n[T]\n"},
        {"[S]\n[T]\n[S]\nx=1\n#[U]\n", DeleteSection("S"), "[T]\n#[U]\n"},
        {"; c\na=1\n\n[S]\nb=1\n", DeleteSection(""), "\n[S]\nb=1\n"},
        {" [S] x\n#[S]\n#[U]\n[S]\nk=1\n", RenameSection("S", "U"), " [U] x\n#[S]\n#[U]\n[U]\nk=1\n"},

        {"; c\n  a b=1\na b=2\n", CommentRecord(Hash, "a b", ""), "; c\n  #a b=1\na b=2\n"},
        {"k=1\n # \tk=1 \n#k=2\n", UnCommentRecord("k", ""), "k=1\n k=1 \n#k=2\n"},
        {"[S]\n a=1\n[T]\n[S] x\n#b=2\n", CommentSection(Semicolon, "S"), ";[S]\n ;a=1\n[T]\n;[S] x\n#b=2\n"},
        {"; [S]\n# a=1\n; c\n#b=2\n#[T]\n#c=3\n", UnCommentSection("S"), "[S]\na=1\n; c\nb=2\n#[T]\n#c=3\n"},

        {"#k=0\n  k=1\n", SetRecordComments("; a\n# b", "k", ""), "#k=0\n  ; a\n  # b\n  k=1\n"},
        {" ; x\n#y\nk=1\n", SetRecordComments("; a\n", "k", ""), "; a\nk=1\n"},
        {"; x\n#y\nk=1\n", SetRecordComments("", "k", ""), "k=1\n"},
        {" ; x \nk=1\n", SetRecordComments("; x", "k", ""), " ; x \nk=1\n"},  // equal ones stay
        {"#[S]\n[S]\n[S]\n", SetSectionComments("; a", "S"), "#[S]\n; a\n[S]\n[S]\n"},

        {"b=1\n# of a\na=2\n\nB=3\n\xC3=4\n", Sort(false), "B=3\n# of a\na=2\n\nb=1\n\xC3=4\n"},
        {"b=1\na=1\nb=2\na=2\n", Sort(true), "b=1\nb=2\na=1\na=2\n"},  // stable
        {"d=1\n#[S]\n#c=1\nb=2\n;a=3\n", Sort(false), "d=1\n#[S]\n;a=3\nb=2\n#c=1\n"},
        {"[B]\nb=1\n\n\n[A]\n\n; of C\n [C] x\n", Sort(true), "; of C\n [C] x\n\n\n[B]\nb=1\n\n[A]\n"},
        {"b=1\na=2\n\n[B]\nx=1\n[A]\n[B]\nx=2\n", Sort(false), "a=2\nb=1\n\n[A]\n[B]\nx=1\n[B]\nx=2\n"},
        {"[B]\n[A]\nb=1\n\n# end\n", Sort(false), "[A]\nb=1\n[B]\n\n# end\n"},
    };
    const std::vector<Case> inCommon = {
        {"a = 1 ; c \n", SetValue("a", "[x]", ""), "a = [x] \n"},
        {"a =  \r\n", SetValue("a", "5", ""), "a =  5\r\n"},  // behind the blanks, before the CR
        {"a = 1 \r\n", SetValue("a", "", ""), "a =  \r\n"},
        {"a=1\n  b=2\n more\n", SetValue("b", "5", ""), "a=1\n  b=5\n more\n"},  // which continues only a
        {"a=1\n  b=2\n", SetValue("a", "5", ""), "a=5\n  b=2\n"},
        {" a=1\n more\n", SetValue("a", "5", ""), " a=5\n more\n"},
        {"a=1\n\n  more\n", SetValue("a", "5", ""), "a=5\n\n  more\n"},
        {"a=1\n  #b=2\n  more\n", SetValue("a", "5", ""), "a=5\n  #b=2\n  more\n"},
        // A new key.
        {"[S]\nb = 1\n#k=0\na=2\n", SetValue("k", "5", "S"), "[S]\nb = 1\n#k=0\nk = 5\na=2\n"},
        {"[S]\n#k=0\nb =\t\na=2\n", SetValue("k", "5", "S"), "[S]\n#k=0\nk =\t5\nb =\t\na=2\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "S"), "[S]\n#[T]\n#k=0\nk=5\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "T"), "[S]\n#[T]\n#k=0\n\n[T]\nk=5\n"},
        {"[S]\na=1", SetValue("k", "5", "S"), "[S]\na=1\nk=5\n"},
        {"[S]\na=1\n  more\n b=2\n[T]\n", SetValue("k", "5", "S"), "[S]\na=1\n  more\n b=2\nk=5\n[T]\n"},
        {"[S]\n#k=1\n  junk\n", SetValue("k", "5", "S"), "[S]\n#k=1\n  junk\nk=5\n"},  // would continue it
        {"[B]\n#c=0\na=1\n[C]\nz=0\n", SetKeys("B"), "[B]\n#c=0\nc=1\na=1\nx=1\ny=1\n[C]\nz=0\n"},
        {BOM "# head\n\n[S]\n", SetValue("k", "5", ""), BOM "# head\n\nk=5\n\n[S]\n"},
        {BOM "[S]\n", SetValue("k", "5", ""), BOM "k=5\n\n[S]\n"},

        {"; c\n\nk=1\n[S]\n", DeleteRecord("k", ""), "; c\n\n[S]\n"},
        {"k=1\n  more\n more\nl=2\n", DeleteRecord("k", ""), "l=2\n"},
        {"[S]\na=1\n# x\n\n[T]\n", DeleteSection("S"), "[T]\n"},
        {"[S]\na=1\n#[B]\n#b=2\n; c\nz=3\n y\n[T]\n", DeleteSection("S"), "#[B]\n#b=2\n[T]\n"},
        {"[ S ]\n", RenameSection("S", "a[b"), "[ a[b ]\n"},

        {BOM "k=1\n  l=2", CommentRecord(Hash, "k", ""), BOM "#k=1\n  l=2"},
        {"; x\n\n; y\nk=1", SetRecordComments("# say x = 1", "k", ""), "; x\n\n# say x = 1\nk=1"},

        {BOM "b=1\na=2", Sort(false), BOM "a=2\nb=1\n"},  // a last line that moves gets its newline
        {"[A]\n[B]", Sort(false), "[A]\n[B]"},
        {"# head\n\nb=1\n  more\n # c\na=2\n", Sort(false), "# head\n\n # c\na=2\nb=1\n  more\n"},
        {"#c=1\n# note\nb=2\na=3\n", Sort(false), "a=3\n#c=1\n# note\nb=2\n"},  // c counts as a comment of b
        {"[B]\n# tail\n\n[A]\n; of C\n[C]\n", Sort(false), "[A]\n[B]\n# tail\n\n; of C\n[C]\n"},
        {"#[Z]\nk=1\n[B]\n#[Z]\n[A]\n#[C]\n", Sort(false), "#[Z]\nk=1\n[A]\n#[C]\n[B]\n#[Z]\n"},
    };
    const std::vector<Case> inParser = {
        {" a = 1 \n", SetValue("a ", " 5\0"s, ""), " a = 5\0 \n"s},
        {"[S]\n  b = 1\n  more\n", SetValue("k", "5", "S"), "[S]\n  b = 1\n  k=5\n  more\n"},
        {"[S]\n#[T]\n#k=0\n", SetValue("k", "5", "T"), "[S]\n#[T]\n#k=0\nk=5\n"},
        {"\n\n\n\n\n#[B]\n#c=0\n", SetKeys("B"), "\n\n\n\n\n#[B]\n#c=0\nc=1\n\n[B]\nx=1\ny=1\n"},
        {"[a=b]\nc=0\n[C]\n", SetKeys("a=b"), "[a=b]\nc=1\nx=1\ny=1\n[C]\n"},
        {"# head\n\n[S]\n", SetValue("k", "5", ""), "k=5\n\n# head\n\n[S]\n"},
        {"[S]\na=1", SetValue("k", "5", "S"), "[S]\nk=5\na=1"},  // the last line is not read
        {"a=1\nrest", AddSection(" S"), "a=1\n\n[ S]\nrest"},
        {"; c\n\njunk\nk=1\n  l=2\n", DeleteRecord("k", ""), "  l=2\n"},
        {"[S]\na=1\n# x\n\n[T]\n", DeleteSection("S"), "# x\n\n[T]\n"},
        {"[S]\na=1\n#[B]\nz=3\n[T]\n", DeleteSection("S"), "#[B]\nz=3\n[T]\n"},
        {"[A]\n#[B]\nz=3\n  more\n", CommentRecord(Hash, "z", "B"), "[A]\n#[B]\n#z=3\n  more\n"},
        {"; x\n\n; y\njunk\nk=1\n", SetRecordComments("; a", "k", ""), "; a\n\njunk\nk=1\n"},
        {"[B]\n[A]", Sort(false), "[B]\n[A]"},
        {"# head\n\nb=1\n  more\na=2\n", Sort(false), "a=2\n  more\n# head\n\nb=1\n"},
        {"[B]\n#[Z]\n[A]\n#[C]\n", Sort(false), "[A]\n[B]\n#[C]\n#[Z]\n"},
    };
    Check({Common, Parser}, inBoth);
    Check({Common}, inCommon);
    Check({Parser}, inParser);
}

TEST(Document, ArgumentsMayPointIntoIt) {
    const auto edit = [](auto& document) {
        const auto key = *++document.begin();
        return document.SetValue(key.Value, key.Key, key.Key);  // in a new section
    };
    const std::string text = "[S]\nk=a rather long value\n";
    Check({Common}, {{text, {edit, edit}, text + "\n[k]\na rather long value=k\n"}});
}

TEST(Document, CopiesAreIndependent) {
    INIDocument document(Parser);
    EXPECT_TRUE(document.Parse("[S]\nk=1\n"));
    INIDocument copy;
    copy = document;  // with its syntax, in which a value may begin with a blank
    EXPECT_TRUE(copy.SetValue("k", " 2", "S") && document.SetValue("l", "3", "S"));
    std::swap(copy, document);
    EXPECT_EQ(document.Text() + copy.Text(), "[S]\nk= 2\n[S]\nk=1\nl=3\n");
    document = std::move(copy);
    EXPECT_EQ(document.Text(), "[S]\nk=1\nl=3\n");
    // What it was moved from is as a new one.
    // NOLINTBEGIN(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
    EXPECT_TRUE(copy.Text().empty() && copy.begin() == copy.end());
    EXPECT_TRUE(copy.SetValue("k", "1", "") && copy.RecordExists("k", ""));
    // NOLINTEND(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
}

}  // namespace
