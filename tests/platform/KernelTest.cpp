// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/StandardStream.h"
#include "tests/support/Capture.h"

#include <sys/resource.h>

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <string>
#include <utility>

static std::string calls;  ///< of the next two functions, for the calling thread

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

namespace {

TEST(Kernel, PrioritiesAreNiceValuesOfTheThreadAlone) {
    const std::pair<int, const char*> cases[] = {
        {0, "nice 0: 1"}, {1, "nice -5 alone: 1"}, {15, "nice -20: 0"}, {2, ": 0"}};
    for (const auto& [level, expected] : cases) {
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
    // Lone surrogates and values past the last character; a smiley as two surrogates and as one value; the
    // last character.
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
}

}  // namespace
