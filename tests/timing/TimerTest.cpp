#include "qmUtility/timing/QMTimer.h"
#include "tests/timing/Script.h"

#include <tuple>

namespace {

/// A stopwatch that starts at 10, for which a read costs 5 of 1000 ticks per second.
struct Timer : Scripted
{
    CQMTimer timer;
    Timer() { script.Calls.clear(); }
};

TEST_F(Timer, OperationsMoveTheMarks)
{
    const auto start = [](CQMTimer& t) { t.Start(false, false); };
    const auto stop = [](CQMTimer& t) { t.Stop(false); };
    const auto pause = [](CQMTimer& t) { t.Pause(); };
    const auto resume = [](CQMTimer& t) { t.Resume(); };
    constexpr std::uint64_t large = std::uint64_t{1} << 53; // where doubles are 2 apart
    const std::tuple<void (*)(CQMTimer&), std::uint64_t, double> steps[] = {
        {stop, 15, 0},          // took no time, and so has not stopped it
        {resume, 500, 0},       // it is running
        {stop, 1015, 1.0},      // stops it
        {pause, 6015, 6.0},     // extends a stopped interval
        {resume, 6515, 6.5},    // counts the pause, and leaves it stopped
        {stop, 9000, 6.5},      // moves no mark
        {resume, 9100, 6.6},    // from the read of that stop
        {start, 9200, 0},       // begins a new interval
        {pause, 10'205, 1.0},   // ends a running one
        {start, large, -0.001}, // rounds the end mark
        {stop, large + 1000, 0.995},
        {start, 20, 0},
        {stop, 21, -0.004}, // took less than a read costs, which stops it, too
        {stop, 900, -0.004},
    };
    for (const auto& [move, clock, seconds] : steps) {
        script.Clock = clock;
        move(timer);
        EXPECT_EQ(timer.GetLapsedTime(false), seconds) << "at " << clock;
    }
}

TEST_F(Timer, RestoresTheResultOfTheRaise)
{
    script.PriorityResult = 0;
    timer.Start(true, true);
    timer.Start(false, true);
    script.Clock = 100;
    timer.Stop(false);
    timer.Stop(true); // not running
    timer.Start(false, false);
    timer.Stop(true);
    script.PriorityResult = 0x7FFFFFFF; // counts as nothing saved
    timer.Start(false, true);
    script.PriorityResult = 1;
    timer.Start(false, true);
    CQMTimer("Title") = timer; // restores it when it is destroyed
    EXPECT_EQ(script.Calls,
              L"priority 15|sleep 0|15|20|100|105|110|115|priority 0|priority 15|120|priority 15|125|"
              L"sleep 0|130|135|title \nTitle\n|140|priority 1|");
}

TEST_F(Timer, ReportsStopFirstAndRestartLast)
{
    script.Clock = 1015;
    timer.LogLapsedTime(true, false, L"%s %d%%%%", L"half", 50);
    timer.LogLapsedTime(false, true, nullptr);
    script.Clock = 1525;
    timer.TraceLapsedTime(true, false, L"50% %s");
    timer.TraceLapsedTime(false, true, nullptr);
    timer.DogLapsedTime(true, true, L"%s", nullptr);
    script.Clock = 2545;
    EXPECT_EQ(timer.GetLapsedTime(true), 1.0);
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
        timer.LogLapsedTime(false, false, L"%s", text.c_str());
        timer.TraceLapsedTime(false, false, text.c_str());
        const std::wstring kept = L">>> " + text.substr(0, 1019);
        EXPECT_EQ(std::exchange(script.Calls, {}),
                  (L"log " + kept + logEnd + L"|debug ").append(kept) + traceEnd + L'|');
    }
}

} // namespace
