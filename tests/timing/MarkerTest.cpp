#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "tests/timing/Script.h"

#include <tuple>

namespace {

using Marker = CQMDebugTraceStartEndMarker;

TEST_F(Scripted, MarkerFlagsSelectLinesAndTime)
{
    // Whether it has the timer, the console, the processor's time; then the timer and the console set later.
    const std::tuple<bool, bool, bool, bool, bool, const wchar_t*> cases[] = {
        {0, 1, 0, 0, 1, L"log %% - Start\n|log % - End\n|"},
        {0, 0, 1, 0, 0, L"debug >>> %% - Start|debug >>> %% - End|"},
        {1, 1, 0, 1, 0, L"sleep 0|0|5|10|log %% - Start\n|15|1270|debug >>> %% - End : 1.25 sec|"},
        {1, 0, 0, 1, 1, L"sleep 0|0|5|10|debug >>> %% - Start|15|1270|log % - End : 1.25 sec\n|"},
        {1, 1, 1, 1, 1, L"log %% - Start\n|times|times|log % - End : -3.50 sec (CPU)\n|"},
        {1, 0, 1, 0, 1, L"debug >>> %% - Start|times|log % - End\n|"},
        // Without a measured start, the time is 0 or all the processor time: 9 * 2^32 + 15,000,000 units.
        {0, 1, 0, 1, 0, L"log %% - Start\n|debug >>> %% - End : 0.00 sec|"},
        {0, 1, 1, 1, 0, L"log %% - Start\n|times|debug >>> %% - End : 3866.97 sec (CPU)|"},
    };
    for (const auto& [timer, console, cpu, timerLater, consoleLater, calls] : cases) {
        script = {};
        script.ProcessTimes = {{30'000'000, 7}, {20'000'000, 2}};
        {
            Marker marker(L"%%", timer, console, cpu); // an argument first, then part of the format
            marker.SetUseTimer(timerLater);
            marker.SetUseLogConsole(consoleLater);
            script.Clock = 1270;
            script.ProcessTimes = {{10'000'000, 7}, {5'000'000, 2}}; // less, as in the child of a fork
        }
        EXPECT_EQ(script.Calls, calls);
    }
    script = {};
    script.ProcessTimes = {{20'000'000, 0}, {0, 0}};
    {
        const Marker marker(L"a", true, false, true);
        script.ProcessTimes.reset(); // unavailable
    }
    EXPECT_EQ(script.Calls, L"debug >>> a - Start|times|times|debug >>> a - End : 0.00 sec (CPU)|");
}

TEST_F(Scripted, MarkerCopiesShareTheStopwatch)
{
    const Marker marker(L"a", true, true, false);
    Marker(L"b", false, false, false) = marker;
    EXPECT_EQ(script.Calls,
              L"sleep 0|0|5|10|log a - Start\n|15|debug >>> b - Start|20|log a - End : 0.00 sec\n|");
}

} // namespace
