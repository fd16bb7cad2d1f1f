// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include <chrono>
#include <type_traits>

namespace {

namespace fs = std::filesystem;
using FileCheck = TemporaryFolder;

static_assert(std::is_convertible_v<CString, CQMFileCheck>);

/// Sets the modification time to a whole second: on Windows the C++ library sets no other.
void SetTime(const std::string& path, int secondsSince1970) {
    const std::chrono::sys_seconds time{std::chrono::seconds(secondsSince1970)};
    fs::last_write_time(path, std::chrono::file_clock::from_sys(time));
}

TEST_F(FileCheck, PathsAreStoredWithBackslashesAndWithoutOuterWhiteSpace) {
    struct Check : CQMFileCheck {
        using CQMFileCheck::CQMFileCheck;
        using CQMFileCheck::m_strPath;
    };
    EXPECT_STREQ(Check().m_strPath.GetString(), L"");
    EXPECT_STREQ(Check(L" \t/a b/ c\\d//e \x3000\n").m_strPath.GetString(), L"\\a b\\ c\\d\\\\e");
}

TEST_F(FileCheck, ModifiedMeansThatTheTimeDiffers) {
    constexpr int none = -1;  // no such file
    const auto write = [](const char* path) {
        static std::string text;
        std::ofstream(path) << (text += '1');  // of another size each time
    };
    const struct {
        void (*Create)(const char* path);
        int Before, After;  ///< times of modification
        bool IsModified, IsDeleted;
    } cases[] = {
        {write, 5, 6, true, false},
        {write, 5, 5, false, false},
        {write, 5, none, true, true},
        {write, 0, none, false, true},
        {write, none, none, false, true},
#if !defined(_WIN32)  // which does not set these times
        {[](const char* path) { mkdir(path, 0700); }, 5, 6, true, true},
        {[](const char* path) { mkfifo(path, 0600); }, 5, 6, true, false},
#endif
    };
    for (const auto& [create, before, after, isModified, isDeleted] : cases) {
        SCOPED_TRACE(testing::Message() << before << " to " << after);
        const auto put = [path = Path("f"), create = create](int time) {
            fs::remove(path);
            if (time != none) create(path.c_str()), SetTime(path, time);
        };
        put(before);
        CQMFileCheck file(WidePath("f").c_str());
        EXPECT_FALSE(file.CheckModified());
        put(after);
        for (int i = 0; i != 2; ++i) EXPECT_EQ(file.CheckModified(), isModified);
        EXPECT_EQ(file.CheckDeleted(), isDeleted);
        EXPECT_TRUE(file.CheckRenamed());
        EXPECT_EQ(file.ApplyChanges(), after != none);
        EXPECT_EQ(file.CheckModified(), isModified && after == none);
    }
}

TEST_F(FileCheck, TheListReportsAModificationUntilItIsEmptied) {
    using List = CQMFileCheckAPI;
    const auto isInitial = [] { return List::m_files.GetSize() == 0 && !List::m_bMonitor; };
    const auto check = [](bool isMonitoring) {
        List::Enable(isMonitoring);
        return List::Check();
    };
    for (const char* const name : {"a", "b"}) SetTime(Write("1", name), 5);
    EXPECT_TRUE(isInitial());
    for (const char* const name : {"a", "b", "absent", "b"})
        EXPECT_TRUE(List::AddWatchDog(WidePath(name).c_str()));
    EXPECT_FALSE(check(true));
    SetTime(Path("b"), 6);
    EXPECT_FALSE(check(false));
    EXPECT_TRUE(check(true));
    SetTime(Path("b"), 5);
    EXPECT_FALSE(check(true)) << "the time is the former one";
    SetTime(Path("a"), 6);  // the first alone
    EXPECT_TRUE(check(true) && check(true));
    EXPECT_TRUE(List::Initialize() && isInitial());
    List::AddWatchDog(WidePath("a").c_str());
    const List instance;  // empties the list as well
    EXPECT_TRUE(isInitial());
}

}  // namespace
