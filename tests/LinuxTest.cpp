// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CFile.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/StandardStream.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <utility>

static std::string calls;  ///< of the first two functions below, for the calling thread
static int refusal = 0;    ///< the error with which `statx` is refused, if any

// These take the place of the system's functions. Their parameters have reserved names there.

extern "C" int setpriority(__priority_which_t which, id_t who, int nice) noexcept {
    calls += "nice " + std::to_string(nice);
    errno = EPERM;
    return which == PRIO_PROCESS && who == 0 && nice != -20 ? 0 : -1;  // refuses time-critical threads
}

extern "C" int sched_setscheduler(pid_t who, int policy, const sched_param* /*parameters*/) noexcept {
    calls += who == 0 && policy == (SCHED_OTHER | SCHED_RESET_ON_FORK) ? " alone" : " with a wrong policy";
    errno = EPERM;
    return -1;
}

extern "C" int getrusage(__rusage_who_t /*who*/, rusage* usage) noexcept {
    usage->ru_stime = {500, 1};  // seconds and microseconds in the kernel
    usage->ru_utime = {7, 999'999};
    return 0;
}

extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept {
    errno = refusal;
    return refusal != 0 ? -1 : static_cast<int>(syscall(SYS_statx, folder, path, flags, mask, status));
}

namespace {

TEST(Kernel, PrioritiesAreNiceValuesOfTheThreadAlone) {
    for (const auto& [level, expected] :
         {std::pair(0, "nice 0: 1"), {1, "nice -5 alone: 1"}, {15, "nice -20: 0"}, {2, ": 0"}}) {
        calls.clear();
        errno = EDOM;
        const BOOL result = SetThreadPriority(GetCurrentThread(), level);
        EXPECT_EQ(calls + ": " + std::to_string(result), expected);
        EXPECT_EQ(errno, EDOM);
    }
    EXPECT_EQ(SetThreadPriority(GetCurrentProcess(), 0), 0);
}

TEST(Kernel, ProcessTimesAreIn100NanosecondUnits) {
    using Times = std::array<std::uint64_t, 4>;  // the low half of each comes first
    std::array<FILETIME, 4> t = {{{1, 1}, {1, 1}}};
    auto& [creation, exit, kernel, user] = t;
    EXPECT_NE(GetProcessTimes(GetCurrentProcess(), &creation, &exit, &kernel, &user), 0);
    EXPECT_EQ(std::bit_cast<Times>(t), (Times{0, 0, 5'000'000'010, 79'999'990}));
    EXPECT_EQ(GetProcessTimes(nullptr, &creation, &exit, &kernel, &user), 0);
}

TEST(Kernel, DebuggerEntriesAreLinesOfUtf8) {
    // Lone surrogates, values past the last character, a smiley as two and as one value, the last character.
    std::wstring odd;
    for (const int c : {0xD800, 0x61, 0xDC00, 0x110000, -1, 0xD83D, 0xDE00, 0x1F600, 0xDBFF, 0xDFFF})
        odd += static_cast<wchar_t>(c);
    Capture debugger(STDERR_FILENO);
    for (const wchar_t* const text : {L">>> a", L"a\nb\n", L"", odd.c_str()}) OutputDebugStringW(text);
    OutputDebugStringW(nullptr);
    platform::Write(platform::Stream::Error, std::wstring_view(odd).substr(5, 1));  // half a surrogate pair
    EXPECT_EQ(debugger.Writes(), (std::vector<std::string>{
                                     ">>> a\n", "a\nb\n", "\n",
                                     "\uFFFDa\uFFFD\uFFFD\uFFFD\U0001F600\U0001F600\U0010FFFF\n", "\uFFFD"}));
}

TEST(Kernel, DebuggerEntriesForAClosedPipeSendNoSignal) {
    const Capture restored(STDERR_FILENO);
    int ends[2]{};
    EXPECT_EQ(pipe(ends), 0);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    (void)std::signal(SIGPIPE, SIG_DFL);  // would end the program
    OutputDebugStringW(L"text");
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    EXPECT_EQ(sigismember(&before, SIGPIPE), 0);
    (void)raise(SIGPIPE);
    OutputDebugStringW(L"text");
    const timespec noWait{};
    EXPECT_EQ(sigtimedwait(&signals, nullptr, &noWait), SIGPIPE) << "of another pipe, and still pending";
    OutputDebugStringW(L"text");
    EXPECT_EQ(sigtimedwait(&signals, nullptr, &noWait), -1) << "of this write";
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

using File = TemporaryFolder;

TEST_F(File, TheStatusIsThatOfTheFileSystem) {
    const std::string path = Write("12345", "a b");
    const timespec times[] = {{1'000'000'000, 1}, {2'000'000'000, 999'999'999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    std::filesystem::create_symlink(path, Path("link"));
    for (const auto& [error, mode, attribute] : {std::tuple(0, 0020U, CFile::normal),
                                                 {EPERM, 0555U, CFile::readOnly},
                                                 {ENOSYS, 0020U, CFile::normal}}) {
        refusal = error;
        chmod(path.c_str(), mode);
        CFileStatus status{};
        status.m_ctime = CTime(1);
        EXPECT_TRUE(CFile::GetStatus(WidePath("link").c_str(), status));
        EXPECT_TRUE(error == 0 || status.m_ctime == CTime());
        EXPECT_TRUE(status.m_atime == CTime(1'000'000'000, 1) && status.m_atime != CTime(1'000'000'000));
        EXPECT_EQ(status.m_mtime, CTime(2'000'000'000, 999'999'999));
        EXPECT_EQ(status.m_size, 5);
        EXPECT_EQ(status.m_attribute, attribute);
    }
    refusal = 0;
}

TEST_F(File, PathsAreUtf8AndAsLongAsTheSystemAccepts) {
    const std::string name = "\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF\xF0\x9F\x98\x80";
    std::filesystem::create_directory(Path(name));
    for (const char* const file : {"\xED\xA0\x80", "\xF4\x90\x80\x80"}) Write("x", file);
    const std::wstring folder = WidePath("");
    const std::wstring longest = folder + std::wstring(4095 - folder.size(), L'/');
    CFileStatus status{};
    const auto exists = [&](const std::wstring& path) { return CFile::GetStatus(path.c_str(), status); };
    for (const int wrong : {0xD800, 0xDFFF, -1, 0x110000})
        EXPECT_FALSE(exists(folder + wchar_t(wrong))) << wrong;
    EXPECT_FALSE(exists(longest + L'/') || exists(longest + longest));
    EXPECT_TRUE(exists(folder + L"\x80\x7FF\x800\x20AC\xFFFF\x1F600\\.") && exists(longest));
    EXPECT_EQ(status.m_szFullName, longest.substr(0, 259));
    EXPECT_EQ(status.m_attribute, CFile::directory);
}

}  // namespace
