#include "qmini/Command.h"
#include "qmini/Difference.h"
#include "tests/support/TemporaryFolder.h"

#include <sstream>
#include <tuple>

namespace {

/// Runs qmini in a folder of its own.
class Qmini : public TemporaryFolder
{
protected:
    Qmini() { std::filesystem::current_path(Path("")); }
    ~Qmini() override { std::filesystem::current_path(m_former); }

    /// @param call its words, each followed by a bar, which may lack after the last one unless it is empty
    int Run(const std::string& call, const std::string& input = {})
    {
        std::istringstream words(call);
        std::vector<std::string> arguments;
        for (std::string word; std::getline(words, word, '|');)
            arguments.push_back(word);
        std::istringstream in(input);
        std::ostringstream out;
        const int code = qmini::Run(arguments, {in, out, out});
        m_said = out.str();
        return code;
    }

    std::string m_said;

private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

const std::string RefusedText = "refused (--force does it all the same, --dry-run shows it):\n";

TEST_F(Qmini, AnswersOrSaysWhyNot)
{
    const std::string text = "top=1\n; c\n [S]\n k=a b\n x =1\n#old=2\n\n [T] x\n [S]\n k=3\n old=4\n";
    Write(text, "f");
    Write("k = v\n[S]\n[T\n", "bad");
    std::filesystem::create_directory("folder");
    // What is said stands there as a whole when it ends in a newline, and else its beginning.
    const std::tuple<const char*, int, std::string> cases[] = {
        {"get|f|S|old", 0,
         "2\nqmini: note: key \"old\" in section \"S\" is commented out, an active one follows\n"},
        {"get|f|S|z|--default|d", 0, "d\n"},
        {"keys|f|S", 0, "k\nx \nold\nk\nold\n"},
        {"sections|f|-z", 0, std::string("S\0T\0S\0", 6)},
        {"show|f", 0, "top=1\n; c\n[S]\nk=a b\nx =1\n#old=2\n[T]\n[S]\nk=3\nold=4\n"},
        {"check|bad", 1, "bad:1: warning: blanks"},
        {"-h", 0, "qmini reads and edits INI files.\n\n  qmini COMMAND FILE"},
        {"sort|--help", 0, "usage: qmini sort FILE [--descending] [--dry-run] [--force]\n\nSorts"},
        {"--version", 0, "qmini 1."},
        {"frob", 2, "qmini: no command \"frob\"; "},
        {"note|f|S", 2, "qmini: note: missing TEXT\nusage: qmini note FILE SECTION [KEY] TEXT [--dry-run]"},
        {"get|f|S|k|v", 2, "qmini: get: one argument too many: \"v\"\nusage: qmini get FILE"},
        {"get|f|S|k|--dry-run", 2, "qmini: get: no option --dry-run\nusage: "},
        {"get|f|S|k|--default", 2, "qmini: get: missing --default TEXT\nusage: "},
        {"delete|f|S||", 2, "qmini: delete: an empty argument"},
        {"get|f|S|X", 1, "qmini: no key \"X\" in section \"S\" of f; did you mean \"x \"?\n"},
        {"rename|f|s|U", 1, "qmini: no section \"s\" in f; did you mean \"S\"?\n"},
        {"get|f|a\nb|z", 1, "qmini: no section \"a?b\" in f\n"},
        {"rename|f|S|a\nb", 2, "qmini: a section name cannot hold"},
        {"set|f|S|a=b|v", 2, "qmini: a key cannot hold"},
        {"set|f|S|;k|v", 2, "qmini: a key cannot begin with"},
        {"set|f|S|k|a[0]", 2, "qmini: a value cannot hold"},
        {"set|f|S|k|v\r", 2, "qmini: a value cannot end with"},
        {"note|f|S|a\nb=c", 2, "qmini: a comment cannot hold"},
        {"get|bad|S|k", 1, "qmini: bad:3: header without \"]\""},
        {"set|bad|S|k|v", 3, "qmini: bad:3: header without \"]\""},
        {"set|f|S|x|2", 3,
         "qmini: f: " + RefusedText + "f:8: text after \"]\": lost by an edit: \"x\"\n" +
             "no key \"x\", but one that differs in blanks: \"x \"\n"},
        {"create|f", 1, "qmini: f exists already\n"},
        {"set|new|S|k|v", 1, "qmini: cannot read new: "},
        {"create|new", 0, ""},
        {"sort|folder|--dry-run", 1, "qmini: cannot read folder: "},
        {"edit|-", 2, "qmini: edit takes its commands from standard input"},
    };
    for (const auto& [call, code, said] : cases) {
        EXPECT_EQ(Run(call), code) << call;
        EXPECT_EQ(said.ends_with('\n') ? m_said : m_said.substr(0, said.size()), said) << call;
    }
    EXPECT_EQ(Read("f"), text);

    std::istringstream in("[S]\n");
    std::ostringstream err;
    std::ostream full(nullptr);
    EXPECT_EQ(qmini::Run({"sections", "-"}, {in, full, err}), 1);
    EXPECT_EQ(err.str(), "qmini: cannot write to standard output\n");
}

TEST_F(Qmini, EditsWriteWhatDryRunsShow)
{
    // Those with the code 3 are refused, and done with --force.
    const std::tuple<const char*, int, const char*, const char*> cases[] = {
        {"set|f|N|k|--|--v", 0, "[S]\n", " [S]\n [N]\n k=--v\n"},
        {"set|f|S|k|2|--keep-commented", 0, "[S]\n;k=1\nk=3\n", " [S]\n;k=2\n k=3\n"},
        {"set|f|S|k|2|--activate", 0, "[S]\n;k=1\n", " [S]\n k=2\n"},
        {"set|f|S|x|2", 3, "[S]\nx = 1\n", " [S]\n x=2\n x = 1\n"},
        {"set|f|E|k|2", 3, "[E]\nk=1\nk[de]=\n# x", " [E]\n k=2\n [[de]\n"},
        {"add|f|N", 3, "\xEF\xBB\xBF[S]\n", " [\xBB\xBF[S]\n [N]\n"},
        {"delete|f|S|k", 3, "[S]\n#k=1\nk=2\n", " [S]\n k=2\n"},
        {"delete|f|S", 0, "[S]\nk=1\n#[T]\n", "#[T]\n"},
        {"rename|f|S|T", 0, "[S]\nk=1\n", " [T]\n k=1\n"},
        {"comment|f|S|--with=;", 0, "[S]\nk=1\n", ";[S]\n;k=1\n"},
        {"uncomment|f|S|k", 0, "#[S]\n;k=1\n", "#[S]\n k=1\n"},
        {"sort|f", 3, "t=1\n[b]\n[a]\n", " [a]\n [b]\n"},
        {"sort|f|--descending", 3, "[a]\nx=2\n[b]\n[a]\n", " [b]\n [a]\n x=2\n [a]\n x=2\n"},
        {"note|f|S|k|one\n; two\n", 0, "[S]\n; old\nk=1\n", " [S]\n; one\n; two\n k=1\n"},
        {"note|f|S|#", 0, "[S]\nk=1\n", "# \n [S]\n k=1\n"},
    };
    for (const auto& [words, code, before, after] : cases) {
        const auto with = [call = std::string(words)](const char* file) {
            return std::string(call).replace(call.find("|f"), 2, file);
        };
        Write(before, "f");
        EXPECT_EQ(Run(with("|f|--dry-run")), code) << words;
        EXPECT_TRUE(m_said.starts_with(qmini::UnifiedDifference("f", before, after))) << words << m_said;
        EXPECT_EQ(Run(words), code) << words;
        EXPECT_EQ(Read("f"), code == 0 ? after : before) << words;
        EXPECT_EQ(Run(with("|-|--force"), before), 0) << words;
        EXPECT_EQ(m_said, after) << words;
        EXPECT_TRUE(code == 0 || Run(with("|f|--force")) == 0) << words;
        EXPECT_EQ(Read("f"), after) << words;
    }
}

TEST_F(Qmini, ABatchMakesAllItsEditsOrNone)
{
    const std::string before = " [S]\n;k=1\n";
    Write(before, "f");
    const std::tuple<const char*, int, std::string> cases[] = {
        {"add N\nadd S", 1, "qmini: line 2: section \"S\" exists already"},
        {"add N\nset S 'k", 2, "qmini: line 2: no closing '"},
        {"get S k", 2, "qmini: line 1: \"get\" does not edit"},
        {"add N --force", 2, "qmini: line 1: add: --dry-run"},
        {"\nset S k 2", 3, "qmini: f: " + RefusedText + "line 2: key \"k\" is commented out"},
    };
    for (const auto& [commands, code, said] : cases) {
        EXPECT_EQ(Run("edit|f", commands), code) << commands;
        EXPECT_EQ(m_said.substr(0, said.size()), said);
        EXPECT_EQ(Read("f"), before) << commands;
    }
    EXPECT_EQ(Run("edit|f", "# c\r\n\tset --activate S k 'a \"b\"'\"c\"\r\n\nadd 'N N'"), 0) << m_said;
    EXPECT_EQ(Read("f"), " [S]\n k=a \"b\"c\n [N N]\n");
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
        EXPECT_TRUE(qmini::UnifiedDifference("f", before, after).starts_with("--- f\n+++ f\n" + hunks))
            << hunks;
    EXPECT_EQ(qmini::UnifiedDifference("my f", "", "a\n"), "--- my f\t\n+++ my f\t\n@@ -0,0 +1,1 @@\n+a\n");
}

} // namespace
