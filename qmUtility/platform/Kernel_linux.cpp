// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Handle.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/StandardStream.h"

#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

/// Pseudo handles are small negative numbers in place of pointers.
HANDLE PseudoHandle(std::intptr_t number) {
    return reinterpret_cast<HANDLE>(number);  // NOLINT(performance-no-int-to-ptr): never dereferenced
}

FILETIME ToFileTime(const timeval& time) {
    const auto units =
        static_cast<std::uint64_t>(time.tv_sec) * 10'000'000 + static_cast<std::uint64_t>(time.tv_usec) * 10;
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

}  // namespace

BOOL QueryPerformanceCounter(LARGE_INTEGER* count) {
    count->QuadPart = Clock::now().time_since_epoch().count();
    return 1;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* ticksPerSecond) {
    static_assert(Clock::period::num == 1);
    ticksPerSecond->QuadPart = Clock::period::den;
    return 1;
}

void Sleep(DWORD /*milliseconds*/) { std::this_thread::yield(); }

HANDLE GetCurrentThread() { return PseudoHandle(-2); }

BOOL SetThreadPriority(HANDLE thread, int level) {
    int nice = 0;
    if (level == THREAD_PRIORITY_ABOVE_NORMAL)
        nice = -5;
    else if (level == THREAD_PRIORITY_TIME_CRITICAL)
        nice = -20;
    else if (level != THREAD_PRIORITY_NORMAL)
        return 0;
    if (thread != GetCurrentThread()) return 0;
    const platform::LastErrorPreserver preserver;
    const bool isSet = setpriority(PRIO_PROCESS, 0, nice) == 0;  // process 0 means the calling thread
    if (isSet && nice < 0) {
        sched_param parameters{};
        sched_getparam(0, &parameters);
        sched_setscheduler(0, sched_getscheduler(0) | SCHED_RESET_ON_FORK, &parameters);
    }
    return isSet;
}

HANDLE GetCurrentProcess() { return PseudoHandle(-1); }

BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user) {
    rusage usage{};
    if (process != GetCurrentProcess() || getrusage(RUSAGE_SELF, &usage) != 0) return 0;
    *creation = {};
    *exit = {};
    *kernel = ToFileTime(usage.ru_stime);
    *user = ToFileTime(usage.ru_utime);
    return 1;
}

void OutputDebugStringW(const wchar_t* text) {
    if (text == nullptr) return;
    std::wstring entry = text;
    if (entry.empty() || entry.back() != L'\n') entry += L'\n';
    platform::Write(platform::Stream::Error, entry);
}

std::FILE* _wfopen(const wchar_t* path, const wchar_t* /*mode*/) {
    // The system opens directories too, and fails to read them.
    platform::Handle handle(
        platform::OpenDescriptor(platform::SystemPath::FromWindows(path).Get(), O_RDONLY | O_NONBLOCK));
    struct stat found;
    const bool isReadable = fstat(handle, &found) == 0 && !S_ISDIR(found.st_mode);
    std::FILE* const file = isReadable ? fdopen(handle, "rb") : nullptr;
    if (file != nullptr) handle.Release();
    return file;
}
