#include "qmUtility/platform/Kernel.h"

#include "qmUtility/platform/StandardStream.h"
#include "tests/support/Capture.h"

#include <sys/resource.h>

#include <cstdint>
#include <tuple>

namespace {

constexpr int NoNice = 99;
int niceValue; ///< the value that was set

} // namespace

// These take the place of the system's functions. Their parameters have reserved names there.

extern "C" int setpriority(__priority_which_t which, id_t who, int nice) noexcept
{
    niceValue = which == PRIO_PROCESS && who == 0 ? nice : NoNice; // of the calling thread
    return nice == -20 ? -1 : 0;                                   // refuses time-critical threads
}

extern "C" int getrusage(__rusage_who_t /*who*/, rusage* usage) noexcept
{
    usage->ru_stime = {500, 1}; // seconds and microseconds in the kernel
    usage->ru_utime = {7, 999'999};
    return 0;
}


namespace {

TEST(Kernel, PrioritiesAreNiceValues)
{
    const std::tuple<int, int, BOOL> cases[] = {{0, 0, 1}, {1, -5, 1}, {15, -20, 0}, {2, NoNice, 0}};
    for (const auto& [level, nice, result] : cases) {
        niceValue = NoNice;
        EXPECT_EQ(SetThreadPriority(GetCurrentThread(), level), result) << level;
        EXPECT_EQ(niceValue, nice) << level;
    }
    EXPECT_EQ(SetThreadPriority(GetCurrentProcess(), 0), 0);
}

TEST(Kernel, ProcessTimesAreIn100NanosecondUnits)
{
    FILETIME times[4] = {{1, 1}, {1, 1}};
    ASSERT_NE(GetProcessTimes(GetCurrentProcess(), &times[0], &times[1], &times[2], &times[3]), 0);
    const std::uint64_t expected[] = {0, 0, 5'000'000'010, 79'999'990};
    for (int i = 0; i != 4; ++i)
        EXPECT_EQ(std::uint64_t{times[i].dwHighDateTime} << 32 | times[i].dwLowDateTime, expected[i]);
    EXPECT_EQ(GetProcessTimes(nullptr, &times[0], &times[1], &times[2], &times[3]), 0);
}

TEST(Kernel, DebuggerEntriesAreLinesOfUtf8)
{
    // Lone surrogates and values past the last character; a smiley as two surrogates and as one value; the last
    // character.
    std::wstring odd;
    for (const int c : {0xD800, 0x61, 0xDC00, 0x110000, -1, 0xD83D, 0xDE00, 0x1F600, 0xDBFF, 0xDFFF})
        odd += static_cast<wchar_t>(c);
    Capture debugger(STDERR_FILENO);
    for (const wchar_t* const text : {L">>> a", L"a\nb\n", L"", odd.c_str()})
        OutputDebugStringW(text);
    OutputDebugStringW(nullptr);
    platform::Write(platform::Stream::Error, std::wstring_view(odd).substr(5, 1)); // half a surrogate pair
    EXPECT_EQ(debugger.Writes(), (std::vector<std::string>{
                                     ">>> a\n", "a\nb\n", "\n",
                                     "\uFFFDa\uFFFD\uFFFD\uFFFD\U0001F600\U0001F600\U0010FFFF\n", "\uFFFD"}));
}

} // namespace
