// SPDX-License-Identifier: MIT
/// @file
/// The check of many files, beside one status call a file. Names are job/library.

#include "qmUtility/filecheck/QMFileCheckAPI.h"

#include <benchmark/benchmark.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

/// Watched files that exist until the program ends.
class WatchedFiles
{
public:
    std::vector<std::string> Paths;

    WatchedFiles()
    {
        std::filesystem::create_directory(m_folder);
        for (int i = 0; i != 10'000; ++i) {
            const auto path = m_folder / ("settings-of-module-" + std::to_string(i) + ".ini");
            std::ofstream(path) << i;
            Paths.push_back(path.string());
            CQMFileCheckAPI::AddWatchDog(path.wstring().c_str());
        }
        CQMFileCheckAPI::Enable(true);
    }

    WatchedFiles(const WatchedFiles&) = delete;
    WatchedFiles& operator=(const WatchedFiles&) = delete;
    ~WatchedFiles() { std::filesystem::remove_all(m_folder); }

private:
    std::filesystem::path m_folder = std::filesystem::temp_directory_path() / "qmUtility-filecheck-benchmark";
};

const WatchedFiles& Files()
{
    static const WatchedFiles files;
    return files;
}

void StatusCalls(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state)
        for (const std::string& path : Files().Paths) {
            struct stat status;
            benchmark::DoNotOptimize(stat(path.c_str(), &status));
        }
}
BENCHMARK(StatusCalls)->Name("check of 10,000 files/a status call for each")->Unit(benchmark::kMillisecond);

void Check(benchmark::State& state)
{
    Files();
    for ([[maybe_unused]] auto _ : state)
        if (CQMFileCheckAPI::Check())
            state.SkipWithError("a file was modified");
}
BENCHMARK(Check)->Name("check of 10,000 files/qmUtility")->Unit(benchmark::kMillisecond);

} // namespace
