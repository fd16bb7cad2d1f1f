#include "ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

/// How many more calls of `read` succeed; none fails while negative.
int readsLeft = -1;
int writes = 0;
std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

} // namespace

// The library reads and writes through these.

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t read(int file, void* buffer, std::size_t size)
{
    if (readsLeft == 0) {
        errno = EIO;
        return -1;
    }
    if (readsLeft > 0)
        --readsLeft;
    return syscall(SYS_read, file, buffer, size);
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t write(int file, const void* buffer, std::size_t size)
{
    ++writes;
    return syscall(SYS_write, file, buffer, size);
}

// And allocates with these.

void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    liveBytes += malloc_usable_size(memory);
    peakBytes = std::max(peakBytes, liveBytes);
    return memory;
}

void operator delete(void* memory) noexcept
{
    liveBytes -= malloc_usable_size(memory);
    std::free(memory);
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

using PosixFiles = TemporaryFolder;

TEST_F(PosixFiles, AFileWhoseReadingFailsMidwayIsLeftAlone)
{
    const std::string text = "[S]\nk=1\nl=" + std::string(300'000, 'v') + "\n";
    const std::string path = Write(text);
    for (int successes = 0; successes < 2; ++successes) {
        const auto failing = [&](auto call) {
            readsLeft = successes;
            auto result = call();
            readsLeft = -1;
            return result;
        };
        EXPECT_FALSE(failing([&] { return INIParser::SetValue("k", "2", "S", path); }));
        EXPECT_FALSE(failing([&] {
            return INIParser::SetValue(L"k", L"2", L"S", {path.begin(), path.end()});
        }));
        EXPECT_EQ(failing([&] { return INIParser::GetValue("k", "S", path); }), "");
        EXPECT_TRUE(failing([&] { return INIParser::RecordExists("none", "S", path); }));
        EXPECT_EQ(Read(path), text);
    }
}

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

TEST_F(PosixFiles, EachRecordIsFlushed)
{
    const std::string path = Write("; c\n[S]\na=1\n\nb=2\n");
    writes = 0;
    EXPECT_TRUE(INIParser::SetValue("a", "2", "S", path));
    EXPECT_EQ(writes, 3);
    writes = 0;
    EXPECT_TRUE(INIParser::SetValue(L"a", L"3", L"T", {path.begin(), path.end()}));
    EXPECT_EQ(writes, 5);
}

TEST_F(PosixFiles, ALookupHoldsTheFileAndLittleMore)
{
    std::string text;
    while (text.size() < 8 << 20)
        text += "# comment\n[Section" + std::to_string(text.size()) + "]\nkey=value\n";
    const std::string path = Write(text);
    const auto peak = [](auto lookup) {
        peakBytes = liveBytes;
        const std::size_t before = liveBytes;
        lookup();
        return peakBytes - before;
    };
    const std::size_t limit = text.size() + (1 << 20);
    EXPECT_LE(peak([&] { INIParser::GetValue("key", "none", path); }), limit);
    EXPECT_LE(peak([&] { INIParser::GetRecord(L"key", L"none", {path.begin(), path.end()}); }), limit);
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
    for (const wchar_t c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(-1)}) {
        const std::wstring path = std::wstring(L"/tmp/") + c;
        EXPECT_TRUE(INIParser::RecordExists(L"k", L"S", path));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", path));
    }
}

} // namespace
