// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "tests/support/TemporaryFolder.h"

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

TEST_F(FileCheck, OnlyTheModificationTimeCounts) {
    const std::string path = Path("f");
    CQMFileCheck file(WidePath("f").c_str());
    SetTime(Write("1", "f"), 5);
    EXPECT_TRUE(file.ApplyChanges() && file.CheckRenamed());
    SetTime(Write("22", "f"), 5);
    EXPECT_FALSE(file.CheckModified() || file.CheckDeleted());
    SetTime(path, 0);
    EXPECT_TRUE(file.ApplyChanges());
    fs::remove(path);
    EXPECT_TRUE(file.CheckDeleted() && !file.CheckModified()) << "the time of a missing file is 0";
    fs::create_directory(path);
    EXPECT_TRUE(file.CheckDeleted() && file.CheckModified()) << "a directory cannot be read";
}

TEST_F(FileCheck, TheListReportsAModificationUntilItIsEmptied) {
    using List = CQMFileCheckAPI;
    const auto isInitial = [] { return List::m_files.IsEmpty() && !List::m_bMonitor; };
    EXPECT_TRUE(isInitial());
    for (const char* const name : {"a", "b"}) {
        SetTime(Write("1", name), 5);
        EXPECT_TRUE(List::AddWatchDog(WidePath(name).c_str()));
    }
    List::Enable(true);
    EXPECT_FALSE(List::Check());
    List::Enable(false);
    SetTime(Path("a"), 6);  // the first alone
    EXPECT_FALSE(List::Check());
    List::Enable(true);
    EXPECT_TRUE(List::Check() && List::Check());
    SetTime(Path("a"), 5);
    EXPECT_FALSE(List::Check()) << "the time is the former one";
    const List instance;  // empties the list
    EXPECT_TRUE(isInitial() && List::Initialize());
}

}  // namespace
