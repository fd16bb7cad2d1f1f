// A tour of the timing classes. In brackets below each figure stands the one that the standard library's own
// clocks give.

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <numeric>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The time that all threads of the process have spent on the processor.
double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

void Work(Clock::duration time)
{
    const auto start = Clock::now();
    while (Clock::now() - start < time)
        continue;
}

void Stopwatch()
{
    CQMConsoleAPI::Log(
        L"== A stopwatch with a title announces itself and runs at once. Some 50 ms later it reports to "
        L"the console:\n");
    CQMTimer timer("Stopwatch");
    auto start = Clock::now();
    Work(50ms);
    timer.Stop(false);
    double seconds = SecondsSince(start);
    timer.LogLapsedTime(false, false, L"%d of %s", 50, L"100 parts");
    CQMConsoleAPI::Log(L"    (steady_clock: %.5f sec)\n", seconds);

    CQMConsoleAPI::Log(L"\n== Started again, it reports some 30 ms to the debugger:\n");
    timer.Start(true, false);
    start = Clock::now();
    Work(30ms);
    timer.Stop(false);
    seconds = SecondsSince(start);
    timer.TraceLapsedTime(false, false, L"the rest");
    CQMConsoleAPI::Log(L"    (steady_clock: %.5f sec)\n", seconds);

    CQMConsoleAPI::Log(
        L"\n== A pause counts: paused after 20 ms and resumed 40 ms later, it reads the time up to Resume, "
        L"and no longer runs:\n");
    timer.Start(true, false);
    start = Clock::now();
    Work(20ms);
    timer.Pause();
    Work(40ms);
    timer.Resume();
    seconds = SecondsSince(start);
    Work(20ms);
    timer.LogLapsedTime(true, false, L"with the pause");
    CQMConsoleAPI::Log(L"    (steady_clock: %.5f sec)\n", seconds);
}

void Markers()
{
    CQMConsoleAPI::Log(
        L"\n== A marker writes a line when it is made and another when it goes, here with the wall-clock "
        L"time of a wait of 120 ms:\n");
    const auto start = Clock::now();
    {
        const CQMDebugTraceStartEndMarker marker(L"Wait", true, true, false);
        std::this_thread::sleep_for(120ms);
    }
    CQMConsoleAPI::Log(L"    (steady_clock: %.2f sec)\n", SecondsSince(start));

    CQMConsoleAPI::Log(L"\n== The same wait takes next to no processor time:\n");
    double before = ProcessorSeconds();
    {
        const CQMDebugTraceStartEndMarker marker(L"Wait", true, true, true);
        std::this_thread::sleep_for(120ms);
    }
    CQMConsoleAPI::Log(L"    (clock: %.2f sec)\n", ProcessorSeconds() - before);

    CQMConsoleAPI::Log(
        L"\n== Two threads that work for 150 ms side by side take up to twice as much; this marker writes to "
        L"the debugger:\n");
    before = ProcessorSeconds();
    {
        const CQMDebugTraceStartEndMarker marker(L"Work", true, false, true);
        std::thread other(Work, 150ms);
        Work(150ms);
        other.join();
    }
    CQMConsoleAPI::Log(L"    (clock: %.2f sec)\n", ProcessorSeconds() - before);
}

void FrameRates()
{
    CQMConsoleAPI::Log(
        L"\n== The processor's counter makes %I64u ticks a second. A frame counter finds out what it costs "
        L"itself, %I64u ticks a\n   frame here, and takes it off. Reset forgets the empty frames of that.\n",
        cpu::GetClockSpeed(), CQMFPSCounter().GetTickTolerance());

    CQMConsoleAPI::Log(
        L"\n== A counter of the instant kind gives each frame a rate of its own. After 16 frames of 8 to "
        L"15.5 ms:\n");
    CQMFPSCounter instant(eQMFPSType_Instant);
    instant.Reset();
    std::vector<double> rates;
    for (int i = 0; i != 16; ++i) {
        const auto start = Clock::now();
        instant.Start();
        Work(8ms + i * 500us);
        instant.End();
        rates.push_back(1 / SecondsSince(start));
    }
    const auto [smallest, largest] = std::minmax_element(rates.begin(), rates.end());
    const wchar_t* const line =
        L"%slast %.3f, smallest %.3f, largest %.3f, average %.3f frames per second%s\n";
    CQMConsoleAPI::Log(line, L"", instant.GetFPS(), instant.GetFPSMinimum(), instant.GetFPSMaximum(),
                       instant.GetFPSAverage(), L"");
    CQMConsoleAPI::Log(line, L"    (steady_clock: ", rates.back(), *smallest, *largest,
                       std::accumulate(rates.begin(), rates.end(), 0.0) / 16, L")");

    CQMConsoleAPI::Log(
        L"\n== The average kind measures every frame from the start of its period and adds those times up to "
        L"a "
        L"second; then it\n   divides the frames by that sum. Frames of 10 ms therefore fill a period with "
        L"the 14th:\n");
    CQMFPSCounter average(eQMFPSType_Average);
    average.Reset();
    int frames = 0;
    double sum = 0;
    const auto start = Clock::now();
    while (average.GetFPS() == 0) {
        average.Start();
        Work(10ms);
        average.End();
        sum += SecondsSince(start);
        ++frames;
    }
    CQMConsoleAPI::Log(L"%.3f frames per second, %u frames\n", average.GetFPS(),
                       static_cast<unsigned>(average.GetTotalFrame()));
    CQMConsoleAPI::Log(L"    (steady_clock: %.3f frames per second, %d frames in a sum of %.3f sec)\n",
                       frames / sum, frames, sum);
}

} // namespace

int main()
{
    Stopwatch();
    Markers();
    FrameRates();
    return 0;
}
