// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CFile.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <locale>

static int refusal = 0;  ///< the error with which `statx` is refused, if any

extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept {
    errno = refusal;
    return refusal != 0 ? -1 : static_cast<int>(syscall(SYS_statx, folder, path, flags, mask, status));
}

namespace {

using File = TemporaryFolder;

TEST_F(File, TheStatusIsThatOfTheFileSystem) {
    const std::string path = Write("12345", "a b");
    const timespec times[] = {{1'000'000'000, 1}, {2'000'000'000, 999'999'999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    std::filesystem::create_symlink(path, Path("link"));
    for (const int error : {0, EPERM, ENOSYS}) {
        refusal = error;
        chmod(path.c_str(), 0020);
        CFileStatus status{};
        status.m_ctime = CTime(1);
        EXPECT_TRUE(CFile::GetStatus(WidePath("link").c_str(), status));
        EXPECT_TRUE(error == 0 || status.m_ctime == CTime());
        EXPECT_TRUE(status.m_atime == CTime(1'000'000'000, 1) && status.m_atime != CTime(1'000'000'000));
        EXPECT_EQ(status.m_mtime, CTime(2'000'000'000, 999'999'999));
        EXPECT_EQ(status.m_size, 5);
        EXPECT_EQ(status.m_attribute, CFile::normal);
        chmod(path.c_str(), 0555);
        EXPECT_TRUE(CFile::GetStatus(WidePath("a b").c_str(), status));
        EXPECT_EQ(status.m_attribute, CFile::readOnly);
    }
}

TEST_F(File, PathsAreUtf8WhateverTheLocaleAndAsLongAsTheSystemAccepts) {
    const std::string name = "\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80";
    std::filesystem::create_directory(Path(name));
    for (const char* const file : {"\xED\xA0\x80", "\xF4\x90\x80\x80"}) Write("x", file);
    const std::wstring folder = WidePath("");
    const std::wstring longest = folder + std::wstring(4095 - folder.size(), L'/');
    CFileStatus status{};
    const auto exists = [&](const std::wstring& path) { return CFile::GetStatus(path.c_str(), status); };
    for (const char* const locale : {"C", "C.UTF-8"}) {
        std::locale::global(std::locale(locale));
        for (const int wrong : {0xD800, 0xDFFF, -1, 0x110000})
            EXPECT_FALSE(exists(folder + wchar_t(wrong))) << wrong;
        EXPECT_FALSE(exists(longest + L'/') || exists(longest + longest));
        EXPECT_TRUE(exists(folder + L"\x80\x7FF\x800\x20AC\xFFFF\x1F600\\.") && exists(longest));
    }
    std::locale::global(std::locale::classic());
    EXPECT_EQ(status.m_szFullName, longest.substr(0, 259));
    EXPECT_EQ(status.m_attribute, CFile::directory);
}

}  // namespace
