// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <vector>

namespace {

using std::bind_front;
using CommentChar = INIParser::CommentChar;

/// What an edit of a file leaves behind, byte for byte, and returns.
struct Case
{
    std::string Before;
    std::function<bool(const std::string& path)> Edit;
    std::string After;
    bool Result = true;
};

class Edits : public TemporaryFolder
{
protected:
    void Check(const std::vector<Case>& cases)
    {
        for (const auto& [before, edit, after, result] : cases) {
            SCOPED_TRACE(testing::Message() << "case " << &before - &cases[0].Before);
            const std::string path = Write(before);
            EXPECT_EQ(edit(path), result);
            EXPECT_EQ(Read(path), after);
        }
    }
};

TEST_F(Edits, SetValueInsertsMissingKeysFirstAndMissingSectionsLast)
{
    struct
    {
        std::string Before, Key, Value, Section, After;
    } const cases[] = {
        {"[S]\na=1\n", "a", "2", "S", " [S]\n a=2\n"},
        {"[S]\na=1\n[T]\nc=3\n", "b", "2", "T", " [S]\n a=1\n [T]\n b=2\n c=3\n"},
        {"[S]\na=1\n", "x", "9", "N", " [S]\n a=1\n [N]\n x=9\n"},
        {"[S]\n;n\n#a=1\na=3\n", "a", "2", "S", " [S]\n;n\n#a=2\n a=3\n"},
        {";[S]\na=1\n[S]\n", "b", "2", "S", ";[S]\n b=2\n a=1\n [S]\n"},
        {"k=1\nl=2\n[S]\n", "n", "3", "", " k=1\n n=3\n l=2\n [S]\n"},
        {"[S]\n", "n", "3", "", " [S]\n []\n n=3\n"},
        {"[S]\n", "", "2", "S", " [S]\n"}, // a header has no value to write
    };
    for (const auto& [before, key, value, section, after] : cases) {
        SCOPED_TRACE(before);
        const std::string path = Write(before);
        EXPECT_TRUE(INIParser::SetValue(key, value, section, path));
        EXPECT_EQ(Read(path), after);
        const std::string content = INIParser::Content(path);
        Write(before);
        EXPECT_TRUE(INIParser::SetValue(Widen(key), Widen(value), Widen(section), WidePath("test.ini")));
        EXPECT_EQ(INIParser::Content(path), content);
    }
}

TEST_F(Edits, WideFilesAreNotIndentedAndHaveAnEmptyLineBeforeEachHeaderButTheFirst)
{
    const std::string path = Write("k=0\n;s\n[S]\na=1\n#b=2\n;t\n;[T]\n[U]\n");
    const std::wstring value = std::wstring(L"\u20AC\u0100!") + wchar_t(-1); // has no bytes in this locale
    EXPECT_TRUE(INIParser::SetValue(L"a", value, L"S", WidePath("test.ini")));
    EXPECT_EQ(Read(path), "k=0\n;s\n[S]\na=?\?!?\n#b=2\n;t\n\n;[T]\n\n[U]\n");
}

TEST_F(Edits, AddSectionDeleteAndRename)
{
    Check({
        {"[A]\na=1\n", bind_front(INIParser::AddSection, "B"), " [A]\n a=1\n [B]\n"},
        {"[A]\na=1\n", bind_front(INIParser::AddSection, "A"), " [A]\n a=1\n [A]\n"},
        {"[S]\nx=1\n;c\nx=2\n", bind_front(INIParser::DeleteRecord, "x", "S"), " [S]\n;c\n x=2\n"},
        {"[S]\n;c\n#x=1\ny=2\n", bind_front(INIParser::DeleteRecord, "x", "S"), " [S]\n y=2\n"},
        {"[S]\nx=1\n[T]\n", bind_front(INIParser::DeleteRecord, "x", "T"), "[S]\nx=1\n[T]\n", false},
        {"[R]\n[S]\nx=1\n[S]\n", bind_front(INIParser::DeleteRecord, "", "S"), " [R]\n x=1\n [S]\n"},
        {";c\n[S]\n#x=1\n[T]\n;d\ny=1\n;[S]\nz=1\n", bind_front(INIParser::DeleteSection, "S"),
         " [T]\n;d\n y=1\n"},
        {"[T]\n", bind_front(INIParser::DeleteSection, "S"), " [T]\n"}, // rewritten all the same
        {"[A]\na=1\n[B]\n;[A]\n#b=1\n", bind_front(INIParser::RenameSection, "A", "C"),
         " [C]\n a=1\n [B]\n;[C]\n#b=1\n"},
    });
}

TEST_F(Edits, CommentOutAndRestore)
{
    Check({
        {"[S]\n;c\nk=1\nk=2\n", bind_front(INIParser::CommentRecord, CommentChar::Hash, "k", "S"),
         " [S]\n;c\n#k=1\n k=2\n"},
        {"[S]\n#k=1\n", bind_front(INIParser::CommentRecord, CommentChar::Semicolon, "k", "S"),
         " [S]\n;k=1\n"},
        {"[S]\nk=1\n", bind_front(INIParser::CommentRecord, CommentChar::Hash, "", "S"), "#[S]\n k=1\n"},
        {"[S]\n#k=1\n;k=2\n", bind_front(INIParser::UnCommentRecord, "k", "S"), " [S]\n k=1\n;k=2\n"},
        {"[S]\n#k=1\n[T]\n", bind_front(INIParser::UnCommentRecord, "k", "T"), "[S]\n#k=1\n[T]\n", false},
        {"[S]\nk=1\n[T]\nt=1\n[S]\n#l=1\n", bind_front(INIParser::CommentSection, ';', "S"),
         ";[S]\n;k=1\n [T]\n t=1\n;[S]\n;l=1\n"},
        {"[S]\n", bind_front(INIParser::CommentSection, '!', "S"), "![S]\n"}, // any character is written
        {";[S]\n#k=1\n;[T]\n", bind_front(INIParser::UnCommentSection, "S"), " [S]\n k=1\n;[T]\n"},
    });
}

TEST_F(Edits, ReplaceComments)
{
    Check({
        {"[S]\n;old\nk=1\nk=2\n", bind_front(INIParser::SetRecordComments, "; a", "k", "S"),
         " [S]\n; a\n k=1\n k=2\n"},
        // A newline is added, unless the comment is too short.
        {"[S]\n#k=1\n", bind_front(INIParser::SetRecordComments, "; a\n", "k", "S"), " [S]\n; a\n\n#k=1\n"},
        {"[S]\nk=1\n", bind_front(INIParser::SetRecordComments, "#", "k", "S"), " [S]\n# k=1\n"},
        {"[S]\n;old\nk=1\n", bind_front(INIParser::SetRecordComments, "", "k", "S"), " [S]\n k=1\n"},
        {"k=1\n;old\n;[S]\n[S]\n", bind_front(INIParser::SetSectionComments, "; a\n; b", "S"),
         " k=1\n; a\n; b\n;[S]\n [S]\n"},
        {"k=1\n[S]\n", bind_front(INIParser::SetSectionComments, "; a", ""), "k=1\n[S]\n",
         false}, // no header
    });
}

TEST_F(Edits, Sort)
{
    const auto ascending = [](const std::string& path) { return INIParser::Sort(path, false); };
    const auto descending = [](const std::string& path) { return INIParser::Sort(path, true); };
    const std::string unsorted = "[b]\n[A]\n;of k10\nk10=1\n#k2=2\nK1=3\n;of a\n[a]\n\xC3=1\nz=1\n";
    Check({
        {unsorted, ascending, " [A]\n K1=3\n;of k10\n k10=1\n#k2=2\n;of a\n [a]\n z=1\n \xC3=1\n [b]\n"},
        {unsorted, descending, " [b]\n;of a\n [a]\n \xC3=1\n z=1\n [A]\n#k2=2\n;of k10\n k10=1\n K1=3\n"},
        {"k=1\n;[T]\n[S]\n", ascending, " [S]\n;[T]\n"},      // keys above the first header are dropped
        {"k=1\njunk\n[S]\n", ascending, " []\n k=1\n [S]\n"}, // but not where a record has the empty name
        // Each header takes all keys of its name.
        {"[S]\ny=1\n[R]\n[S]\nx=2\n=x\n", ascending,
         " [R]\n [S]\n x=2\n y=1\n [S]\n x=2\n y=1\n [S]\n x=2\n y=1\n"},
        {"k=1\n", ascending, "k=1\n", false}, // no header: not rewritten
    });
}

} // namespace
