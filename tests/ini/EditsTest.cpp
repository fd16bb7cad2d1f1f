// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/ini/Records.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>

namespace {

using Edit = std::function<bool(const std::string& path)>;

/// Defines a function that makes an `Edit` of the arguments of an operation.
#define EDIT(Operation)                                                                           \
    Edit Operation(auto... arguments) {                                                           \
        return [=](const std::string& path) { return INIParser::Operation(arguments..., path); }; \
    }
EDITS

using Edits = TemporaryFolder;

TEST_F(Edits, RewriteTheFile) {
    const Edit ascending = [](const std::string& path) { return INIParser::Sort(path, false); };
    const Edit descending = [](const std::string& path) { return INIParser::Sort(path, true); };
    const std::string unsorted = "[b]\n[A]\n;of k10\nk10=1\n#k2=2\nK1=3\n;of a\n[a]\n\xC3=1\nz=1\n";
    struct {
        std::string Before;
        Edit Operation;
        std::string After;  ///< byte for byte
        bool Result = true;
    } const cases[] = {
        // A missing key becomes the first of its section.
        {"[S]\na=1\n[T]\nc=3\n", SetValue("b", "2", "T"), " [S]\n a=1\n [T]\n b=2\n c=3\n"},
        {"[S]\n", SetValue("n", "3", ""), " [S]\n []\n n=3\n"},

        {"[A]\na=1\n", AddSection("A"), " [A]\n a=1\n [A]\n"},
        {"[S]\n;c\n#x=1\ny=2\n", DeleteRecord("x", "S"), " [S]\n y=2\n"},
        {"[S]\nx=1\n[T]\n", DeleteRecord("x", "T"), "[S]\nx=1\n[T]\n", false},
        {"[R]\n[S]\nx=1\n[S]\n", DeleteRecord("", "S"), " [R]\n x=1\n [S]\n"},
        {";c\n[S]\n#x=1\n[T]\n;d\ny=1\n;[S]\nz=1\n", DeleteSection("S"), " [T]\n;d\n y=1\n"},
        {"[A]\na=1\n[B]\n;[A]\n#b=1\n", RenameSection("A", "C"), " [C]\n a=1\n [B]\n;[C]\n#b=1\n"},

        {"[S]\n;c\nk=1\nk=2\n", CommentRecord(Hash, "k", "S"), " [S]\n;c\n#k=1\n k=2\n"},
        {"[S]\nk=1\n", CommentRecord(Hash, "", "S"), "#[S]\n k=1\n"},
        {"[S]\n#k=1\n;k=2\n", UnCommentRecord("k", "S"), " [S]\n k=1\n;k=2\n"},
        {"[S]\nk=1\n[T]\nt=1\n[S]\n#l=1\n", CommentSection(';', "S"), ";[S]\n;k=1\n [T]\n t=1\n;[S]\n;l=1\n"},
        {";[S]\n#k=1\n;[T]\n", UnCommentSection("S"), " [S]\n k=1\n;[T]\n"},

        // A newline is added to comments, unless they are too short.
        {"[S]\n#k=1\n", SetRecordComments("; a\n", "k", "S"), " [S]\n; a\n\n#k=1\n"},
        {"[S]\nk=1\n", SetRecordComments("#", "k", "S"), " [S]\n# k=1\n"},
        {"k=1\n;old\n;[S]\n[S]\n", SetSectionComments("; a\n; b", "S"), " k=1\n; a\n; b\n;[S]\n [S]\n"},
        {"k=1\n[S]\n", SetSectionComments("; a", ""), "k=1\n[S]\n", false},  // no header

        {unsorted, ascending, " [A]\n K1=3\n;of k10\n k10=1\n#k2=2\n;of a\n [a]\n z=1\n \xC3=1\n [b]\n"},
        {unsorted, descending, " [b]\n;of a\n [a]\n \xC3=1\n z=1\n [A]\n#k2=2\n;of k10\n k10=1\n K1=3\n"},
        {"k=1\n;[T]\n[S]\n", ascending, " [S]\n;[T]\n"},  // keys above the first header are dropped
        {"k=1\n", ascending, "k=1\n", false},             // no header: not rewritten
    };
    const std::string otherName = Path("other.ini");  // of the file, which a rewrite does not replace
    std::filesystem::create_hard_link(Write(""), otherName);
    for (const auto& [before, edit, after, result] : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &before - &cases[0].Before << ": " << before);
        EXPECT_EQ(edit(Write(before)), result);
        EXPECT_EQ(Read(otherName), after);
    }
}

TEST_F(Edits, WideFilesAreNotIndentedAndHaveAnEmptyLineBeforeEachHeaderButTheFirst) {
    Write("k=0\n;s\n[S]\na=1\n#b=2\n;t\n;[T]\n");
    const std::wstring value = std::wstring(L"\u20AC\u0100!") + wchar_t(-1);  // has no bytes in this locale
    EXPECT_TRUE(INIParser::SetValue(L"a", value, L"S", m_widePath));
    EXPECT_TRUE(INIParser::SetValue(L"u", L"1", L"U", m_widePath));
    EXPECT_EQ(Read(m_path), "k=0\n;s\n[S]\na=?\?!?\n#b=2\n;t\n\n;[T]\n\n[U]\nu=1\n");
}

}  // namespace
