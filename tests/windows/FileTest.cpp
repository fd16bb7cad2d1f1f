#include "filecheck/QMFileCheck.h"
#include "platform/Kernel.h"
#include "tests/support/TemporaryFolder.h"

#include <cwchar>

namespace {

class WindowsFile : public TemporaryFolder
{
protected:
    std::wstring Wide(const std::string& name) const { return std::filesystem::path(Path(name)).wstring(); }

    static void SetTimes(const std::wstring& path, const FILETIME& access, const FILETIME& modification)
    {
        void* const file =
            CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(SetFileTime(file, nullptr, &access, &modification), 0);
        CloseHandle(file);
    }
};

/// @param units of 100 nanoseconds since the beginning of 1970
FILETIME Time(std::int64_t units)
{
    const std::int64_t since1601 = units + 116'444'736'000'000'000;
    return {static_cast<DWORD>(since1601), static_cast<DWORD>(since1601 >> 32)};
}

TEST_F(WindowsFile, TheStatusIsThatOfTheFileSystem)
{
    Write("12345", "f");
    const std::wstring path = Wide("f");
    constexpr std::int64_t second = 10'000'000;
    SetTimes(path, Time(1'000'000'000 * second + 1), Time(2'000'000'000 * second + 9'999'999));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);

    CFileStatus status{};
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_NE(status.m_ctime, CTime());
    EXPECT_EQ(status.m_atime, CTime(1'000'000'000, 100));
    EXPECT_EQ(status.m_mtime, CTime(2'000'000'000, 999'999'900));
    EXPECT_EQ(status.m_size, 5);
    EXPECT_EQ(status.m_attribute & (CFile::readOnly | CFile::directory), CFile::readOnly);
    EXPECT_EQ(status.m_szFullName, path);

    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_FALSE(CFile::GetStatus(Wide("none").c_str(), status));
    EXPECT_EQ(status.m_szFullName, path) << "it was left as it was";
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_EQ(status.m_attribute & ~FILE_ATTRIBUTE_ARCHIVE, CFile::normal);
    ASSERT_TRUE(CFile::GetStatus(Wide("").c_str(), status));
    EXPECT_EQ(status.m_attribute, CFile::directory);
}

TEST_F(WindowsFile, APathOutsideTheCodePageIsWatchedToThe100Nanoseconds)
{
    const std::wstring path = Wide("") + L"\u0416 \u20AC \U0001F600";
    std::filesystem::rename(Write("x", "f"), path);
    CQMFileCheck file((L" " + path + L" ").c_str());
    EXPECT_FALSE(file.CheckDeleted());
    CFileStatus status{};
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    SetTimes(path, Time(0), Time(1));
    EXPECT_TRUE(file.CheckModified());
    EXPECT_TRUE(file.ApplyChanges());
    EXPECT_FALSE(file.CheckModified());
    SetTimes(path, Time(0), Time(2));
    EXPECT_TRUE(file.CheckModified());
    std::filesystem::remove(path);
    EXPECT_TRUE(file.CheckDeleted());
}

TEST_F(WindowsFile, AFileThatIsLockedAgainstReadingCountsAsDeleted)
{
    Write("x", "f");
    CQMFileCheck file(Wide("f").c_str());
    void* const lock = CreateFileW(Wide("f").c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(file.CheckDeleted());
    EXPECT_FALSE(file.CheckModified());
    CloseHandle(lock);
    EXPECT_FALSE(file.CheckDeleted());
}

} // namespace
