#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "tests/timing/Script.h"

namespace {

using Marker = CQMDebugTraceStartEndMarker;

TEST_F(Scripted, AMarkersLinesDependOnItsThreeFlags)
{
    const struct
    {
        bool Timer, Console, Cpu;
        bool TimerLater, ConsoleLater;
        const wchar_t* Calls;
    } cases[] = {
        {false, true, false, false, true, L"log %s - Start\n5%|log 5% - End\n|"},
        {false, false, true, false, false, L"debug >>> 5% - Start|debug >>> 5% - End|"},
        {true, true, false, true, true,
         L"sleep 0|100|103|150|log %s - Start\n5%|200|1453|log 5% - End : 1.25 sec\n|"},
        {true, false, false, true, false,
         L"sleep 0|100|103|150|debug >>> 5% - Start|200|1453|debug >>> 5% - End : 1.25 sec|"},
        {true, true, true, true, true, L"log %s - Start\n5%|times|times|log 5% - End : 2.50 sec (CPU)\n|"},
        {true, false, true, true, false,
         L"debug >>> 5% - Start|times|times|debug >>> 5% - End : 2.50 sec (CPU)|"},
        // With the timer only later nothing was begun: no time has passed, or all that there is.
        {false, true, false, true, false, L"log %s - Start\n5%|debug >>> 5% - End : 0.00 sec|"},
        {false, true, true, true, false, L"log %s - Start\n5%|times|debug >>> 5% - End : 502.00 sec (CPU)|"},
        {true, false, true, false, true, L"debug >>> 5% - Start|times|log 5% - End\n|"},
    };
    for (const auto& [timer, console, cpu, timerLater, consoleLater, calls] : cases) {
        script = {};
        script.Counts = {100, 103, 150, 200, 1453}; // 1.25 seconds from the second start to the stop
        script.ProcessTimes = {{5'000'000'000, 20'000'000}, {5'010'000'000, 35'000'000}}; // 2.5 seconds
        {
            Marker marker(L"5%", timer, console, cpu); // an argument first, then part of the format
            marker.SetUseTimer(timerLater);
            marker.SetUseLogConsole(consoleLater);
        }
        EXPECT_EQ(script.Calls, calls);
    }
}

TEST_F(Scripted, ProcessTimesThatAMarkerCannotHaveCountAsZero)
{
    for (const bool atStart : {true, false}) {
        const Marker marker(L"a", true, false, true);
        if (atStart)
            script.ProcessTimes = {{6'000'000'000'000, 4'000'000'000'000}};
    }
    EXPECT_EQ(script.Calls, L"debug >>> a - Start|times|times|debug >>> a - End : 1000000.00 sec (CPU)|"
                            L"debug >>> a - Start|times|times|debug >>> a - End : 0.00 sec (CPU)|");
}

TEST_F(Scripted, CopiesOfAMarkerShareItsStopwatch)
{
    script.Counts = {100, 103, 150, 200, 1453, 7000, 8000};
    {
        const Marker marker(L"a", true, true, false);
        Marker assigned(L"b", false, false, false);
        assigned = Marker(marker);
    }
    const std::wstring end = L"log a - End : 1.25 sec\n|";
    EXPECT_EQ(script.Calls, L"sleep 0|100|103|150|log %s - Start\na|200|debug >>> b - Start|1453|" + end +
                                L"7000|" + end + L"8000|" + end);
}

} // namespace
