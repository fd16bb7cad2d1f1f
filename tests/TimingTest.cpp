// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

/// The results of the kernel services and the host modules, and a record of the calls.
struct Script {
    std::uint64_t Clock = 0;  ///< the next value of both counters; a read adds 5,
    int CheapRead = 0;        ///< number of the read, from now on, that adds only 2
    std::uint64_t TickRate = 1000;
    int PriorityResult = 1;
    std::pair<FILETIME, FILETIME> ProcessTimes{};  ///< kernel and user time
    BOOL AreTimesAvailable = 1;
    /// Performance counts and other calls: "100|priority 15|debug a line|log a text|".
    std::wstring Calls = {};
};
Script script;

/// A test that begins with an empty script.
struct Scripted : testing::Test {
    Scripted() { script = {}; }
};

BOOL Record(const std::wstring& call, BOOL result = 1) {
    script.Calls += call + L'|';
    return result;
}

}  // namespace

// These take the place of the kernel services and the host modules.

BOOL QueryPerformanceFrequency(LARGE_INTEGER* rate) { return rate->QuadPart = 1000, 1; }
BOOL QueryPerformanceCounter(LARGE_INTEGER* count) {
    count->QuadPart = static_cast<std::int64_t>(cpu::GetTick());
    return Record(std::to_wstring(count->QuadPart));
}
void Sleep(DWORD milliseconds) { Record(L"sleep " + std::to_wstring(milliseconds)); }
HANDLE GetCurrentThread() { return &script.Calls; }
BOOL SetThreadPriority(HANDLE thread, int level) {
    EXPECT_EQ(thread, GetCurrentThread());
    return Record(L"priority " + std::to_wstring(level), script.PriorityResult);
}
BOOL GetProcessTimes(HANDLE process, FILETIME*, FILETIME*, FILETIME* kernel, FILETIME* user) {
    EXPECT_EQ(process, CQMProcess::GetHandle());
    if (script.AreTimesAvailable) std::tie(*kernel, *user) = script.ProcessTimes;
    return Record(L"times", script.AreTimesAvailable);
}
void OutputDebugStringW(const wchar_t* text) { Record(L"debug " + std::wstring(text)); }
void CQMConsoleAPI::Log(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(std::wstring(L"\n%s\n") == format ? L"\n%hs\n" : format, arguments);
    va_end(arguments);
    Record(L"log " + std::wstring(text.GetString()));
}
void* CQMProcess::GetHandle() { return &script; }
std::uint64_t cpu::GetTick() {
    return std::exchange(script.Clock, script.Clock + (--script.CheapRead == 0 ? 2 : 5));
}
std::uint64_t cpu::GetClockSpeed() { return script.TickRate; }

namespace {

/// A stopwatch that starts at 10, for which a read costs 5 of 1000 ticks per second.
struct Timer : Scripted {
    CQMTimer Stopwatch;
    Timer() { script.Calls.clear(); }
};

TEST_F(Timer, OperationsMoveTheMarks) {
    const auto at = [this](std::uint64_t clock, double seconds, auto operation, auto... arguments) {
        script.Clock = clock;
        (Stopwatch.*operation)(arguments...);
        EXPECT_EQ(Stopwatch.GetLapsedTime(false), seconds) << "at " << clock;
    };
    at(15, 0, &CQMTimer::Stop, false);            // took just as long as a read, and so has not stopped it
    at(500, 0, &CQMTimer::Resume);                // it is running
    at(1015, 1.0, &CQMTimer::Stop, false);        // stops it
    at(6015, 6.0, &CQMTimer::Pause);              // extends a stopped interval
    at(6515, 6.5, &CQMTimer::Resume);             // counts the pause, and leaves it stopped
    at(9000, 6.5, &CQMTimer::Stop, false);        // moves no mark
    at(9100, 6.6, &CQMTimer::Resume);             // from the read of that stop
    at(9200, 0, &CQMTimer::Start, false, false);  // begins a new interval
    at(10'205, 1.0, &CQMTimer::Pause);            // ends a running one
    constexpr std::uint64_t large = 1ULL << 53;   // where doubles are 2 apart
    at(large, -0.001, &CQMTimer::Start, false, false);  // rounds the end mark
    at(large + 1000, 0.995, &CQMTimer::Stop, false);
    at(20, 0, &CQMTimer::Start, false, false);
    at(21, -0.004, &CQMTimer::Stop, false);  // took less than a read costs, which stops it, too
}

TEST_F(Timer, RestoresTheResultOfTheRaise) {
    Stopwatch.Stop(true);  // nothing to restore
    script.PriorityResult = 0;
    Stopwatch.Start(true, true);
    Stopwatch.Start(false, true);
    script.Clock = 100;
    Stopwatch.Stop(true);
    for (const int result : {0x7FFFFFFF, 1}) {  // the first counts as nothing saved
        script.PriorityResult = result;
        Stopwatch.Start(false, true);
    }
    script.Clock = 200;
    Stopwatch.Stop(false);
    Stopwatch.Stop(true);           // not running
    CQMTimer("Title") = Stopwatch;  // restores it when it is destroyed
    EXPECT_EQ(script.Calls,
              L"15|priority 15|sleep 0|20|25|100|priority 0|priority 15|105|priority 15|110|200|205|"
              L"sleep 0|210|215|log \nTitle\n|220|priority 1|");
}

TEST_F(Timer, ReportsStopFirstAndRestartLast) {
    script.Clock = 1015;
    Stopwatch.LogLapsedTime(true, false, L"%s %d%%%%", L"half", 50);
    Stopwatch.LogLapsedTime(false, true, nullptr);
    script.Clock = 1525;
    Stopwatch.TraceLapsedTime(true, false, L"50% %s");
    Stopwatch.TraceLapsedTime(false, true, nullptr);
    Stopwatch.DogLapsedTime(true, true, L"%s", nullptr);
    script.Clock = 2545;
    EXPECT_EQ(Stopwatch.GetLapsedTime(true), 1.0);
    EXPECT_EQ(script.Calls,
              L"1015|log >>> half 50% : 1.00000 sec\n|log >>>  : 1.00000 sec\n|1020|"
              L"1525|debug >>> 50% %s : 0.50000 sec\n|debug >>> (null) : 0.50000 sec\n|1530|"
              L"1535|1540|2545|");
}

TEST_F(Timer, ReportsAreTruncated) {
    const std::wstring text(1007, L'x');
    Stopwatch.LogLapsedTime(false, false, L"a%cb", 0);
    Stopwatch.LogLapsedTime(false, false, L"%s", text.c_str());  // is cut before it gets the seconds
    Stopwatch.TraceLapsedTime(false, false, text.c_str());
    EXPECT_EQ(script.Calls, L"log >>> a : 0.00000 sec\n|log >>> " + text + L" : 0.00000 sec|debug >>> " +
                                text + L" : 0.00000 s|");
}

TEST_F(Scripted, MarkerFlagsSelectLinesAndTime) {
    enum : unsigned { Time = 1, Log = 2, Cpu = 4, NoTimes = 8 };  // which are unavailable at the end
    const std::tuple<unsigned, unsigned, const wchar_t*> cases[] = {
        {Time | Log, Time, L"sleep 0|0|5|10|log %% - Start\n|15|1270|debug >>> %% - End : 1.25 sec|"},
        {Time, Time | Log, L"sleep 0|0|5|10|debug >>> %% - Start|15|1270|log % - End : 1.25 sec\n|"},
        {Time | Log | Cpu, Time | Log, L"log %% - Start\n|times|times|log % - End : -3.50 sec (CPU)\n|"},
        {Time | Cpu, Time | NoTimes,
         L"debug >>> %% - Start|times|times|debug >>> %% - End : 0.00 sec (CPU)|"},
        {Time | Cpu, Log, L"debug >>> %% - Start|times|log % - End\n|"},
        // Without a measured start, the time is 0 or all the processor time: 9 * 2^32 + 15,000,000 units.
        {Log, Time, L"log %% - Start\n|debug >>> %% - End : 0.00 sec|"},
        {Log | Cpu, Time, L"log %% - Start\n|times|debug >>> %% - End : 3866.97 sec (CPU)|"},
    };
    for (const auto& [start, end, calls] : cases) {
        script = {.ProcessTimes = {{30'000'000, 7}, {20'000'000, 2}}};
        {
            // The name is an argument first, then part of the format.
            CQMDebugTraceStartEndMarker marker(L"%%", start & Time, start & Log, start & Cpu);
            marker.SetUseTimer(end & Time);
            marker.SetUseLogConsole(end & Log);
            script.Clock = 1270;
            script.ProcessTimes = {{10'000'000, 7}, {5'000'000, 2}};  // less, as in the child of a fork
            script.AreTimesAvailable = !(end & NoTimes);
        }
        EXPECT_EQ(script.Calls, calls);
    }
}

TEST_F(Scripted, MarkerCopiesShareTheStopwatch) {
    const CQMDebugTraceStartEndMarker marker(L"a", true, true, false);
    CQMDebugTraceStartEndMarker(L"b", false, false, false) = marker;
    EXPECT_EQ(script.Calls,
              L"sleep 0|0|5|10|log a - Start\n|15|debug >>> b - Start|20|log a - End : 0.00 sec\n|");
}

/// A counter whose own cost is 5 of 1000 ticks per second.
struct Counter : CQMFPSCounter {
    using CQMFPSCounter::CQMFPSCounter;
    using CQMFPSCounter::Initialize;

    auto Figures() const {
        return std::tuple(GetTotalFrame(), GetTickStart(), GetTickEnd(), GetTickElapsed(), GetTickMinimum(),
                          GetTickMaximum(), GetTickAverage(), GetTickSampleIndex(), GetTickAccumulator(),
                          GetFPS(), GetFPSMinimum(), GetFPSMaximum(), GetFPSAverage(), GetFPSSampleIndex());
    }

    /// @return the figures after a frame from one tick to another.
    auto Frame(std::uint64_t start, std::uint64_t end) {
        script.Clock = start;
        Start();
        script.Clock = end;
        End();
        return Figures();
    }
};
using Figures = decltype(Counter().Figures());
const Figures Cleared(0, 0, 0, 0, INT64_MAX, 0, 0, 0, 0, 0, INT_MAX, -1, 0, 0);
static_assert(std::is_convertible_v<eQMFPSType, CQMFPSCounter>);

TEST_F(Scripted, InInstantModeEachFrameHasARate) {
    Counter c;
    EXPECT_EQ(std::tuple(c.GetFPSType(), c.GetTickPeriod(), c.GetTickSampleCount()),
              std::tuple(eQMFPSType_Instant, 1000, 10'000));
    c.SetFPSAverageSampleCount(16);
    c.Initialize();  // brings the durations back
    EXPECT_EQ(c.Figures(), Cleared);
    // The first calibration frame took 5, as yet without a tolerance, the other 1000 took 1.
    EXPECT_EQ(c.Frame(100, 125),
              Figures(1, 100, 125, 20, 1, 20, 1020 / 1001., 1, 0, 50, 50, 1000, 940.625, 1));
    c.Start();
    c.Hold(true);
    c.Reset();
    c.End();  // not started
    EXPECT_EQ(c.Figures(), Cleared);
    EXPECT_EQ(c.Frame(100, 125), Figures(1, 100, 125, 20, 20, 20, 20, 1, 0, 50, 50, 50, 50, 1));
    EXPECT_EQ(c.Frame(300, 307), Figures(2, 300, 307, 2, 2, 20, 11, 2, 0, 500, 50, 500, 275, 2));
    // No time counts as 1.
    EXPECT_EQ(c.Frame(400, 405), Figures(3, 400, 405, 1, 1, 20, 23 / 3., 3, 0, 1000, 50, 1000, 1550 / 3., 3));
    script.Clock = 500;
    c.Start();
    c.Hold(true);
    c.Frame(506, 508);  // neither starts nor ends
    c.Hold(false);
    // It started at 500. Less than the tolerance wraps, and is negative in the average.
    constexpr double rate = 1000 / 0x1p64;
    EXPECT_EQ(c.Frame(510, 470), Figures(4, 500, 470, -35, 1, -35, -3, 4, 0, rate, rate, 1000, 387.5, 4));

    script.CheapRead = 2001;  // begins the last calibration frame
    c.Reset();
    EXPECT_EQ(c.GetTickTolerance(), 2);
}

TEST_F(Scripted, InAverageModeFramesMeasureFromTheirPeriodsStart) {
    for (const int type : {1, 0, 3, -1}) {
        Counter c(static_cast<eQMFPSType>(type));
        EXPECT_EQ(c.GetFPSType(), type);
        // The calibration ended 47 periods of 21 frames, and left 14 frames of 1, 5, 10, ... 65.
        c.Frame(100, 649);
        EXPECT_EQ(c.GetFPS(), 1);
        c.Reset();
        EXPECT_EQ(c.Frame(100, 505), Figures(1, 100, 505, 400, 400, 400, 400, 1, 400, 0, INT_MAX, -1, 0, 0));
        EXPECT_EQ(c.Frame(600, 705), Figures(2, 100, 705, 600, 400, 600, 500, 2, 0, 2, 2, 2, 2, 1));
        EXPECT_EQ(c.Frame(800, 2805), Figures(3, 800, 2805, 2000, 400, 2000, 1000, 3, 0, .5, .5, 2, 1.25, 2));
    }
}

TEST_F(Scripted, AnotherNumberOfRatesDropsTheDurations) {
    Counter c;
    c.Reset();
    c.Frame(100, 125);
    c.SetFPSAverageSampleCount(2);
    EXPECT_EQ(c.Frame(100, 205), Figures(2, 100, 205, 100, 20, 20, 20, 1, 0, 10, 10, 50, 10, 1));
    EXPECT_EQ(c.Frame(100, 145), Figures(3, 100, 145, 40, 20, 20, 20, 1, 0, 25, 10, 50, 17.5, 2));
    // The ring wraps: 10 is forgotten, and 50, which is from before.
    EXPECT_EQ(c.Frame(100, 130), Figures(4, 100, 130, 25, 20, 20, 20, 1, 0, 40, 25, 40, 32.5, 1));
    c.Reset();
    EXPECT_EQ(c.Figures(), Cleared);

    script.TickRate = 0;  // rates of 0 show where minimum and maximum start
    Counter zero;
    zero.SetFPSAverageSampleCount(0);
    EXPECT_EQ(zero.GetFPSSampleCount(), 1);
    EXPECT_EQ(zero.Frame(0, 15), Figures(1, 0, 15, 10, INT64_MAX, 0, 0, 0, 0, 0, INT_MAX, -1, 0, 1));
    EXPECT_EQ(zero.Frame(0, 15), Figures(2, 0, 15, 10, INT64_MAX, 0, 0, 0, 0, 0, 0x1p63, -0x1p63, 0, 1));
}

TEST_F(Scripted, CopiesShareTheRingsAndFindWhatTheOthersStored) {
    const auto figures = [](const Counter& x) {
        return std::tuple(x.GetTickMinimum(), x.GetTickMaximum(), x.GetTickAverage());
    };
    Counter c;
    c.Reset();
    Counter copy(c);
    // The ring of 10,000 durations then no longer has the first two, which are the least and the most.
    for (const unsigned duration : {1U, 20'000U}) c.Frame(0, 5 + duration);
    for (unsigned duration = 3; duration <= 10'002; ++duration) c.Frame(0, 5 + duration);
    EXPECT_EQ(figures(c), std::tuple(1, 20'000, 5002.5));
    copy.Frame(0, 5 + 10'001);  // in place of an equal duration
    EXPECT_EQ(figures(copy), std::tuple(3, 10'002, 5002.5));
    EXPECT_EQ(c.GetFPSSample(0), copy.GetFPS());
    c.Reset();
    for (int frame = 0; frame != 10'003; ++frame) c.Frame(0, 5 + 20'000);  // as many as before
    copy.Frame(0, 5 + 50);
    EXPECT_EQ(figures(copy), std::tuple(3, 20'000, 19'998.005));
}

}  // namespace
