#include "qmini/Commands.h"

#include "qmini/Difference.h"
#include "qmini/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <sstream>
#include <tuple>
#include <vector>

namespace {

/// Its files are named as they stand in its folder.
class Qmini : public TemporaryFolder
{
protected:
    Qmini() { std::filesystem::current_path(Path("")); }
    ~Qmini() override { std::filesystem::current_path(m_former); }

    /// Runs qmini and collects what it says.
    /// @param call its words, of which each but the last ends in a bar; an empty last one does so, too.
    int Run(const std::string& call)
    {
        std::istringstream in(call);
        std::vector<std::string> words;
        for (std::string word; std::getline(in, word, '|');)
            words.push_back(word);
        std::ostringstream out;
        const int code = qmini::Run(words, out, out);
        m_said = out.str();
        return code;
    }

    std::string m_said;

private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

TEST_F(Qmini, AnswersOrSaysWhyNot)
{
    const std::string text = "top=1\n; c\n[S]\nk=a b\n#old=2\n\n[T] x\n[S]\nk=3\n";
    Write(text, "f");
    Write("k = v\n[S]\n[T\n", "bad");
    std::filesystem::create_directory("folder");
    // What is said stands there as a whole when it ends in a line break, and else its beginning.
    const std::tuple<const char*, int, std::string> cases[] = {
        {"get|f|S|k", 0, "a b\n"},
        {"get|f|S|old", 0, "2\n"},
        {"get|f||top", 0, "1\n"},
        {"keys|f|S", 0, "k\nold\nk\n"},
        {"sections|f", 0, "S\nT\nS\n"},
        {"show|f", 0, "top=1\n; c\n[S]\nk=a b\n#old=2\n[T]\n[S]\nk=3\n"},
        {"--help", 0, "qmini reads and edits INI files.\n\n  qmini COMMAND FILE"},
        {"sort|--help", 0, "usage: qmini sort FILE [--descending] [--dry-run]\n\nSorts"},
        {"", 2, "qmini: no command given; "},
        {"frob", 2, "qmini: no command \"frob\"; "},
        {"get|f|S", 2, "qmini: usage: qmini get FILE SECTION KEY\n"},
        {"get|f|S|k|--dry-run", 2, "qmini: no option --dry-run; usage: qmini get FILE SECTION KEY\n"},
        {"comment|f|S|--with|!", 2, "qmini: --with takes"},
        {"delete|f|S||", 2, "qmini: an empty argument"},
        {"get|f|S|z", 1, "qmini: no key \"z\" in section \"S\" of f\n"},
        {"get|f|a\nb|z", 1, "qmini: no section \"a?b\" in f\n"},
        {"keys|f|Z", 1, "qmini: no section \"Z\""},
        {"rename|f|Z|Y", 1, "qmini: no section \"Z\""},
        {"uncomment|f|S|z", 1, "qmini: no key \"z\""},
        {"note|f||text", 1, "qmini: no header of section \"\""},
        {"add|f|S", 1, "qmini: section \"S\" exists already"},
        {"rename|f||U", 2, "qmini: keys above the first header"},
        {"set|f|S]|k|v", 2, "qmini: a section name cannot hold"},
        {"rename|f|S|a\nb", 2, "qmini: a section name cannot hold"},
        {"set|f|S|a=b|v", 2, "qmini: a key cannot hold"},
        {"set|f|S|;k|v", 2, "qmini: a key cannot begin with"},
        {"set|f|S|k|a[0]", 2, "qmini: a value cannot hold"},
        {"set|f|S|k|v\r", 2, "qmini: a value cannot end with"},
        {"note|f|S|a\nb=c", 2, "qmini: a comment cannot hold"},
        {"get|bad|S|k", 2, "qmini: bad:3: header without \"]\""},
        {"check|bad", 2, "bad:1: blanks"},
        {"create|f", 1, "qmini: f exists already\n"},
        {"create|new|--dry-run", 0, ""},
        {"sections|new", 1, "qmini: cannot read new: "},
        {"set|new|S|k|v", 1, "qmini: cannot read new: "},
        {"create|new", 0, ""},
        {"sort|new", 1, "qmini: no sections to sort in new\n"},
        {"sort|folder|--dry-run", 1, "qmini: cannot read folder: "},
        {"create|no/new", 1, "qmini: cannot write "},
        {"check|f", 1, "f:7: text after"},
    };
    for (const auto& [call, code, said] : cases) {
        EXPECT_EQ(Run(call), code) << call;
        EXPECT_EQ(said.ends_with('\n') ? m_said : m_said.substr(0, said.size()), said) << call;
    }
    EXPECT_EQ(Read("f"), text);
}

TEST_F(Qmini, EditsWriteWhatDryRunsShow)
{
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"set|f|S|k|2 x", "[S]\nk=1\n", " [S]\n k=2 x\n"},
        {"set|f|S|n ||", "[S]\nk=1\n", " [S]\n n =\n k=1\n"},
        {"set|f|N|k|--|--v", "[S]\n", " [S]\n [N]\n k=--v\n"},
        {"add|f|N", "#k=1\n", "#k=1\n [N]\n"},
        {"delete|f|S|k", "[S]\n# c\nk=1\nk=2\n", " [S]\n k=2\n"},
        {"delete|f|S", "[S]\nk=1\n#[T]\n[S]\n", "#[T]\n"},
        {"rename|f|S|T", "[S]\nk=1\n#[S]\n", " [T]\n k=1\n#[T]\n"},
        {"comment|f|S|k", "[S]\nk=1\n", " [S]\n#k=1\n"},
        {"comment|f|S|--with|;", "[S]\nk=1\n", ";[S]\n;k=1\n"},
        {"uncomment|f|S|k", "#[S]\n;k=1\n", "#[S]\n k=1\n"},
        {"uncomment|f|S", "#[S]\n;k=1\n", " [S]\n k=1\n"},
        {"sort|f", "[b]\ny=1\nx=2\n[a]\n", " [a]\n [b]\n x=2\n y=1\n"},
        {"sort|f|--descending", "[a]\n[b]\nx=2\ny=1\n", " [b]\n y=1\n x=2\n [a]\n"},
        {"note|f|S|k|one\n; two\n", "[S]\n; old\nk=1\n", " [S]\n; one\n; two\n k=1\n"},
        {"note|f|S|#", "[S]\nk=1\n", "# \n [S]\n k=1\n"},
        {"note|f|S||", "; old\n[S]\n", " [S]\n"},
    };
    for (const auto& [call, before, after] : cases) {
        Write(before, "f");
        EXPECT_EQ(Run(std::string(call).insert(std::string(call).find('|'), "|--dry-run")), 0) << call;
        EXPECT_EQ(m_said, qmini::UnifiedDifference("f", before, after));
        EXPECT_EQ(Read("f"), before) << call;
        EXPECT_EQ(Run(call), 0) << call;
        EXPECT_EQ(m_said + Read("f"), after) << call;
    }
}

TEST(TemporaryCopy, IsGoneAfterUse)
{
    const std::filesystem::path path = qmini::TemporaryCopy("").Path();
    EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
}

TEST(Difference, IsUnified)
{
    const std::string nine = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "a\n", "@@ -0,0 +1,1 @@\n+a\n"},
        {"a", "a\n", "@@ -1,1 +1,1 @@\n-a\n\\ No newline at end of file\n+a\n"},
        {nine, "x\n2\n3\n4\n5\n6\n7\ny\n9\n",
         "@@ -1,9 +1,9 @@\n-1\n+x\n 2\n 3\n 4\n 5\n 6\n 7\n-8\n+y\n 9\n"},
        {nine, "x\nx\n2\n3\n4\n5\n6\n7\n8\ny\n",
         "@@ -1,4 +1,5 @@\n-1\n+x\n+x\n 2\n 3\n 4\n@@ -6,4 +7,4 @@\n 6\n 7\n 8\n-9\n+y\n"},
    };
    for (const auto& [before, after, hunks] : cases)
        EXPECT_EQ(qmini::UnifiedDifference("f", before, after), "--- f\n+++ f\n" + hunks);
    EXPECT_EQ(qmini::UnifiedDifference("f", "a\n", "a\n"), "");
    EXPECT_EQ(qmini::UnifiedDifference("my f", "", "a\n"), "--- my f\t\n+++ my f\t\n@@ -0,0 +1,1 @@\n+a\n");
}

} // namespace
