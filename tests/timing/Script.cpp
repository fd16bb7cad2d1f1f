#include "tests/timing/Script.h"

#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"

#include <cstdarg>
#include <string_view>

namespace {

int process; // its address is the handle
int thread;

FILETIME ToFileTime(std::uint64_t units)
{
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

void Tell(const std::wstring& call) { script.Calls += call + L'|'; }

} // namespace

BOOL QueryPerformanceCounter(LARGE_INTEGER* count)
{
    count->QuadPart = Take(script.Counts);
    Tell(std::to_wstring(count->QuadPart));
    return 1;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* ticksPerSecond)
{
    ticksPerSecond->QuadPart = 1000;
    return 1;
}

void Sleep(DWORD milliseconds) { Tell(L"sleep " + std::to_wstring(milliseconds)); }

HANDLE GetCurrentThread() { return &thread; }

BOOL SetThreadPriority(HANDLE handle, int level)
{
    EXPECT_EQ(handle, &thread);
    Tell(L"priority " + std::to_wstring(level));
    return script.PriorityResult;
}

BOOL GetProcessTimes(HANDLE handle, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user)
{
    EXPECT_EQ(handle, &process);
    Tell(L"times");
    if (script.ProcessTimes.empty())
        return 0;
    const auto [kernelTime, userTime] = Take(script.ProcessTimes);
    *creation = *exit = ToFileTime(UINT64_MAX);
    *kernel = ToFileTime(kernelTime);
    *user = ToFileTime(userTime);
    return 1;
}

void OutputDebugStringW(const wchar_t* text) { Tell(L"debug " + std::wstring(text)); }

// Takes the argument that goes with a format; the others have none.
void CQMConsoleAPI::Log(const wchar_t* format, ...)
{
    std::wstring call = L"log " + std::wstring(format);
    std::va_list arguments;
    va_start(arguments, format);
    if (call == L"log \n%s\n") {
        const std::string_view title = va_arg(arguments, const char*);
        call.append(title.begin(), title.end());
    } else if (call == L"log %s - Start\n")
        call += va_arg(arguments, const wchar_t*);
    else if (call.starts_with(L"log >>> "))
        call += std::to_wstring(va_arg(arguments, double));
    va_end(arguments);
    Tell(call);
}

void* CQMProcess::GetHandle() { return &process; }

std::uint64_t cpu::GetTick() { return script.Ticks(); }

std::uint64_t cpu::GetClockSpeed() { return script.TickRate; }
