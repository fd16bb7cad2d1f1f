// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#define CHECK(condition) ((condition) ? (void)0 : Fail(#condition))

[[noreturn]] static void Fail(const char* what) {
    std::fprintf(stderr, "consumer: %s\n", what), std::_Exit(1);
}

// Functions of the program that the library must not call.

struct LARGE_INTEGER;
struct FILETIME;
void Sleep(unsigned) { Fail("Sleep"); }
int QueryPerformanceCounter(LARGE_INTEGER*) { Fail("QueryPerformanceCounter"); }
int QueryPerformanceFrequency(LARGE_INTEGER*) { Fail("QueryPerformanceFrequency"); }
void* GetCurrentThread() { Fail("GetCurrentThread"); }
int SetThreadPriority(void*, int) { Fail("SetThreadPriority"); }
int GetProcessTimes(void*, FILETIME*, FILETIME*, FILETIME*, FILETIME*) { Fail("GetProcessTimes"); }
void OutputDebugStringW(const wchar_t*) { Fail("OutputDebugStringW"); }
std::FILE* _wfopen(const wchar_t*, const wchar_t*) { Fail("_wfopen"); }
extern "C" int DllMain(void*, unsigned, void*) { Fail("DllMain"); }
namespace platform {
enum class Stream;
void Write(Stream, std::wstring_view) { Fail("platform::Write"); }
void IgnoreLeak(const void*) { Fail("platform::IgnoreLeak"); }
}  // namespace platform

// Functions of the program that the library must call.

static int calls = 0;
void CQMConsoleAPI::Log(const wchar_t*, ...) { ++calls; }
std::uint64_t cpu::GetTick() { return std::uint64_t{1000} * static_cast<unsigned>(++calls); }
std::uint64_t cpu::GetClockSpeed() { return static_cast<unsigned>(++calls); }
void* CQMProcess::GetHandle() { return ++calls, nullptr; }

int main() {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    CQMTimer timer;
    timer.Start(true, true);
    for (const auto inner = Clock::now(); Clock::now() - inner < std::chrono::milliseconds(20);) continue;
    const double seconds = timer.GetLapsedTime(true);
    CHECK(seconds > 0.0199 && seconds < std::chrono::duration<double>(Clock::now() - start).count());
    timer.TraceLapsedTime(false, false, L"debugger line");
    CHECK(CQMFileCheck(L"none").CheckDeleted() && INIParser::GetSectionNames("none").empty());

    // What the library calls is its own framework, also when its list is destroyed at the end.
    CQMFileCheckAPI::AddWatchDog(L"main.cpp");
    CString text;
    text.Format(L"%d", 1);
    CHECK(text.GetString() == std::wstring_view(L"1"));
    std::stringbuf file;
    CArchive(file, CArchive::store).WriteCount(1);
    CHECK(file.str().size() == 2);

    timer.LogLapsedTime(false, false, L"log");
    CHECK(calls == 1);
    CQMDebugTraceStartEndMarker(L"marker", true, true, true);  // two lines, and the processor time twice
    CHECK(calls == 5);
    CQMFPSCounter counter;
    counter.Start();
    counter.End();
    CHECK(calls > 7);
}
