#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// A watched file that shows its path.
class OpenFileCheck : public CQMFileCheck
{
public:
    using CQMFileCheck::CQMFileCheck;
    using CQMFileCheck::m_strPath;
};

class FileCheck : public TemporaryFolder
{
protected:
    /// Writes a file that was last modified at a whole second; on Windows the C++ library sets no other time.
    std::string Write(const std::string& text, const std::string& name) const
    {
        const auto time = fs::last_write_time(TemporaryFolder::Write(text, name));
        fs::last_write_time(Path(name), std::chrono::floor<std::chrono::seconds>(time));
        return Path(name);
    }

    /// Moves the time of the last modification.
    void Touch(const std::string& name, std::chrono::seconds by = 1s) const
    {
        fs::last_write_time(Path(name), fs::last_write_time(Path(name)) + by);
    }
};

TEST_F(FileCheck, PathsAreKeptWithBackslashesAndWithoutOuterBlanks)
{
    const wchar_t* const cases[][2] = {
        {L"", L""},
        {L" \t\r\n", L""},
        {L"a/b\\c//d", L"a\\b\\c\\\\d"},
        {L" \t/a b/ c \x3000\n", L"\\a b\\ c"},
    };
    for (const auto& [path, kept] : cases)
        EXPECT_STREQ(OpenFileCheck(path).m_strPath.GetString(), kept);
    EXPECT_STREQ(OpenFileCheck().m_strPath.GetString(), L"");
}

TEST_F(FileCheck, ModifiedMeansThatTheTimeDiffers)
{
    const std::string path = Path("f");
    const auto nothing = [] {};
    const auto write = [this] { Write("1", "f"); };
    const auto remove = [&] {
        std::error_code ignored;
        fs::permissions(path, fs::perms::owner_all, ignored); // Windows keeps what may not be written
        fs::remove(path);
    };
    const auto touch = [this] { Touch("f"); };
    const auto writeAtZero = [&] {
        fs::last_write_time(Write("1", "f"), std::chrono::file_clock::from_sys(std::chrono::sys_seconds()));
    };
    const auto changeAllButTheTime = [&] {
        const auto time = fs::last_write_time(path);
        fs::last_write_time(Write("12", "f"), time);
        fs::permissions(path, fs::perms::owner_read);
    };
    struct
    {
        const char* What;
        std::function<void()> Before;
        std::function<void()> Change;
        bool IsModified;
        bool IsDeleted;
        bool IsAcknowledged; ///< what `ApplyChanges` returns
    } const cases[] = {
        {"later", write, touch, true, false, true},
        {"earlier", write, [this] { Touch("f", -1h); }, true, false, true},
        {"same time", write, changeAllButTheTime, false, false, true},
        {"gone", write, remove, true, true, false},
        {"gone, and modified in 1970", writeAtZero, remove, false, true, false},
        {"still absent", nothing, nothing, false, true, false},
        {"appeared", nothing, write, true, false, true},
#if !defined(_WIN32) // where a folder's time cannot be set so
        {"folder", [&] { fs::create_directory(path); }, touch, true, true, true},
        {"pipe", [&] { mkfifo(path.c_str(), 0600); }, touch, true, false, true},
#endif
    };
    const int nextDescriptor = dup(STDIN_FILENO);
    close(nextDescriptor);
    for (const auto& [what, before, change, isModified, isDeleted, isAcknowledged] : cases) {
        SCOPED_TRACE(what);
        before();
        CQMFileCheck file((L" \t" + WidePath("f") + L"\n").c_str());
        EXPECT_FALSE(file.CheckModified());
        change();
        for (int i = 0; i != 2; ++i)
            EXPECT_EQ(file.CheckModified(), isModified);
        EXPECT_EQ(file.CheckDeleted(), isDeleted);
        EXPECT_TRUE(file.CheckRenamed());
        EXPECT_EQ(file.ApplyChanges(), isAcknowledged);
        EXPECT_EQ(file.CheckModified(), isModified && !isAcknowledged);
        remove();
    }
    EXPECT_EQ(dup(STDIN_FILENO), nextDescriptor) << "a descriptor was left open";
    close(nextDescriptor);
}

TEST_F(FileCheck, PathsThatNameNoFile)
{
    Write("1", "f");
    for (const std::wstring& path : {std::wstring(), L'/' + std::wstring(10'000, L'x'), WidePath("f") + L"\\",
                                     WidePath("f") + wchar_t(0xD800), WidePath("f") + wchar_t(-1)}) {
        CQMFileCheck check(path.c_str());
        EXPECT_FALSE(check.ApplyChanges() || check.CheckModified());
        EXPECT_TRUE(check.CheckDeleted());
    }
}

TEST_F(FileCheck, TheListTellsOfTheFirstModificationForEver)
{
    Write("1", "a");
    Write("1", "b");
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
    for (const char* const name : {"a", "b", "absent", "b"})
        EXPECT_TRUE(CQMFileCheckAPI::AddWatchDog(WidePath(name).c_str()));
    CQMFileCheckAPI::Enable(true);
    EXPECT_FALSE(CQMFileCheckAPI::Check());

    CQMFileCheckAPI::Enable(false);
    Touch("b");
    EXPECT_FALSE(CQMFileCheckAPI::Check());
    CQMFileCheckAPI::Enable(true);
    EXPECT_TRUE(CQMFileCheckAPI::Check());
    Touch("b", -1s);
    EXPECT_FALSE(CQMFileCheckAPI::Check()) << "the time is the one it was";
    Touch("a"); // the first alone
    for (int i = 0; i != 2; ++i)
        EXPECT_TRUE(CQMFileCheckAPI::Check());

    EXPECT_TRUE(CQMFileCheckAPI::Initialize());
    EXPECT_EQ(CQMFileCheckAPI::m_files.GetSize(), 0);
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
    CQMFileCheckAPI::AddWatchDog(WidePath("a").c_str());
    CQMFileCheckAPI::Enable(true);
    const CQMFileCheckAPI instance; // empties the list as well
    EXPECT_EQ(CQMFileCheckAPI::m_files.GetSize(), 0);
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
}

} // namespace
