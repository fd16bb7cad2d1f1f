#include "qmUtility/framework/CFile.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <locale>

namespace {

using File = TemporaryFolder;

TEST_F(File, TheStatusIsThatOfTheFileSystem)
{
    const std::string path = Write("12345", "a b");
    const timespec times[] = {{1'000'000'000, 1}, {2'000'000'000, 999'999'999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    std::filesystem::create_symlink(path, Path("link"));

    CFileStatus status{};
    ASSERT_TRUE(CFile::GetStatus(WidePath("link").c_str(), status));
    EXPECT_EQ(status.m_atime, CTime(1'000'000'000, 1));
    EXPECT_EQ(status.m_mtime, CTime(2'000'000'000, 999'999'999));
    EXPECT_NE(status.m_mtime, CTime(2'000'000'000));
    EXPECT_EQ(status.m_size, 5);
    EXPECT_EQ(status.m_attribute, CFile::normal);
    EXPECT_EQ(status.m_szFullName, WidePath("link"));

    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    ASSERT_TRUE(CFile::GetStatus(WidePath("a b").c_str(), status));
    EXPECT_EQ(status.m_attribute, CFile::readOnly);
    ASSERT_TRUE(CFile::GetStatus(WidePath("").c_str(), status));
    EXPECT_EQ(status.m_attribute, CFile::directory);
}

TEST_F(File, PathsAreUtf8WhateverTheLocaleAndAsLongAsTheSystemAccepts)
{
    const std::string name = "\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80";
    std::filesystem::create_directory(Path(name));
    for (const std::string& file :
         {name + "/x", std::string("\xED\xA0\x80"), std::string("\xF4\x90\x80\x80")})
        Write("x", file);
    const std::wstring folder = WidePath("");
    const std::wstring longest = folder + std::wstring(4095 - folder.size(), L'/');
    CFileStatus status{};
    for (const char* const locale : {"C", "C.UTF-8"}) {
        std::locale::global(std::locale(locale));
        for (const std::wstring& path :
             {folder + L"\x80\x7FF\x800\x20AC\xFFFF" + wchar_t(0x1F600) + L"\\x", longest})
            EXPECT_TRUE(CFile::GetStatus(path.c_str(), status)) << path.size();
        for (const std::wstring& path :
             {folder + wchar_t(0xD800), folder + wchar_t(0xDFFF), folder + wchar_t(-1),
              folder + wchar_t(0x110000), longest + L'/', longest + longest})
            EXPECT_FALSE(CFile::GetStatus(path.c_str(), status)) << path.size();
    }
    std::locale::global(std::locale::classic());
    EXPECT_EQ(status.m_szFullName, longest.substr(0, 259));
}

} // namespace
