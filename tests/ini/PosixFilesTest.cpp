#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using PosixFiles = TemporaryFolder;

TEST_F(PosixFiles, ARewriteKeepsTheFileAndItsLinks)
{
    const std::string path = Write("[S]\nk=1\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    std::filesystem::create_symlink("test.ini", Path("link.ini"));
    struct stat before = {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(INIParser::SetValue("k", "2", "S", Path("link.ini")));
    struct stat after = {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mode, after.st_mode);
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link.ini")));
    EXPECT_EQ(Read(path), " [S]\n k=2\n");
}

TEST_F(PosixFiles, FilesWithoutASizeLoadWhole)
{
    int pipes[2] = {};
    ASSERT_EQ(pipe(pipes), 0);
    ASSERT_GE(fcntl(pipes[1], F_SETPIPE_SZ, 1 << 20), 1 << 20);
    const std::string text = "[S]\nl=" + std::string(300'000, 'v') + "\nk=1\n";
    ASSERT_EQ(write(pipes[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(pipes[1]);
    EXPECT_EQ(INIParser::GetValue("k", "S", "/dev/fd/" + std::to_string(pipes[0])), "1");
    close(pipes[0]);
    EXPECT_FALSE(INIParser::RecordExists("k", "S", "/proc/self/environ")); // readable, and not a line in it
}

TEST_F(PosixFiles, WidePathsThatAreNotUnicodeOpenNothing)
{
    for (const char* const name : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80"})
        Write("[S]\n", name);
    for (const wchar_t c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(-1)}) {
        EXPECT_TRUE(INIParser::RecordExists(L"k", L"S", WidePath("") + c));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", WidePath("") + c));
    }
}

} // namespace
