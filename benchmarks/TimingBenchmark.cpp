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
#include <fmt/format.h>
#include <unistd.h>

#include <iterator>

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

void Frame(benchmark::State& state, eQMFPSType type)
{
    CQMFPSCounter counter(type);
    for ([[maybe_unused]] auto _ : state) {
        counter.Start();
        counter.End();
    }
}
BENCHMARK_CAPTURE(Frame, instant, eQMFPSType_Instant)->Name("frame, instant mode/qmUtility");
BENCHMARK_CAPTURE(Frame, average, eQMFPSType_Average)->Name("frame, average mode/qmUtility");

void CalibrationTicks(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        for (int i = 0; i != 2002; ++i)
            benchmark::DoNotOptimize(cpu::GetTick());
}
BENCHMARK(CalibrationTicks)->Name("frame counter, construct/the 2,002 tick reads of its calibration");

void FrameCounter(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        const CQMFPSCounter counter;
}
BENCHMARK(FrameCounter)->Name("frame counter, construct/qmUtility");

/// Standard output goes nowhere while it exists.
class Silence
{
public:
    Silence() : m_output(dup(STDOUT_FILENO))
    {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~Silence()
    {
        dup2(m_output, STDOUT_FILENO);
        close(m_output);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int m_output;
};

template <class... Arguments>
void FormatAndWrite(fmt::format_string<const Arguments&...> format, const Arguments&... arguments)
{
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), format, arguments...);
    benchmark::DoNotOptimize(write(STDOUT_FILENO, line.data(), line.size()));
}

const char* const Name = "Loading the project";
const wchar_t* const WideName = L"Loading the project";

void MarkersLines(benchmark::State& state)
{
    const Silence silence;
    for ([[maybe_unused]] auto _ : state) {
        FormatAndWrite("{} - Start\n", Name);
        const long long start = Count();
        FormatAndWrite("{} - End : {:.2f} sec\n", Name, static_cast<double>(Count() - start) / 1e9);
    }
}
BENCHMARK(MarkersLines)->Name("trace marker/fmt and one write for each line, two counter reads");

void Marker(benchmark::State& state)
{
    const Silence silence;
    for ([[maybe_unused]] auto _ : state)
        const CQMDebugTraceStartEndMarker marker(WideName, true, true, false);
}
BENCHMARK(Marker)->Name("trace marker/qmUtility");

void StopwatchLine(benchmark::State& state)
{
    const Silence silence;
    for ([[maybe_unused]] auto _ : state)
        FormatAndWrite(">>> {} : {:.5f} sec\n", Name, 1e-7);
}
BENCHMARK(StopwatchLine)->Name("stopwatch, log line/fmt and one write");

void StopwatchLog(benchmark::State& state)
{
    const Silence silence;
    CQMTimer timer;
    for ([[maybe_unused]] auto _ : state)
        timer.LogLapsedTime(true, true, L"%s", WideName);
}
BENCHMARK(StopwatchLog)->Name("stopwatch, log line/qmUtility");

void Line(benchmark::State& state)
{
    const Silence silence;
    for ([[maybe_unused]] auto _ : state)
        FormatAndWrite("{} - End : {:.2f} sec\n", Name, 1.25);
}
BENCHMARK(Line)->Name("line to the console/fmt and one write");

void Console(benchmark::State& state)
{
    const Silence silence;
    for ([[maybe_unused]] auto _ : state)
        CQMConsoleAPI::Log(L"%s - End : %.2f sec\n", WideName, 1.25);
}
BENCHMARK(Console)->Name("line to the console/qmUtility");

} // namespace
