// SPDX-License-Identifier: MIT
// A tour of the timing classes. In parentheses beside each report are the standard library's clocks.

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <chrono>
#include <ctime>
#include <functional>
#include <iostream>
#include <string_view>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

void Explain(const wchar_t* text) { CQMConsoleAPI::Log(L"\n== %s\n", text); }

void Work(Clock::duration time) {
    const auto start = Clock::now();
    while (Clock::now() - start < time) continue;
}

/// Runs a job and reports its wall-clock time, and the processor time of all threads of the process.
void Measure(const std::function<void()>& job) {
    const std::clock_t processorStart = std::clock();
    const auto start = Clock::now();
    job();
    const std::chrono::duration<double> seconds = Clock::now() - start;
    const double processorSeconds = static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC;
    CQMConsoleAPI::Log(L"    (steady_clock: %.5f sec, clock: %.5f sec)\n", seconds.count(), processorSeconds);
}

void TimeIntervals() {
    Explain(L"A stopwatch runs from its construction, here with a title. It reports 50 ms to the console:");
    CQMTimer timer("Stopwatch");
    Measure([&] {
        Work(50ms);
        timer.Stop(false);
    });
    timer.LogLapsedTime(false, false, L"%d of %s", 50, L"100 parts");

    Explain(L"Started again, it reports 30 ms to the debugger:");
    Measure([&] {
        timer.Start(true, false);
        Work(30ms);
        timer.Stop(false);
    });
    timer.TraceLapsedTime(false, false, L"the rest");
}

void MarkScopes() {
    Explain(L"A marker reports the start and the end of a scope, here with the time of a wait of 120 ms:");
    Measure([] {
        const CQMDebugTraceStartEndMarker marker(L"Wait", true, true, false);
        std::this_thread::sleep_for(120ms);
    });

    Explain(L"The processor time of two threads that work for 150 ms is up to 300 ms, here to the debugger:");
    Measure([] {
        const CQMDebugTraceStartEndMarker marker(L"Work", true, false, true);
        std::thread other(Work, 150ms);
        Work(150ms);
        other.join();
    });
}

/// Counts frames of 10 ms until there is a rate.
void CountFrames(eQMFPSType mode) {
    CQMFPSCounter counter(mode);
    counter.Reset();  // removes the empty frames that measured the counter's own cost
    Measure([&] {
        while (counter.GetFPS() == 0) {
            counter.Start();
            Work(10ms);
            counter.End();
        }
    });
    const auto frames = static_cast<unsigned>(counter.GetTotalFrame());
    CQMConsoleAPI::Log(L"%.3f frames per second, after %u frames\n", counter.GetFPS(), frames);
}

}  // namespace

int main(int argc, char* argv[]) {
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
    Explain(L"A frame counter in instant mode computes a rate for each frame, here of 10 ms:");
    CountFrames(eQMFPSType_Instant);
    Explain(
        L"In average mode each frame measures from the start of its period. A period ends when these\n"
        L"   durations add up to a second, with frames of 10 ms after about 14:");
    CountFrames(eQMFPSType_Average);
}
