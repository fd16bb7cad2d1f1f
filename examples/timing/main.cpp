// SPDX-License-Identifier: MIT
// A tour of the timing classes. In parentheses below each figure is the one that the standard library's
// clocks give.

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <chrono>
#include <ctime>
#include <iostream>
#include <string_view>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Returns the processor time that all threads of the process have used.
double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

void Work(Clock::duration time)
{
    const auto start = Clock::now();
    while (Clock::now() - start < time)
        continue;
}

void Explain(const wchar_t* text) { CQMConsoleAPI::Log(L"\n== %s\n", text); }

void Compare(const wchar_t* clock, double seconds)
{
    CQMConsoleAPI::Log(L"    (%s: %.5f sec)\n", clock, seconds);
}

void TimeIntervals()
{
    Explain(
        L"A stopwatch runs from its construction on, here with a title. It reports 50 ms to the console:");
    CQMTimer timer("Stopwatch");
    auto start = Clock::now();
    Work(50ms);
    timer.Stop(false);
    double seconds = SecondsSince(start);
    timer.LogLapsedTime(false, false, L"%d of %s", 50, L"100 parts");
    Compare(L"steady_clock", seconds);

    Explain(L"Started again, it reports 30 ms to the debugger:");
    timer.Start(true, false);
    start = Clock::now();
    Work(30ms);
    timer.Stop(false);
    seconds = SecondsSince(start);
    timer.TraceLapsedTime(false, false, L"the rest");
    Compare(L"steady_clock", seconds);

    Explain(L"A pause counts: paused after 20 ms and resumed 40 ms later, it shows 60 ms and stays stopped:");
    timer.Start(true, false);
    start = Clock::now();
    Work(20ms);
    timer.Pause();
    Work(40ms);
    timer.Resume();
    seconds = SecondsSince(start);
    Work(20ms);
    timer.LogLapsedTime(true, false, L"with the pause");
    Compare(L"steady_clock", seconds);
}

void MarkScopes()
{
    Explain(L"A marker reports the start and the end of a scope, here with the wall-clock time of a wait of "
            L"120 ms:");
    const auto start = Clock::now();
    {
        const CQMDebugTraceStartEndMarker marker(L"Wait", true, true, false);
        std::this_thread::sleep_for(120ms);
    }
    Compare(L"steady_clock", SecondsSince(start));

    Explain(
        L"In processor time, two threads that work for 150 ms take up to 300 ms. This marker reports to the "
        L"debugger:");
    const double before = ProcessorSeconds();
    {
        const CQMDebugTraceStartEndMarker marker(L"Work", true, false, true);
        std::thread other(Work, 150ms);
        Work(150ms);
        other.join();
    }
    Compare(L"clock", ProcessorSeconds() - before);
}

void CountFrames()
{
    Explain(L"A frame counter in instant mode gives each frame a rate. After 16 frames of 8 to 15.5 ms:");
    CQMFPSCounter instant(eQMFPSType_Instant);
    instant.Reset(); // forgets the empty frames that measured the counter's own cost
    double rate = 0;
    double sum = 0;
    for (int i = 0; i != 16; ++i) {
        const auto start = Clock::now();
        instant.Start();
        Work(8ms + i * 500us);
        instant.End();
        rate = 1 / SecondsSince(start);
        sum += rate;
    }
    CQMConsoleAPI::Log(L"last %.3f, mean %.3f frames per second\n", instant.GetFPS(),
                       instant.GetFPSAverage());
    CQMConsoleAPI::Log(L"    (steady_clock: last %.3f, mean %.3f)\n", rate, sum / 16);

    Explain(L"In average mode it measures each frame from the start of its period, adds these times up to a "
            L"second, and "
            L"divides\n   the frames by the sum. Frames of 10 ms fill a period with the 14th:");
    CQMFPSCounter average(eQMFPSType_Average);
    average.Reset();
    const auto start = Clock::now();
    sum = 0;
    while (average.GetFPS() == 0) {
        average.Start();
        Work(10ms);
        average.End();
        sum += SecondsSince(start);
    }
    const auto frames = static_cast<unsigned>(average.GetTotalFrame());
    CQMConsoleAPI::Log(L"%u frames, %.3f frames per second\n", frames, average.GetFPS());
    CQMConsoleAPI::Log(L"    (steady_clock: %.3f frames per second)\n", frames / sum);

    CQMConsoleAPI::Log(
        L"\nThe processor counts %I64u ticks a second. The counter subtracts its own cost of %I64u ticks "
        L"from each frame.\n",
        cpu::GetClockSpeed(), average.GetTickTolerance());
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc == 2 && argv[1] == std::string_view("--help")) {
        std::cout << "usage: timing_tour\n\n"
                     "Shows what each timing class reports, beside the standard library's clocks.\n";
        return 0;
    }
    if (argc > 1) {
        std::cerr << "timing_tour: takes no arguments\n";
        return 2;
    }
    TimeIntervals();
    MarkScopes();
    CountFrames();
}
