// SPDX-License-Identifier: MIT
#include "tests/timing/Script.h"

#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"

#include <cstdlib>
#include <new>
#include <tuple>

static BOOL Record(const std::wstring& call, BOOL result = 1)
{
    script.Calls += call + L'|';
    return result;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* rate) { return rate->QuadPart = 1000, 1; }

BOOL QueryPerformanceCounter(LARGE_INTEGER* count)
{
    count->QuadPart = static_cast<std::int64_t>(cpu::GetTick());
    return Record(std::to_wstring(count->QuadPart));
}

void Sleep(DWORD milliseconds) { Record(L"sleep " + std::to_wstring(milliseconds)); }

HANDLE GetCurrentThread() { return &script.Calls; }

BOOL SetThreadPriority(HANDLE thread, int level)
{
    EXPECT_EQ(thread, GetCurrentThread());
    return Record(L"priority " + std::to_wstring(level), script.PriorityResult);
}

BOOL GetProcessTimes(HANDLE process, FILETIME*, FILETIME*, FILETIME* kernel, FILETIME* user)
{
    EXPECT_EQ(process, CQMProcess::GetHandle());
    if (script.AreTimesAvailable)
        std::tie(*kernel, *user) = script.ProcessTimes;
    return Record(L"times", script.AreTimesAvailable);
}

void OutputDebugStringW(const wchar_t* text) { Record(L"debug " + std::wstring(text)); }

void CQMConsoleAPI::Log(const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(std::wstring(L"\n%s\n") == format ? L"\n%hs\n" : format, arguments);
    va_end(arguments);
    Record(L"log " + std::wstring(text.GetString()));
}

void* CQMProcess::GetHandle() { return &script; }

std::uint64_t cpu::GetTick()
{
    return std::exchange(script.Clock, script.Clock + (script.Reads++ == script.CheapRead ? 2 : 5));
}

std::uint64_t cpu::GetClockSpeed() { return script.TickRate; }

// There is memory for less than a megabyte at a time.
void* operator new(std::size_t size) { return size < 1'000'000 ? std::malloc(size) : throw std::bad_alloc(); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
