// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/platform/Kernel.h"
#include "tests/support/TemporaryFolder.h"

#include <bit>
#include <chrono>

namespace {

using WindowsFile = TemporaryFolder;

/// @param units of 100 nanoseconds since 1970.
FILETIME Time(std::int64_t units) { return std::bit_cast<FILETIME>(units + 116'444'736'000'000'000); }

TEST_F(WindowsFile, TheStatusIsThatOfTheFileSystem) {
    Write("12345", "f");
    const std::wstring path = WidePath("f");
    const FILETIME access = Time(10'000'000'000'000'001);
    const FILETIME modification = Time(20'000'000'009'999'999);
    void* const file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(SetFileTime(file, nullptr, &access, &modification), 0);
    CloseHandle(file);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);

    CFileStatus status{};
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_TRUE(status.m_ctime != CTime() && status.m_atime == CTime(1'000'000'000, 100) &&
                status.m_mtime == CTime(2'000'000'000, 999'999'900));
    EXPECT_EQ(status.m_size, 5);
    EXPECT_EQ(status.m_attribute & (CFile::readOnly | CFile::directory), CFile::readOnly);
    EXPECT_EQ(status.m_szFullName, path);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_EQ(status.m_attribute & ~FILE_ATTRIBUTE_ARCHIVE, CFile::normal);
}

TEST_F(WindowsFile, APathOutsideTheCodePageIsWatchedAndALockedFileCountsAsDeleted) {
    const std::wstring path = WidePath("") + L"\u0416 \u20AC \U0001F600";
    std::filesystem::rename(Write("x", "f"), path);
    CQMFileCheck file((L" " + path + L" ").c_str());
    void* const lock = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(file.CheckDeleted());
    CloseHandle(lock);
    EXPECT_FALSE(file.CheckDeleted() || file.CheckModified());
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::hours(1));
    EXPECT_TRUE(file.CheckModified());
}

TEST_F(WindowsFile, IniLinesEndInCrLfOnDiskAndACtrlZDoesNotEndThem) {
    std::ofstream(m_path, std::ios::binary) << "; \x1A\n\r\n[S]\nk=1\r\n#[T]\r\nl=2\n";
    EXPECT_TRUE(INIParser::SetRecordComments("; b\n; c", "k", "S", m_path));
    EXPECT_EQ(Read(m_path, std::ios::binary), "; \x1A\r\n [S]\r\n; b\r\n; c\r\n k=1\r\n#[T]\r\n l=2\r\n");
    EXPECT_TRUE(INIParser::SetValue(L"k", L"\u00E4\x1A", L"S", m_widePath));
    EXPECT_EQ(Read(m_path, std::ios::binary),
              "; \x1A\r\n[S]\r\n; b\r\n; c\r\nk=\xE4\x1A\r\n\r\n#[T]\r\nl=2\r\n");
}

TEST_F(WindowsFile, ASaveKeepsAttributesAndReadersAndLeavesNoOtherFile) {
    const std::filesystem::path folder = WidePath("folder");
    const std::filesystem::path path = folder / L"\u0416 \u20AC.ini";  // not in the code page
    INIDocument document;
    std::filesystem::create_directory(folder);
    EXPECT_TRUE(document.SetValue("k", "0", "S") && document.Save(path));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN);
    // A reader that lets others delete keeps the old content; one that only lets them write sees it change.
    for (const auto& [share, saved, seen] :
         {std::tuple(DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}, "7", "0"),
          {FILE_SHARE_READ | FILE_SHARE_WRITE, "3", "3"},
          {FILE_SHARE_READ, "3", "3"}}) {
        void* const reader =
            CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
        document.SetValue("k", std::to_string(share), "S");
        EXPECT_EQ(document.Save(path), share != FILE_SHARE_READ);
        char bytes[100] = {};
        DWORD size = 0;
        EXPECT_NE(ReadFile(reader, bytes, sizeof bytes, &size, nullptr), 0);
        CloseHandle(reader);
        EXPECT_EQ(bytes, "[S]\r\nk=" + std::string(seen) + "\r\n");
        EXPECT_EQ(Read(path, std::ios::binary), "[S]\r\nk=" + std::string(saved) + "\r\n");
    }
    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_HIDDEN, DWORD{FILE_ATTRIBUTE_HIDDEN});
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

}  // namespace
