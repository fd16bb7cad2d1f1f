#include "benchmarks/MedianReporter.h"
#include "qmUtility/filecheck/QMFileCheckAPI.h"

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> paths;

/// Makes the files and has them watched.
void WatchFiles(const std::filesystem::path& folder)
{
    std::filesystem::create_directory(folder);
    for (int i = 0; i != 10'000; ++i) {
        const auto path = folder / ("settings-of-module-" + std::to_string(i) + ".ini");
        std::ofstream(path) << i;
        paths.push_back(path.string());
        CQMFileCheckAPI::AddWatchDog(path.wstring().c_str());
    }
    CQMFileCheckAPI::Enable(true);
}

void StatusCalls(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        for (const std::string& path : paths) {
            struct stat status;
            benchmark::DoNotOptimize(stat(path.c_str(), &status));
        }
}
BENCHMARK(StatusCalls)->Unit(benchmark::kMillisecond);

void Check(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        if (CQMFileCheckAPI::Check())
            state.SkipWithError("a file was modified");
}
BENCHMARK(Check)->Unit(benchmark::kMillisecond);

void PrintTable(const MedianReporter& reporter)
{
    const double time = reporter.Median("Check");
    const double unit = reporter.Median("StatusCalls");
    std::printf("\n| what takes how long | ms : ms | ratio | at most |\n|---|---|---|---|\n");
    if (time > 0 && unit > 0)
        std::printf("| Check over 10,000 files : a status call for each | %.2f : %.2f | %.2f | 1.2 |\n", time,
                    unit, time / unit);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const auto folder = std::filesystem::temp_directory_path() / "qmUtility-filecheck-benchmark";
    WatchFiles(folder);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::filesystem::remove_all(folder);
    PrintTable(reporter);
    return 0;
}
