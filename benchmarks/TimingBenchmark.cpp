#include "benchmarks/MedianReporter.h"
#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cwchar>

/// The console that the library comes with; in this program `CQMConsoleAPI` is one that discards.
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
BENCHMARK(TwoCounts);

void Stopwatch(benchmark::State& state)
{
    CQMTimer timer;
    for ([[maybe_unused]] auto _ : state) {
        timer.Start(false, false);
        benchmark::DoNotOptimize(timer.GetLapsedTime(true));
    }
}
BENCHMARK(Stopwatch);

void TwoTicks(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(cpu::GetTick());
        benchmark::DoNotOptimize(cpu::GetTick());
    }
}
BENCHMARK(TwoTicks);

void Frame(benchmark::State& state, eQMFPSType type)
{
    CQMFPSCounter counter(type);
    const auto frame = [&counter] {
        counter.Start();
        counter.End();
    };
    for (int i = 0; i != 10'000; ++i) // so that the ring of durations is full, as it mostly is
        frame();
    for ([[maybe_unused]] auto _ : state)
        frame();
}
BENCHMARK_CAPTURE(Frame, instant, eQMFPSType_Instant);
BENCHMARK_CAPTURE(Frame, average, eQMFPSType_Average);

void FrameCounter(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        const CQMFPSCounter counter;
}
BENCHMARK(FrameCounter);

const wchar_t* const name = L"Loading the project";

void MarkersParts(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        const CQMTimer timer;
        CString line;
        line.Format(L"%s - Start\n", name);
        line.Format(L"%s - End : %.2f sec\n", name, 1.25);
        benchmark::DoNotOptimize(line.GetString());
    }
}
BENCHMARK(MarkersParts);

void Marker(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        const CQMDebugTraceStartEndMarker marker(name, true, true, false);
}
BENCHMARK(Marker);

void FputwsAndFlush(benchmark::State& state)
{
    std::FILE* const file = std::fopen("/dev/null", "we");
    for ([[maybe_unused]] auto _ : state) {
        (void)std::fputws(L"Loading the project - End : 1.25 sec\n", file);
        (void)std::fflush(file);
    }
    (void)std::fclose(file);
}
BENCHMARK(FputwsAndFlush);

void Console(benchmark::State& state)
{
    const int original = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    for ([[maybe_unused]] auto _ : state)
        DefaultConsole::Log(L"%s - End : %.2f sec\n", name, 1.25);
    dup2(original, STDOUT_FILENO);
    close(nowhere);
    close(original);
}
BENCHMARK(Console);

void PrintTable(const MedianReporter& reporter)
{
    struct
    {
        const char* What;
        const char* Ours;
        const char* Limit;
        double Allowed;
    } const rows[] = {
        {"stopwatch, Start and GetLapsedTime : two counter reads", "Stopwatch", "TwoCounts", 1.3},
        {"frame of the instant kind : two tick reads", "Frame/instant", "TwoTicks", 6},
        {"frame of the average kind : two tick reads", "Frame/average", "TwoTicks", 6},
        {"frame counter, constructed : frame of the instant kind", "FrameCounter", "Frame/instant", 3000},
        {"marker : formatting its lines and constructing a stopwatch", "Marker", "MarkersParts", 3},
        {"line to the default console : fputws and a flush", "Console", "FputwsAndFlush", 2},
    };
    std::printf("\n| what takes how long | ns : ns | ratio | at most |\n|---|---|---|---|\n");
    for (const auto& [what, ours, limit, allowed] : rows) {
        const double time = reporter.Median(ours);
        const double unit = reporter.Median(limit);
        if (time > 0 && unit > 0)
            std::printf("| %s | %.1f : %.1f | %.2f | %g |\n", what, time, unit, time / unit, allowed);
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    PrintTable(reporter);
    return 0;
}
