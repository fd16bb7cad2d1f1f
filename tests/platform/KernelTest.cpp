#include "qmUtility/platform/Kernel.h"

#include "qmUtility/platform/StandardStream.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

std::optional<int> niceValue; ///< what it was set to
int niceResult = 0;

} // namespace

// What the library asks the system for.

extern "C" int setpriority(__priority_which_t which, id_t who, int nice) noexcept
{
    EXPECT_EQ(which, PRIO_PROCESS);
    EXPECT_EQ(who, 0) << "which is the calling thread";
    niceValue = nice;
    return niceResult;
}

/// 500.000001 seconds in the kernel, 7.999999 out of it.
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

TEST(Kernel, PrioritiesAreNiceValues)
{
    const std::pair<int, std::optional<int>> levels[] = {
        {15, -20}, {2, -10}, {1, -5},  {0, 0},   {-1, 5},   {-2, 10},
        {-15, 19}, {3, {}},  {-3, {}}, {14, {}}, {-16, {}},
    };
    for (const auto& [level, nice] : levels) {
        niceValue.reset();
        EXPECT_EQ(SetThreadPriority(GetCurrentThread(), level) != 0, nice.has_value()) << level;
        EXPECT_EQ(niceValue, nice) << level;
    }
    EXPECT_EQ(SetThreadPriority(GetCurrentProcess(), 0), 0);
    niceResult = -1;
    EXPECT_EQ(SetThreadPriority(GetCurrentThread(), 0), 0) << "the system has refused";
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
    // Lone surrogates and what lies past the last character; then a smiley as two surrogates and as one, and
    // the last character.
    std::wstring odd;
    for (const int c : {0xD800, 0x61, 0xDC00, 0x110000, -1, 0xD83D, 0xDE00, 0x1F600, 0xDBFF, 0xDFFF})
        odd += static_cast<wchar_t>(c);
    Capture debugger(STDERR_FILENO);
    for (const wchar_t* const text :
         {L">>> a", L"a\nb\n", static_cast<const wchar_t*>(nullptr), L"", odd.c_str()})
        OutputDebugStringW(text);
    platform::Write(platform::Stream::Error, std::wstring_view(odd).substr(5, 1)); // half a character
    EXPECT_EQ(debugger.Writes(), (std::vector<std::string>{
                                     ">>> a\n", "a\nb\n", "\n",
                                     "\uFFFDa\uFFFD\uFFFD\uFFFD\U0001F600\U0001F600\U0010FFFF\n", "\uFFFD"}));
}

} // namespace
