#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>

#define CHECK(condition) ((condition) ? (void)0 : Fail(#condition))

namespace {

[[noreturn]] void Fail(const char* what)
{
    std::cerr << "consumer: " << what << '\n';
    std::_Exit(1);
}

int calls = 0; ///< of the host functions below

} // namespace

// Functions of the program that the library must not call.

struct LARGE_INTEGER;
struct FILETIME;
void Sleep(unsigned /*milliseconds*/) { Fail("Sleep"); }
int QueryPerformanceCounter(LARGE_INTEGER* /*count*/) { Fail("QueryPerformanceCounter"); }
int QueryPerformanceFrequency(LARGE_INTEGER* /*frequency*/) { Fail("QueryPerformanceFrequency"); }
void* GetCurrentThread() { Fail("GetCurrentThread"); }
int SetThreadPriority(void* /*thread*/, int /*level*/) { Fail("SetThreadPriority"); }
int GetProcessTimes(void* /*process*/, FILETIME*, FILETIME*, FILETIME*, FILETIME*)
{
    Fail("GetProcessTimes");
}
void OutputDebugStringW(const wchar_t* /*text*/) { Fail("OutputDebugStringW"); }
std::FILE* _wfopen(const wchar_t* /*path*/, const wchar_t* /*mode*/) { Fail("_wfopen"); }
extern "C" int DllMain(void* /*library*/, unsigned /*reason*/, void* /*reserved*/) { Fail("DllMain"); }

namespace platform {

enum class Stream;
void Write(Stream /*stream*/, std::wstring_view /*text*/) { Fail("platform::Write"); }
void IgnoreLeak(const void* /*allocation*/) { Fail("platform::IgnoreLeak"); }

} // namespace platform

// Functions of the program that the library must call.

void CQMConsoleAPI::Log(const wchar_t* /*format*/, ...) { ++calls; }
std::uint64_t cpu::GetTick() { return 1000U * static_cast<unsigned>(++calls); }
std::uint64_t cpu::GetClockSpeed() { return static_cast<unsigned>(++calls); }
void* CQMProcess::GetHandle()
{
    ++calls;
    return nullptr;
}

int main()
{
    // The stopwatch covers the inner interval and lies within the outer one.
    using Clock = std::chrono::steady_clock;
    const auto outerStart = Clock::now();
    CQMTimer timer;
    timer.Start(true, true);
    const auto innerStart = Clock::now();
    while (Clock::now() - innerStart < std::chrono::milliseconds(20))
        continue;
    const std::chrono::duration<double> inner = Clock::now() - innerStart;
    const double seconds = timer.GetLapsedTime(true);
    const std::chrono::duration<double> outer = Clock::now() - outerStart;
    CHECK(seconds > inner.count() * 0.99 && seconds < outer.count());
    timer.Stop(true);
    timer.TraceLapsedTime(false, false, L"debugger line");

    CHECK(CQMFileCheck(L"none").CheckDeleted());
    CHECK(INIParser::GetSectionNames("none").empty());

    timer.LogLapsedTime(false, false, L"log");
    CHECK(calls == 1);
    CQMDebugTraceStartEndMarker(L"marker", true, true, true); // two lines, and the processor time twice
    CHECK(calls == 5);
    CQMFPSCounter counter;
    counter.Start();
    counter.End();
    CHECK(calls > 7);
}
