#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>

namespace {

/// What an edit of a file returns and leaves behind: `After` is the file, byte for byte.
struct Case
{
    std::string Before;
    std::function<bool(const std::string&)> Edit;
    bool Result;
    std::string After;
};

class Edits : public TemporaryFolder
{
protected:
    void Check(const std::vector<Case>& cases)
    {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const std::string path = Write(cases[i].Before);
            EXPECT_EQ(cases[i].Edit(path), cases[i].Result) << "case " << i;
            EXPECT_EQ(Read(path), cases[i].After) << "case " << i;
        }
    }
};

/// Makes an edit of a file from an operation and the arguments before the path.
constexpr auto editBy = [](auto operation) {
    return [=](auto... arguments) {
        return [=](const std::string& path) { return operation(arguments..., path); };
    };
};

constexpr auto Set = editBy([](auto... arguments) { return INIParser::SetValue(arguments...); });

auto SetWide(const wchar_t* key, const std::wstring& value, const wchar_t* section)
{
    return [=](const std::string& path) {
        return INIParser::SetValue(key, value, section, {path.begin(), path.end()});
    };
}

TEST_F(Edits, SetAValue)
{
    Check({
        {"[S]\na=1\n", Set("a", "2", "S"), true, " [S]\n a=2\n"},
        {"[S]\na=1\n", Set("b", "2", "S"), true, " [S]\n b=2\n a=1\n"},
        {"[S]\na=1\n[T]\nc=3\n", Set("b", "2", "T"), true, " [S]\n a=1\n [T]\n b=2\n c=3\n"},
        {"[S]\na=1\n", Set("x", "9", "N"), true, " [S]\n a=1\n [N]\n x=9\n"},
        {"[S]\n;n\n#a=1\n", Set("a", "2", "S"), true, " [S]\n;n\n#a=2\n"},
        {"[S]\na=1\na=2\n", Set("a", "5", "S"), true, " [S]\n a=5\n a=2\n"},
        {";[S]\na=1\n[S]\n", Set("b", "2", "S"), true, ";[S]\n b=2\n a=1\n [S]\n"},
        {"k=1\nl=2\n[S]\n", Set("n", "3", ""), true, " k=1\n n=3\n l=2\n [S]\n"},
        {"[S]\n", Set("n", "3", ""), true, " [S]\n []\n n=3\n"},
        {"[S]\n", Set("", "2", "S"), true, " [S]\n"}, // the header's key, which has no value to write
        {"", Set("a", "1", "S"), true, " [S]\n a=1\n"},
        // What reading drops, a rewrite loses.
        {"\n  [S]  tail\n\n; c\r\n\n a = 1 \r\njunk\n; lost\nlast=1", Set("a ", " 2", "S"), true,
         " [S]\n; c\n a = 2\n []\n"},
    });
}

TEST_F(Edits, SetAValueInTheWideForm)
{
    // Live lines are not indented, and an empty line comes before every header but the first.
    Check({
        {"k=0\n;s\n[S]\na=1\n#b=2\n;t\n;[T]\n[U]\n", SetWide(L"a", L"2", L"S"), true,
         "k=0\n;s\n[S]\na=2\n#b=2\n;t\n\n;[T]\n\n[U]\n"},
        {"[S]\na=1\n", SetWide(L"b", L"2", L"S"), true, "[S]\nb=2\na=1\n"},
        {"[S]\na=1\n", SetWide(L"x", L"9", L"N"), true, "[S]\na=1\n\n[N]\nx=9\n"},
        {"[S]\na=1\n[T]\n", SetWide(L"a", std::wstring(L"\u20AC\u0100!") + wchar_t(-1), L"S"), true,
         "[S]\na=?\?!?\n\n[T]\n"},
    });
}

TEST_F(Edits, AddDeleteAndRename)
{
    constexpr auto add = editBy(INIParser::AddSection);
    constexpr auto drop = editBy(INIParser::DeleteRecord);
    constexpr auto dropAll = editBy(INIParser::DeleteSection);
    constexpr auto rename = editBy(INIParser::RenameSection);
    Check({
        {"[A]\na=1\n", add("B"), true, " [A]\n a=1\n [B]\n"},
        {"[A]\na=1\n", add("A"), true, " [A]\n a=1\n [A]\n"},
        {"[S]\nx=1\n;c\nx=2\n", drop("x", "S"), true, " [S]\n;c\n x=2\n"},
        {"[S]\n;c\n#x=1\ny=2\n", drop("x", "S"), true, " [S]\n y=2\n"},
        {"[S]\nx=1\n[T]\n", drop("x", "T"), false, "[S]\nx=1\n[T]\n"}, // not rewritten
        {"[R]\n[S]\nx=1\n[S]\n", drop("", "S"), true, " [R]\n x=1\n [S]\n"},
        {";c\n[S]\n#x=1\n[T]\n;d\ny=1\n;[S]\nz=1\n", dropAll("S"), true, " [T]\n;d\n y=1\n"},
        {"[T]\n", dropAll("S"), true, " [T]\n"}, // rewritten all the same
        {"[A]\na=1\n[B]\n;[A]\n#b=1\n", rename("A", "C"), true, " [C]\n a=1\n [B]\n;[C]\n#b=1\n"},
        {"[A]\n", rename("X", "Y"), true, " [A]\n"},
    });
}

TEST_F(Edits, CommentOutAndRestore)
{
    constexpr auto comment = editBy(INIParser::CommentRecord);
    constexpr auto restore = editBy(INIParser::UnCommentRecord);
    constexpr auto commentAll = editBy(INIParser::CommentSection);
    constexpr auto restoreAll = editBy(INIParser::UnCommentSection);
    Check({
        {"[S]\n;c\nk=1\nk=2\n", comment(INIParser::Hash, "k", "S"), true, " [S]\n;c\n#k=1\n k=2\n"},
        {"[S]\n#k=1\n", comment(INIParser::Semicolon, "k", "S"), true, " [S]\n;k=1\n"},
        {"[S]\nk=1\n", comment(INIParser::Hash, "", "S"), true, "#[S]\n k=1\n"},
        {"[S]\n#k=1\n;k=2\n", restore("k", "S"), true, " [S]\n k=1\n;k=2\n"},
        {"[S]\n#k=1\n[T]\n", restore("k", "T"), false, "[S]\n#k=1\n[T]\n"},
        {"[S]\nk=1\n[T]\nt=1\n[S]\n#l=1\n", commentAll(';', "S"), true,
         ";[S]\n;k=1\n [T]\n t=1\n;[S]\n;l=1\n"},
        {"k=1\n[S]\n", commentAll('#', ""), true, "#k=1\n [S]\n"},
        {"[S]\n", commentAll('!', "S"), true, "![S]\n"}, // any character is written
        {";[S]\n#k=1\n;[T]\n", restoreAll("S"), true, " [S]\n k=1\n;[T]\n"},
    });
}

TEST_F(Edits, ReplaceComments)
{
    constexpr auto note = editBy(INIParser::SetRecordComments);
    constexpr auto noteSection = editBy(INIParser::SetSectionComments);
    Check({
        {"[S]\n;old\nk=1\nk=2\n", note("; a", "k", "S"), true, " [S]\n; a\n k=1\n k=2\n"},
        {"[S]\n#k=1\n", note("; a\n", "k", "S"), true, " [S]\n; a\n\n#k=1\n"}, // gets another line break
        {"[S]\nk=1\n", note("#", "k", "S"), true, " [S]\n# k=1\n"},            // too short to get one
        {"[S]\n;old\nk=1\n", note("", "k", "S"), true, " [S]\n k=1\n"},
        {"k=1\n;old\n;[S]\n[S]\n", noteSection("; a\n; b", "S"), true, " k=1\n; a\n; b\n;[S]\n [S]\n"},
        {"k=1\n[S]\n", noteSection("; a", ""), false, "k=1\n[S]\n"}, // keys, but no header
    });
}

TEST_F(Edits, Sort)
{
    constexpr auto sort = [](bool descending) {
        return [=](const std::string& path) { return INIParser::Sort(path, descending); };
    };
    const std::string unsorted = "[b]\n[A]\n;of k10\nk10=1\n#k2=2\nK1=3\n;of a\n[a]\n\xC3=1\nz=1\n";
    Check({
        {unsorted, sort(false), true,
         " [A]\n K1=3\n;of k10\n k10=1\n#k2=2\n;of a\n [a]\n z=1\n \xC3=1\n [b]\n"},
        {unsorted, sort(true), true,
         " [b]\n;of a\n [a]\n \xC3=1\n z=1\n [A]\n#k2=2\n;of k10\n k10=1\n K1=3\n"},
        {"k=1\n;[T]\n[S]\n", sort(false), true, " [S]\n;[T]\n"}, // keys above the first header are dropped
        {"k=1\njunk\n[S]\n", sort(false), true,
         " []\n k=1\n [S]\n"},                                // but not where a record has the empty name
        {"[S]\ny=1\nx=2\n[R]\n[S]\nz=3\n", sort(false), true, // each header takes all keys of its name
         " [R]\n [S]\n x=2\n y=1\n z=3\n [S]\n x=2\n y=1\n z=3\n"},
        {"[S]\nk=1\n=x\n", sort(false), true, " [S]\n k=1\n [S]\n k=1\n"},
        {"k=1\n", sort(false), false, "k=1\n"}, // no header: not rewritten
    });
}

TEST_F(Edits, CreateEmptiesAnExistingFile)
{
    Check({{"[S]\nk=1\n", [](const std::string& path) { return INIParser::Create(path); }, true, ""}});
    EXPECT_TRUE(INIParser::Create(Path("new.ini")));
    EXPECT_EQ(INIParser::GetSectionNames(Path("new.ini")).size(), 0U);
    EXPECT_FALSE(INIParser::Create(Path("no such folder/new.ini")));
}

} // namespace
