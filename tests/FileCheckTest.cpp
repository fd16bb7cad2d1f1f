#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include <chrono>
#include <functional>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FileCheck : public TemporaryFolder
{
protected:
    const std::string m_file = Path("f");

    /// Writes a file that was last modified at a whole second: on Windows the C++ library sets no other time.
    void Write(const std::string& text, const std::string& name = "f") const
    {
        const auto time = fs::last_write_time(TemporaryFolder::Write(text, name));
        fs::last_write_time(Path(name), std::chrono::floor<std::chrono::seconds>(time));
    }

    /// Moves the modification time.
    void Touch(std::chrono::seconds by, const std::string& name = "f") const
    {
        fs::last_write_time(Path(name), fs::last_write_time(Path(name)) + by);
    }
};

TEST_F(FileCheck, PathsAreStoredWithBackslashesAndWithoutOuterWhiteSpace)
{
    struct Check : CQMFileCheck
    {
        using CQMFileCheck::CQMFileCheck;
        using CQMFileCheck::m_strPath;
    };
    EXPECT_STREQ(Check().m_strPath.GetString(), L"");
    EXPECT_STREQ(Check(L" \t/a b/ c\\d//e \x3000\n").m_strPath.GetString(), L"\\a b\\ c\\d\\\\e");
}

TEST_F(FileCheck, ModifiedMeansThatTheTimeDiffers)
{
    const auto nothing = [] {};
    const auto write = [this] { Write("1"); };
    const auto touch = [this] { Touch(1s); };
    const auto remove = [this] { fs::remove(m_file); };
    const auto writeIn1970 = [this] {
        Write("1");
        fs::last_write_time(m_file, std::chrono::file_clock::from_sys(std::chrono::sys_seconds()));
    };
    const auto changeAllButTheTime = [this] {
        const auto time = fs::last_write_time(m_file);
        Write("12");
        fs::last_write_time(m_file, time);
    };
    // before, change, modified, deleted, result of ApplyChanges
    using Action = std::function<void()>;
    const std::tuple<const char*, Action, Action, bool, bool, bool> cases[] = {
        {"later", write, touch, true, false, true},
        {"earlier", write, [this] { Touch(-1h); }, true, false, true},
        {"same time", write, changeAllButTheTime, false, false, true},
        {"deleted", write, remove, true, true, false},
        {"modified in 1970 and deleted", writeIn1970, remove, false, true, false},
        {"still absent", nothing, nothing, false, true, false},
        {"created", nothing, write, true, false, true},
#if !defined(_WIN32) // which does not set these times
        {"directory", [this] { fs::create_directory(m_file); }, touch, true, true, true},
        {"pipe", [this] { mkfifo(m_file.c_str(), 0600); }, touch, true, false, true},
#endif
    };
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
}

TEST_F(FileCheck, TheListReportsAModificationUntilItIsEmptied)
{
    Write("1", "a");
    Write("1", "b");
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
    for (const char* const name : {"a", "b", "absent", "b"})
        EXPECT_TRUE(CQMFileCheckAPI::AddWatchDog(WidePath(name).c_str()));
    const auto check = [](bool isMonitoring) {
        CQMFileCheckAPI::Enable(isMonitoring);
        return CQMFileCheckAPI::Check();
    };
    EXPECT_FALSE(check(true));
    Touch(1s, "b");
    EXPECT_FALSE(check(false));
    EXPECT_TRUE(check(true));
    Touch(-1s, "b");
    EXPECT_FALSE(check(true)) << "the time is the former one";
    Touch(1s, "a"); // the first alone
    EXPECT_TRUE(check(true) && check(true));

    EXPECT_TRUE(CQMFileCheckAPI::Initialize());
    EXPECT_TRUE(CQMFileCheckAPI::m_files.GetSize() == 0 && !CQMFileCheckAPI::m_bMonitor);
    CQMFileCheckAPI::AddWatchDog(WidePath("a").c_str());
    const CQMFileCheckAPI instance; // empties the list as well
    EXPECT_TRUE(CQMFileCheckAPI::m_files.GetSize() == 0 && !CQMFileCheckAPI::m_bMonitor);
}

} // namespace
