#include "qmUtility/timing/QMTimer.h"
#include "tests/timing/Script.h"

#include <optional>
#include <tuple>

namespace {

/// A stopwatch that starts at 200, for which a read costs 3, of 1000 in a second.
struct Timer : Scripted
{
    Timer()
    {
        script.Counts = {100, 103, 200};
        m_timer.emplace();
        script.Calls.clear();
    }

    /// The next counter reads.
    CQMTimer& At(std::deque<std::int64_t> counts)
    {
        script.Counts = std::move(counts);
        return *m_timer;
    }

    std::optional<CQMTimer> m_timer;
};

TEST_F(Scripted, ATimerMeasuresAReadAndStartsAfterItsTitle)
{
    script.Counts = {100, 103, 200, 300, 303, 400, 1403};
    const CQMTimer untitled(nullptr);
    CQMTimer timer("Title");
    EXPECT_EQ(timer.GetLapsedTime(true), 1.0);
    EXPECT_EQ(script.Calls, L"sleep 0|100|103|200|sleep 0|300|303|log \n%s\nTitle|400|1403|");
}

TEST_F(Timer, MovesItsMarks)
{
    const auto start = [](CQMTimer& timer) { timer.Start(false, false); };
    const auto stop = [](CQMTimer& timer) { timer.Stop(false); };
    const auto pause = [](CQMTimer& timer) { timer.Pause(); };
    const auto resume = [](CQMTimer& timer) { timer.Resume(); };
    const std::tuple<void (*)(CQMTimer&), std::deque<std::int64_t>, double> steps[] = {
        {stop, {203}, 0},       // took no time at all, and so has not stopped it
        {resume, {}, 0},        // reads nothing: it runs
        {stop, {1203}, 1.0},    // stops it
        {stop, {5000}, 1.0},    // it is stopped already
        {pause, {6203}, 6.0},   // extends what is stopped
        {resume, {6703}, 6.5},  // counts the pause, and does not run on
        {stop, {9000}, 6.5},    // moves nothing
        {resume, {9100}, 6.6},  // from the read of that stop
        {start, {9200}, 0},     // begins anew
        {pause, {10'203}, 1.0}, // ends what runs
        {start, {10'300}, 0},
        {stop, {10'301}, -0.002}, // took less than a read costs, which stops it, too
        {stop, {10'900}, -0.002},
    };
    for (const auto& [move, reads, seconds] : steps) {
        move(At(reads));
        EXPECT_EQ(At({}).GetLapsedTime(false), seconds) << "when it read " << testing::PrintToString(reads);
    }
}

TEST_F(Scripted, ATimerTakesTheStartOffBeforeTheOverhead)
{
    // Where doubles are two apart: added up first, the start and the overhead of 3 would come to one tick
    // more.
    constexpr std::int64_t large = std::int64_t{1} << 53;
    script.Counts = {100, 103, large, large + 1000};
    CQMTimer timer;
    EXPECT_EQ(timer.GetLapsedTime(true), 0.997);
}

TEST_F(Timer, ThePriorityHandedBackIsTheResultOfTheRaise)
{
    for (const int result : {1, 0}) {
        script.Calls.clear();
        script.PriorityResult = result;
        At({300}).Start(true, true);
        At({400}).Start(false, true);
        At({500}).Stop(false);
        At({600}).Stop(true); // not running any more
        At({700}).Start(false, false);
        At({800}).Stop(true);
        At({900}).Start(false, false);
        At({1000}).Stop(true); // nothing left to hand back
        EXPECT_EQ(script.Calls, L"priority 15|sleep 0|300|400|500|600|700|800|priority " +
                                    std::to_wstring(result) + L"|900|1000|");
    }
}

TEST_F(Timer, AnAssignedTimerIsTheSameInAllRespects)
{
    script.Counts = {0, 9, 20, 300, 1303, 2303};
    std::optional<CQMTimer> other(std::in_place);
    m_timer->Start(false, true);
    m_timer->Pause();
    *other = *m_timer;
    EXPECT_EQ(other->GetLapsedTime(false), 1.0);
    other->Resume(); // counts from the read of the pause
    EXPECT_EQ(other->GetLapsedTime(false), 2.0);
    m_timer.reset();
    other.reset(); // which hands the priority back as well
    EXPECT_EQ(script.Calls, L"sleep 0|0|9|20|priority 15|300|1303|2303|priority 1|priority 1|");
}

TEST_F(Timer, ReportsStopFirstAndRestartLast)
{
    At({1203}).LogLapsedTime(true, false, L"%s %d%%%% %%s", L"half", 50);
    At({2000}).LogLapsedTime(false, true, nullptr);
    At({2503}).TraceLapsedTime(true, false, L"50% %s");
    At({3000}).TraceLapsedTime(false, true, nullptr);
    At({3103, 4000}).DogLapsedTime(true, true, L"%s", nullptr);
    EXPECT_EQ(script.Calls, L"1203|log >>> half 50%% %s : %.5lf sec\n1.000000|"
                            L"log >>>  : %.5lf sec\n1.000000|2000|2503|debug >>> 50% %s : 0.50000 sec\n|"
                            L"debug >>> (null) : 0.50000 sec\n|3000|3103|4000|");
    EXPECT_EQ(At({5003}).GetLapsedTime(true), 1.0);
}

TEST_F(Timer, ReportsAreCut)
{
    for (const std::size_t length : {1006U, 1007U, 1018U, 1019U, 1020U, 1021U, 5000U}) {
        const std::wstring text = L">>> " + std::wstring(length, L'x');
        script.Calls.clear();
        At({}).LogLapsedTime(false, false, L"%s", text.c_str() + 4);
        At({}).TraceLapsedTime(false, false, text.c_str() + 4);
        EXPECT_EQ(script.Calls, L"log " + (text + L" : %.5lf sec\n").substr(0, 1023) + L"0.000000|" +
                                    L"debug " + (text + L" : 0.00000 sec\n").substr(0, 1023) + L'|')
            << length;
    }
}

} // namespace
