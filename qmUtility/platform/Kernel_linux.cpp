#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/StandardStream.h"

#include <sys/resource.h>

#include <chrono>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

/// Pseudo handles are small negative numbers in place of pointers.
HANDLE PseudoHandle(std::intptr_t number)
{
    return reinterpret_cast<HANDLE>(number); // NOLINT(performance-no-int-to-ptr): never dereferenced
}

FILETIME ToFileTime(const timeval& time)
{
    const auto units =
        static_cast<std::uint64_t>(time.tv_sec) * 10'000'000 + static_cast<std::uint64_t>(time.tv_usec) * 10;
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

} // namespace

BOOL QueryPerformanceCounter(LARGE_INTEGER* count)
{
    count->QuadPart = Clock::now().time_since_epoch().count();
    return 1;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* ticksPerSecond)
{
    static_assert(Clock::period::num == 1);
    ticksPerSecond->QuadPart = Clock::period::den;
    return 1;
}

void Sleep(DWORD /*milliseconds*/) { std::this_thread::yield(); }

HANDLE GetCurrentThread() { return PseudoHandle(-2); }

BOOL SetThreadPriority(HANDLE thread, int level)
{
    if (thread != GetCurrentThread())
        return 0;
    // Each thread has a nice value of its own; process 0 means the calling thread.
    const auto setNice = [](int nice) { return setpriority(PRIO_PROCESS, 0, nice) == 0; };
    switch (level) {
    case THREAD_PRIORITY_NORMAL:
        return setNice(0);
    case THREAD_PRIORITY_ABOVE_NORMAL:
        return setNice(-5);
    case THREAD_PRIORITY_TIME_CRITICAL:
        return setNice(-20);
    default:
        return 0;
    }
}

HANDLE GetCurrentProcess() { return PseudoHandle(-1); }

BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user)
{
    rusage usage{};
    if (process != GetCurrentProcess() || getrusage(RUSAGE_SELF, &usage) != 0)
        return 0;
    *creation = {};
    *exit = {};
    *kernel = ToFileTime(usage.ru_stime);
    *user = ToFileTime(usage.ru_utime);
    return 1;
}

void OutputDebugStringW(const wchar_t* text)
{
    if (text == nullptr)
        return;
    std::wstring entry = text;
    if (entry.empty() || entry.back() != L'\n')
        entry += L'\n';
    platform::Write(platform::Stream::Error, entry);
}
