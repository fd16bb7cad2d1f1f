// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>

namespace {

/// An argument of either width.
struct Text : std::string
{
    operator std::wstring() const { return Widen(*this); }
};

Text operator""_t(const char* bytes, std::size_t /*size*/) { return {bytes}; }

/// An edit, as `INIParser` and as a document of either width does it.
struct Edit
{
    std::function<bool(const std::string&)> OfFile;
    std::function<bool(INIDocument&)> OfDocument;
    std::function<bool(WINIDocument&)> OfWideDocument;
};

/// Makes an `Edit` of an operation and its arguments without the path.
#define EDIT(Operation, ...)                                                                                 \
    Edit                                                                                                     \
    {                                                                                                        \
        [](const std::string& path) { return INIParser::Operation(__VA_ARGS__, path); },                     \
            [](INIDocument& document) { return document.Operation(__VA_ARGS__); },                           \
            [](WINIDocument& document) { return document.Operation(__VA_ARGS__); }                           \
    }

/// What an edit of a file leaves behind, byte for byte, and returns.
struct Case
{
    std::string Before;
    Edit Operation;
    std::string After;
    bool Result = true;
};

class Edits : public TemporaryFolder
{
protected:
    void Check(const std::vector<Case>& cases)
    {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const auto& [before, edit, after, result] = cases[i];
            SCOPED_TRACE("case " + std::to_string(i));
            const std::string path = Write(before);
            EXPECT_EQ(edit.OfFile(path), result);
            EXPECT_EQ(Read(path), after);

            Write(before);
            INIDocument document;
            WINIDocument wide;
            ASSERT_TRUE(document.Load(path) && wide.Load(WidePath("test.ini")));
            EXPECT_EQ(edit.OfDocument(document), result);
            EXPECT_EQ(edit.OfWideDocument(wide), result);
            EXPECT_EQ(wide.Content(), Widen(document.Content()));
            EXPECT_TRUE(!result || document.Save(path));
            EXPECT_EQ(Read(path), after);
        }
    }
};

TEST_F(Edits, SetValueInsertsMissingKeysFirstAndMissingSectionsLast)
{
    Check({
        {"[S]\na=1\n", EDIT(SetValue, "a"_t, "2"_t, "S"_t), " [S]\n a=2\n"},
        {"[S]\na=1\n[T]\nc=3\n", EDIT(SetValue, "b"_t, "2"_t, "T"_t), " [S]\n a=1\n [T]\n b=2\n c=3\n"},
        {"[S]\na=1\n", EDIT(SetValue, "x"_t, "9"_t, "N"_t), " [S]\n a=1\n [N]\n x=9\n"},
        {"[S]\n;n\n#a=1\n", EDIT(SetValue, "a"_t, "2"_t, "S"_t), " [S]\n;n\n#a=2\n"},
        {";[S]\na=1\n[S]\n", EDIT(SetValue, "b"_t, "2"_t, "S"_t), ";[S]\n b=2\n a=1\n [S]\n"},
        {"k=1\nl=2\n[S]\n", EDIT(SetValue, "n"_t, "3"_t, ""_t), " k=1\n n=3\n l=2\n [S]\n"},
        {"[S]\n", EDIT(SetValue, "n"_t, "3"_t, ""_t), " [S]\n []\n n=3\n"},
        {"[S]\n", EDIT(SetValue, ""_t, "2"_t, "S"_t), " [S]\n"}, // a header has no value to write
    });
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
        {"[A]\na=1\n", EDIT(AddSection, "B"_t), " [A]\n a=1\n [B]\n"},
        {"[A]\na=1\n", EDIT(AddSection, "A"_t), " [A]\n a=1\n [A]\n"},
        {"[S]\nx=1\n;c\nx=2\n", EDIT(DeleteRecord, "x"_t, "S"_t), " [S]\n;c\n x=2\n"},
        {"[S]\n;c\n#x=1\ny=2\n", EDIT(DeleteRecord, "x"_t, "S"_t), " [S]\n y=2\n"},
        {"[S]\nx=1\n[T]\n", EDIT(DeleteRecord, "x"_t, "T"_t), "[S]\nx=1\n[T]\n", false}, // not rewritten
        {"[R]\n[S]\nx=1\n[S]\n", EDIT(DeleteRecord, ""_t, "S"_t), " [R]\n x=1\n [S]\n"},
        {";c\n[S]\n#x=1\n[T]\n;d\ny=1\n;[S]\nz=1\n", EDIT(DeleteSection, "S"_t), " [T]\n;d\n y=1\n"},
        {"[T]\n", EDIT(DeleteSection, "S"_t), " [T]\n"}, // still rewritten
        {"[A]\na=1\n[B]\n;[A]\n#b=1\n", EDIT(RenameSection, "A"_t, "C"_t), " [C]\n a=1\n [B]\n;[C]\n#b=1\n"},
    });
}

TEST_F(Edits, CommentOutAndRestore)
{
    Check({
        {"[S]\n;c\nk=1\nk=2\n", EDIT(CommentRecord, INIParser::Hash, "k"_t, "S"_t), " [S]\n;c\n#k=1\n k=2\n"},
        {"[S]\n#k=1\n", EDIT(CommentRecord, INIParser::Semicolon, "k"_t, "S"_t), " [S]\n;k=1\n"},
        {"[S]\nk=1\n", EDIT(CommentRecord, INIParser::Hash, ""_t, "S"_t), "#[S]\n k=1\n"},
        {"[S]\n#k=1\n;k=2\n", EDIT(UnCommentRecord, "k"_t, "S"_t), " [S]\n k=1\n;k=2\n"},
        {"[S]\n#k=1\n[T]\n", EDIT(UnCommentRecord, "k"_t, "T"_t), "[S]\n#k=1\n[T]\n", false},
        {"[S]\nk=1\n[T]\nt=1\n[S]\n#l=1\n", EDIT(CommentSection, ';', "S"_t),
         ";[S]\n;k=1\n [T]\n t=1\n;[S]\n;l=1\n"},
        {"[S]\n", EDIT(CommentSection, '!', "S"_t), "![S]\n"}, // any character is written
        {";[S]\n#k=1\n;[T]\n", EDIT(UnCommentSection, "S"_t), " [S]\n k=1\n;[T]\n"},
    });
}

TEST_F(Edits, ReplaceComments)
{
    Check({
        {"[S]\n;old\nk=1\nk=2\n", EDIT(SetRecordComments, "; a"_t, "k"_t, "S"_t), " [S]\n; a\n k=1\n k=2\n"},
        // A newline is added, unless the comment is too short.
        {"[S]\n#k=1\n", EDIT(SetRecordComments, "; a\n"_t, "k"_t, "S"_t), " [S]\n; a\n\n#k=1\n"},
        {"[S]\nk=1\n", EDIT(SetRecordComments, "#"_t, "k"_t, "S"_t), " [S]\n# k=1\n"},
        {"[S]\n;old\nk=1\n", EDIT(SetRecordComments, ""_t, "k"_t, "S"_t), " [S]\n k=1\n"},
        {"k=1\n;old\n;[S]\n[S]\n", EDIT(SetSectionComments, "; a\n; b"_t, "S"_t),
         " k=1\n; a\n; b\n;[S]\n [S]\n"},
        {"k=1\n[S]\n", EDIT(SetSectionComments, "; a"_t, ""_t), "k=1\n[S]\n", false}, // keys, but no header
    });
}

TEST_F(Edits, Sort)
{
    constexpr auto sort = [](bool descending) {
        const auto sortDocument = [=](auto& document) { return document.Sort(descending); };
        return Edit{[=](const std::string& path) { return INIParser::Sort(path, descending); }, sortDocument,
                    sortDocument};
    };
    const std::string unsorted = "[b]\n[A]\n;of k10\nk10=1\n#k2=2\nK1=3\n;of a\n[a]\n\xC3=1\nz=1\n";
    Check({
        {unsorted, sort(false), " [A]\n K1=3\n;of k10\n k10=1\n#k2=2\n;of a\n [a]\n z=1\n \xC3=1\n [b]\n"},
        {unsorted, sort(true), " [b]\n;of a\n [a]\n \xC3=1\n z=1\n [A]\n#k2=2\n;of k10\n k10=1\n K1=3\n"},
        {"k=1\n;[T]\n[S]\n", sort(false), " [S]\n;[T]\n"},      // keys above the first header are dropped
        {"k=1\njunk\n[S]\n", sort(false), " []\n k=1\n [S]\n"}, // but not where a record has the empty name
        // Each header takes all keys of its name.
        {"[S]\nk=1\n=x\n", sort(false), " [S]\n k=1\n [S]\n k=1\n"},
        {"k=1\n", sort(false), "k=1\n", false}, // no header: not rewritten
    });
}

} // namespace
