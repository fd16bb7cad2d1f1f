#include "qmUtility/framework/CFile.h"
#include "qmUtility/platform/Runtime.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <locale>
#include <string>

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
    EXPECT_NE(status.m_ctime, status.m_mtime);
    EXPECT_EQ(status.m_size, 5);
    EXPECT_EQ(status.m_attribute, CFile::normal);
    EXPECT_EQ(status.m_szFullName, WidePath("link"));

    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    ASSERT_TRUE(CFile::GetStatus(WidePath("a b").c_str(), status));
    EXPECT_EQ(status.m_attribute, CFile::readOnly);
    ASSERT_TRUE(CFile::GetStatus(WidePath("").c_str(), status));
    EXPECT_EQ(status.m_attribute, CFile::directory);
}

TEST_F(File, IsOpenedForReadingOnly)
{
    Write("x", "f");
    EXPECT_EQ(_wfopen(WidePath("f").c_str(), L"wb"), nullptr);
    EXPECT_EQ(Read(Path("f")), "x");
}

TEST_F(File, PathsAreUnicodeWhateverTheLocale)
{
    const std::string folder = "\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80";
    std::filesystem::create_directory(Path(folder));
    Write("x", folder + "/x");
    const std::wstring wide = WidePath("") + L"\x80\x7FF\x800\x20AC\xFFFF" + wchar_t(0x1F600) + L"\\x";
    Write("x", "\xC3\xA9");
    for (const char* const notUnicode : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80"})
        Write("x", notUnicode);
    CFileStatus status{};
    for (const char* const locale : {"C", "C.UTF-8"}) {
        std::locale::global(std::locale(locale));
        EXPECT_TRUE(CFile::GetStatus(wide.c_str(), status));
        EXPECT_TRUE(CFile::GetStatus((WidePath("") + L'\xE9').c_str(), status));
        for (const wchar_t c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(-1)})
            EXPECT_FALSE(CFile::GetStatus((WidePath("") + c).c_str(), status));
    }
    std::locale::global(std::locale::classic());
}

TEST_F(File, PathsMayBeAsLongAsTheSystemTakes)
{
    std::wstring longest = WidePath("");
    longest.append(4095 - longest.size(), L'/');
    CFileStatus status{};
    EXPECT_TRUE(CFile::GetStatus(longest.c_str(), status));
    EXPECT_EQ(status.m_szFullName, longest.substr(0, 259));
    for (const std::wstring& end : {std::wstring(1, L'/'), std::wstring(10'000, wchar_t(0x1F600))})
        EXPECT_FALSE(CFile::GetStatus((longest + end).c_str(), status));
}

} // namespace
