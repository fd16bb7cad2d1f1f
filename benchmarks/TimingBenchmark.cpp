// SPDX-License-Identifier: MIT
/// @file
/// The timing classes beside lower bounds of their work. Names are job/library.

#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cwchar>

/// The default console, compiled under this name; `CQMConsoleAPI` discards in this program.
class DefaultConsole
{
public:
    static void Log(const wchar_t* format, ...);
};

void CQMConsoleAPI::Log(const wchar_t* /*format*/, ...) {}

namespace {

long long Count()
{
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

void TwoCounts(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        const long long start = Count();
        benchmark::DoNotOptimize(Count() - start);
    }
}
BENCHMARK(TwoCounts)->Name("stopwatch, start and read/two counter reads");

void Stopwatch(benchmark::State& state)
{
    CQMTimer timer;
    for ([[maybe_unused]] auto _ : state) {
        timer.Start(false, false);
        benchmark::DoNotOptimize(timer.GetLapsedTime(true));
    }
}
BENCHMARK(Stopwatch)->Name("stopwatch, start and read/qmUtility");

void TwoTicks(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(cpu::GetTick());
        benchmark::DoNotOptimize(cpu::GetTick());
    }
}
BENCHMARK(TwoTicks)->Name("frame, instant mode/two tick reads");
BENCHMARK(TwoTicks)->Name("frame, average mode/two tick reads");

void Frames(CQMFPSCounter& counter, int count)
{
    for (int i = 0; i != count; ++i) {
        counter.Start();
        counter.End();
    }
}

void Frame(benchmark::State& state, eQMFPSType type, int count)
{
    CQMFPSCounter counter(type);
    Frames(counter, 10'000); // fills the ring of durations, its usual state
    for ([[maybe_unused]] auto _ : state)
        Frames(counter, count);
}
BENCHMARK_CAPTURE(Frame, instant, eQMFPSType_Instant, 1)->Name("frame, instant mode/qmUtility");
BENCHMARK_CAPTURE(Frame, average, eQMFPSType_Average, 1)->Name("frame, average mode/qmUtility");
BENCHMARK_CAPTURE(Frame, calibration, eQMFPSType_Instant, 1001)
    ->Name("frame counter, construct/the 1,001 frames of its calibration");

void FrameCounter(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        const CQMFPSCounter counter;
}
BENCHMARK(FrameCounter)->Name("frame counter, construct/qmUtility");

const wchar_t* const Name = L"Loading the project";

void MarkersParts(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        const CQMTimer timer;
        CString line;
        line.Format(L"%s - Start\n", Name);
        line.Format(L"%s - End : %.2f sec\n", Name, 1.25);
        benchmark::DoNotOptimize(line.GetString());
    }
}
BENCHMARK(MarkersParts)->Name("trace marker/formatting its lines, constructing a stopwatch");

void Marker(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        const CQMDebugTraceStartEndMarker marker(Name, true, true, false);
}
BENCHMARK(Marker)->Name("trace marker/qmUtility");

void FputwsAndFlush(benchmark::State& state)
{
    std::FILE* const file = std::fopen("/dev/null", "we");
    for ([[maybe_unused]] auto _ : state) {
        (void)std::fputws(L"Loading the project - End : 1.25 sec\n", file);
        (void)std::fflush(file);
    }
    (void)std::fclose(file);
}
BENCHMARK(FputwsAndFlush)->Name("line to the console/fputws and fflush");

void Console(benchmark::State& state)
{
    const int original = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    for ([[maybe_unused]] auto _ : state)
        DefaultConsole::Log(L"%s - End : %.2f sec\n", Name, 1.25);
    dup2(original, STDOUT_FILENO);
    close(nowhere);
    close(original);
}
BENCHMARK(Console)->Name("line to the console/qmUtility");

} // namespace
