#include "filecheck/QMFileCheckAPI.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#include <sys/syscall.h>
#endif
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <type_traits>

namespace {

using namespace std::chrono_literals;

/// A watched file that shows what is kept of it.
class OpenFileCheck : public CQMFileCheck
{
public:
    using CQMFileCheck::CQMFileCheck;
    using CQMFileCheck::Initialize;
    using CQMFileCheck::m_status;
    using CQMFileCheck::m_strPath;
};

class FileCheck : public TemporaryFolder
{
protected:
    FileCheck() { CQMFileCheckAPI::Initialize(); }
    ~FileCheck() override { CQMFileCheckAPI::Initialize(); }

    std::wstring Wide(const std::string& name) const { return std::filesystem::path(Path(name)).wstring(); }
    CQMFileCheck Checked(const std::string& name) const { return CQMFileCheck(Wide(name).c_str()); }

    /// Writes a file that was last modified at a whole second; on Windows the C++ library sets no other time.
    std::string Write(const std::string& text, const std::string& name) const
    {
        const auto time = std::filesystem::last_write_time(TemporaryFolder::Write(text, name));
        std::filesystem::last_write_time(Path(name), std::chrono::floor<std::chrono::seconds>(time));
        return Path(name);
    }

    /// Moves the time of the last modification.
    void Touch(const std::string& name, std::chrono::seconds by = 1s) const
    {
        const auto time = std::filesystem::last_write_time(Path(name));
        std::filesystem::last_write_time(Path(name), time + by);
    }
};

TEST_F(FileCheck, PathsAreKeptWithBackslashesAndWithoutOuterBlanks)
{
    struct
    {
        const wchar_t* Path;
        const wchar_t* Kept;
    } const cases[] = {
        {L"", L""},
        {L" \t\r\n", L""},
        {L"a/b\\c//d", L"a\\b\\c\\\\d"},
        {L" \t/a b/ c \x3000\n", L"\\a b\\ c"},
        {L" / ", L"\\"},
    };
    for (const auto& [path, kept] : cases)
        EXPECT_STREQ(OpenFileCheck(path).m_strPath.GetString(), kept);
    EXPECT_STREQ(OpenFileCheck().m_strPath.GetString(), L"");

    Write("x", "with a blank");
    EXPECT_FALSE(CQMFileCheck((L" \t" + Wide("with a blank") + L"\n").c_str()).CheckDeleted());
}

TEST_F(FileCheck, ModifiedMeansThatTheTimeDiffers)
{
    namespace fs = std::filesystem;
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
        {"dangling link", [&] { fs::create_symlink("nothing", path); }, nothing, false, true, false},
        {"link", [&] { fs::create_symlink(Write("1", "g"), path); }, touch, true, false, true},
        {"pipe", [&] { mkfifo(path.c_str(), 0600); }, touch, true, false, true},
#endif
    };
    const int nextDescriptor = dup(STDIN_FILENO);
    close(nextDescriptor);
    for (const auto& [what, before, change, isModified, isDeleted, isAcknowledged] : cases) {
        SCOPED_TRACE(what);
        before();
        CQMFileCheck file = Checked("f");
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
    const std::wstring file = Wide("f");
    for (const std::wstring& path : {std::wstring(), L'/' + std::wstring(10'000, L'x'),
                                     file + wchar_t(0xD800), file + wchar_t(-1), file + L"\\"}) {
        CQMFileCheck check(path.c_str());
        EXPECT_FALSE(check.ApplyChanges());
        EXPECT_FALSE(check.CheckModified());
        EXPECT_TRUE(check.CheckDeleted());
    }
}

#if !defined(_WIN32)
TEST_F(FileCheck, AFileThatMayNotBeReadCountsAsDeleted)
{
    ASSERT_EQ(chmod(Write("1", "f").c_str(), 0), 0);
    std::thread([this] {
        // The bare call, unlike the C library's, leaves the other threads their privileges.
        ASSERT_TRUE(getuid() != 0 || syscall(SYS_setresuid, 65534, 65534, 65534) == 0);
        CQMFileCheck file = Checked("f");
        EXPECT_TRUE(file.CheckDeleted());
        EXPECT_TRUE(file.ApplyChanges());
        EXPECT_FALSE(file.CheckModified());
    }).join();
}
#endif

TEST_F(FileCheck, CopiesAreIndependent)
{
    Write("12345", "f");
    OpenFileCheck file(Wide("f").c_str());
    OpenFileCheck copy(file);
    OpenFileCheck assigned;
    EXPECT_EQ(&(assigned = file), &assigned);
    Touch("f");
    EXPECT_TRUE(file.Initialize());
    EXPECT_FALSE(file.CheckModified());
    for (OpenFileCheck* const other : {&copy, &assigned}) {
        EXPECT_EQ(other->m_status.m_size, 5);
        EXPECT_TRUE(other->CheckModified());
    }
}

TEST_F(FileCheck, TheListTellsOfTheFirstModificationForEver)
{
    Write("1", "a");
    Write("1", "b");
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
    CQMFileCheckAPI::Enable(true);
    EXPECT_FALSE(CQMFileCheckAPI::Check()) << "the list is empty";
    for (const char* const name : {"a", "b", "absent", "a"})
        EXPECT_TRUE(CQMFileCheckAPI::AddWatchDog((Wide(name) + L" ").c_str()));
    EXPECT_EQ(CQMFileCheckAPI::m_files.GetSize(), 4);
    EXPECT_FALSE(CQMFileCheckAPI::Check());

    CQMFileCheckAPI::Enable(false);
    Touch("b");
    EXPECT_FALSE(CQMFileCheckAPI::Check());
    CQMFileCheckAPI::Enable(true);
    EXPECT_TRUE(CQMFileCheckAPI::Check());
    Touch("b", -1s);
    EXPECT_FALSE(CQMFileCheckAPI::Check()) << "the time is the one it was";
    Touch("a");
    EXPECT_TRUE(CQMFileCheckAPI::m_files[0].CheckModified());
    EXPECT_FALSE(CQMFileCheckAPI::m_files[1].CheckModified());
    EXPECT_TRUE(CQMFileCheckAPI::m_files[3].CheckModified());
    for (int i = 0; i != 3; ++i)
        EXPECT_TRUE(CQMFileCheckAPI::Check());

    EXPECT_TRUE(CQMFileCheckAPI::Initialize());
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
    EXPECT_EQ(CQMFileCheckAPI::m_files.GetData(), nullptr);
    CQMFileCheckAPI::AddWatchDog(Wide("a").c_str());
    CQMFileCheckAPI::Enable(true);
    EXPECT_FALSE(CQMFileCheckAPI::Check());
}

TEST_F(FileCheck, ConstructingAnInstanceEmptiesTheList)
{
    CQMFileCheckAPI::AddWatchDog(L"/a");
    CQMFileCheckAPI::Enable(true);
    const CQMFileCheckAPI instance;
    EXPECT_EQ(CQMFileCheckAPI::m_files.GetSize(), 0);
    EXPECT_FALSE(CQMFileCheckAPI::m_bMonitor);
}

TEST_F(FileCheck, TheListIsAnArrayToItsHostToo)
{
    CObject* const object = &CQMFileCheckAPI::m_files;
    EXPECT_NE((dynamic_cast<CArray<CQMFileCheck, const CQMFileCheck&>*>(object)), nullptr);
    try {
        CQMFileCheckAPI::m_files[0].CheckRenamed();
        ADD_FAILURE();
    } catch (CInvalidArgException* exception) { // NOLINT: the framework throws pointers
        exception->Delete();
    }
}

} // namespace
