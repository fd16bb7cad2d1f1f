#include "platform/Kernel.h"

#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/syscall.h>

#include <chrono>
#include <cstdint>
#include <thread>

/// What the library asks for the times of the process: 500.000001 seconds in the kernel, 7.999999 out of it.
extern "C" int getrusage(__rusage_who_t /*who*/, rusage* usage) noexcept
{
    *usage = {};
    usage->ru_stime = {500, 1};
    usage->ru_utime = {7, 999'999};
    return 0;
}

namespace {

TEST(Kernel, TheCounterIsTheMonotonicClock)
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER count{};
    EXPECT_NE(QueryPerformanceFrequency(&frequency), 0);
    EXPECT_EQ(frequency.QuadPart, 1'000'000'000);
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    EXPECT_NE(QueryPerformanceCounter(&count), 0);
    EXPECT_LE(before.count(), count.QuadPart);
    EXPECT_GE(std::chrono::steady_clock::now().time_since_epoch().count(), count.QuadPart);
}

TEST(Kernel, PrioritiesAreNiceValuesOfTheCallingThreadAlone)
{
    const auto nice = [] { return getpriority(PRIO_PROCESS, 0); };
    const auto expectRefused = [nice](HANDLE thread, int level) {
        const int before = nice();
        EXPECT_EQ(SetThreadPriority(thread, level), 0) << level;
        EXPECT_EQ(nice(), before) << level;
    };
    const int others = nice();
    std::thread([&] {
        const int levels[][2] = {{15, -20}, {2, -10}, {1, -5}, {0, 0}, {-1, 5}, {-2, 10}, {-15, 19}};
        for (const auto& [level, wanted] : levels) {
            const int before = nice();
            const BOOL set = SetThreadPriority(GetCurrentThread(), level);
            EXPECT_TRUE(set != 0 || wanted < before) << level; // going down is always allowed
            EXPECT_EQ(nice(), set != 0 ? wanted : before) << level;
        }
        for (const int level : {3, -3, 14, -16, INT32_MAX})
            expectRefused(GetCurrentThread(), level);
        expectRefused(GetCurrentProcess(), 0);
        // The bare call, unlike the C library's, leaves the other threads their privileges.
        ASSERT_TRUE(getuid() != 0 || syscall(SYS_setresuid, 65534, 65534, 65534) == 0);
        rlimit limit{};
        if (getrlimit(RLIMIT_NICE, &limit) == 0 && limit.rlim_cur == 0) // else anyone may raise priorities
            expectRefused(GetCurrentThread(), 15);
    }).join();
    EXPECT_EQ(nice(), others);
}

TEST(Kernel, ProcessTimesAreThoseOfTheSystemsAccounting)
{
    FILETIME times[4] = {{1, 1}, {1, 1}};
    ASSERT_NE(GetProcessTimes(GetCurrentProcess(), &times[0], &times[1], &times[2], &times[3]), 0);
    const auto units = [](FILETIME time) {
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    EXPECT_EQ(units(times[0]) + units(times[1]), 0); // no creation, no exit
    EXPECT_EQ(units(times[2]), 5'000'000'010);
    EXPECT_EQ(units(times[3]), 79'999'990);
    EXPECT_EQ(GetProcessTimes(nullptr, &times[0], &times[1], &times[2], &times[3]), 0);
}

TEST(Kernel, ADebuggerEntryIsOneWriteOfUtf8ThatEndsItsLine)
{
    // Lone surrogates and what lies past the last character; then a smiley as two surrogates and as one.
    std::wstring odd;
    for (const int c : {0xD800, 0x61, 0xDC00, 0x110000, -1, 0xD83D, 0xDE00, 0x1F600})
        odd += static_cast<wchar_t>(c);
    Capture debugger(STDERR_FILENO);
    for (const wchar_t* const text :
         {L">>> a", L"a\nb\n", static_cast<const wchar_t*>(nullptr), L"", odd.c_str()})
        OutputDebugStringW(text);
    EXPECT_EQ(debugger.Writes(),
              (std::vector<std::string>{">>> a\n", "a\nb\n", "\n",
                                        "\uFFFDa\uFFFD\uFFFD\uFFFD\U0001F600\U0001F600\n"}));
}

} // namespace
