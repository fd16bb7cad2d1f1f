// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMTimer.h"
#include "tests/timing/Script.h"

#include <tuple>

namespace {

/// A stopwatch that starts at 10, for which a read costs 5 of 1000 ticks per second.
struct Timer : Scripted
{
    CQMTimer Stopwatch;
    Timer() { script.Calls.clear(); }
};

TEST_F(Timer, OperationsMoveTheMarks)
{
    const auto at = [this](std::uint64_t clock, double seconds, auto operation, auto... arguments) {
        script.Clock = clock;
        (Stopwatch.*operation)(arguments...);
        EXPECT_EQ(Stopwatch.GetLapsedTime(false), seconds) << "at " << clock;
    };
    at(15, 0, &CQMTimer::Stop, false);           // took just as long as a read, and so has not stopped it
    at(500, 0, &CQMTimer::Resume);               // it is running
    at(1015, 1.0, &CQMTimer::Stop, false);       // stops it
    at(6015, 6.0, &CQMTimer::Pause);             // extends a stopped interval
    at(6515, 6.5, &CQMTimer::Resume);            // counts the pause, and leaves it stopped
    at(9000, 6.5, &CQMTimer::Stop, false);       // moves no mark
    at(9100, 6.6, &CQMTimer::Resume);            // from the read of that stop
    at(9200, 0, &CQMTimer::Start, false, false); // begins a new interval
    at(10'205, 1.0, &CQMTimer::Pause);           // ends a running one
    constexpr std::uint64_t large = 1ULL << 53;  // where doubles are 2 apart
    at(large, -0.001, &CQMTimer::Start, false, false); // rounds the end mark
    at(large + 1000, 0.995, &CQMTimer::Stop, false);
    at(20, 0, &CQMTimer::Start, false, false);
    at(21, -0.004, &CQMTimer::Stop, false); // took less than a read costs, which stops it, too
    at(900, -0.004, &CQMTimer::Stop, false);
}

TEST_F(Timer, RestoresTheResultOfTheRaise)
{
    Stopwatch.Stop(true); // nothing to restore
    script.PriorityResult = 0;
    Stopwatch.Start(true, true);
    Stopwatch.Start(false, true);
    script.Clock = 100;
    Stopwatch.Stop(true);
    for (const int result : {0x7FFFFFFF, 1}) { // the first counts as nothing saved
        script.PriorityResult = result;
        Stopwatch.Start(false, true);
    }
    script.Clock = 200;
    Stopwatch.Stop(false);
    Stopwatch.Stop(true);          // not running
    CQMTimer("Title") = Stopwatch; // restores it when it is destroyed
    EXPECT_EQ(script.Calls,
              L"15|priority 15|sleep 0|20|25|100|priority 0|priority 15|105|priority 15|110|200|205|"
              L"sleep 0|210|215|log \nTitle\n|220|priority 1|");
}

TEST_F(Timer, ReportsStopFirstAndRestartLast)
{
    script.Clock = 1015;
    Stopwatch.LogLapsedTime(true, false, L"%s %d%%%%", L"half", 50);
    Stopwatch.LogLapsedTime(false, true, nullptr);
    script.Clock = 1525;
    Stopwatch.TraceLapsedTime(true, false, L"50% %s");
    Stopwatch.TraceLapsedTime(false, true, nullptr);
    Stopwatch.DogLapsedTime(true, true, L"%s", nullptr);
    script.Clock = 2545;
    EXPECT_EQ(Stopwatch.GetLapsedTime(true), 1.0);
    EXPECT_EQ(script.Calls, L"1015|log >>> half 50% : 1.00000 sec\n|log >>>  : 1.00000 sec\n|1020|"
                            L"1525|debug >>> 50% %s : 0.50000 sec\n|debug >>> (null) : 0.50000 sec\n|1530|"
                            L"1535|1540|2545|");
}

TEST_F(Timer, ReportsAreTruncated)
{
    // The log's line is cut before it gets the seconds.
    for (const auto& [length, logEnd, traceEnd] :
         {std::tuple(1007U, L" : 0.00000 sec", L" : 0.00000 s"), {5000U, L"", L""}}) {
        const std::wstring text(length, L'x');
        Stopwatch.LogLapsedTime(false, false, L"%s", text.c_str());
        Stopwatch.TraceLapsedTime(false, false, text.c_str());
        const std::wstring kept = L">>> " + text.substr(0, 1019);
        EXPECT_EQ(std::exchange(script.Calls, {}),
                  (L"log " + kept + logEnd + L"|debug ").append(kept) + traceEnd + L'|');
    }
}

TEST_F(Scripted, MarkerFlagsSelectLinesAndTime)
{
    // Whether it has the timer, the console, the processor's time; then the timer and the console set later, and
    // whether the times are still available.
    const std::tuple<bool, bool, bool, bool, bool, bool, const wchar_t*> cases[] = {
        {0, 1, 0, 0, 1, 1, L"log %% - Start\n|log % - End\n|"},
        {0, 0, 1, 0, 0, 1, L"debug >>> %% - Start|debug >>> %% - End|"},
        {1, 1, 0, 1, 0, 1, L"sleep 0|0|5|10|log %% - Start\n|15|1270|debug >>> %% - End : 1.25 sec|"},
        {1, 0, 0, 1, 1, 1, L"sleep 0|0|5|10|debug >>> %% - Start|15|1270|log % - End : 1.25 sec\n|"},
        {1, 1, 1, 1, 1, 1, L"log %% - Start\n|times|times|log % - End : -3.50 sec (CPU)\n|"},
        {1, 0, 1, 1, 0, 0, L"debug >>> %% - Start|times|times|debug >>> %% - End : 0.00 sec (CPU)|"},
        {1, 0, 1, 0, 1, 1, L"debug >>> %% - Start|times|log % - End\n|"},
        // Without a measured start, the time is 0 or all the processor time: 9 * 2^32 + 15,000,000 units.
        {0, 1, 0, 1, 0, 1, L"log %% - Start\n|debug >>> %% - End : 0.00 sec|"},
        {0, 1, 1, 1, 0, 1, L"log %% - Start\n|times|debug >>> %% - End : 3866.97 sec (CPU)|"},
    };
    for (const auto& [timer, console, cpu, timerLater, consoleLater, isAvailable, calls] : cases) {
        script = {};
        script.ProcessTimes = {{30'000'000, 7}, {20'000'000, 2}};
        {
            // The name is an argument first, then part of the format.
            CQMDebugTraceStartEndMarker marker(L"%%", timer, console, cpu);
            marker.SetUseTimer(timerLater);
            marker.SetUseLogConsole(consoleLater);
            script.Clock = 1270;
            script.ProcessTimes = {{10'000'000, 7}, {5'000'000, 2}}; // less, as in the child of a fork
            script.AreTimesAvailable = isAvailable;
        }
        EXPECT_EQ(script.Calls, calls);
    }
}

TEST_F(Scripted, MarkerCopiesShareTheStopwatch)
{
    const CQMDebugTraceStartEndMarker marker(L"a", true, true, false);
    CQMDebugTraceStartEndMarker(L"b", false, false, false) = marker;
    EXPECT_EQ(script.Calls,
              L"sleep 0|0|5|10|log a - Start\n|15|debug >>> b - Start|20|log a - End : 0.00 sec\n|");
}

} // namespace
