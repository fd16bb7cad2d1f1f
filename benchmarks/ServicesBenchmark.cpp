// SPDX-License-Identifier: MIT
// The services other than INI files beside lower bounds of their work. Names are job/library.

#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// Registers a case that calls a function while standard output goes nowhere.
template <class Function>
auto* Register(const char* name, Function function) {
    return benchmark::RegisterBenchmark(name, [function](benchmark::State& state) {
        const int output = dup(STDOUT_FILENO);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        for ([[maybe_unused]] auto _ : state) function();
        dup2(output, STDOUT_FILENO);
        close(nowhere);
        close(output);
    });
}

long long Count() {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

void ReadTicks(int count) {
    for (int i = 0; i != count; ++i) benchmark::DoNotOptimize(cpu::GetTick());
}

template <class... Arguments>
void FormatAndWrite(fmt::format_string<const Arguments&...> format, const Arguments&... arguments) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), format, arguments...);
    benchmark::DoNotOptimize(write(STDOUT_FILENO, line.data(), line.size()));
}

const char* const Name = "Loading the project";
const wchar_t* const WideName = L"Loading the project";
CQMTimer stopwatch;
CQMFPSCounter instantFrames(eQMFPSType_Instant);
CQMFPSCounter averageFrames(eQMFPSType_Average);

const auto Folder = std::filesystem::temp_directory_path() / "qmUtility-filecheck-benchmark";
std::vector<std::string> paths;

void WatchFiles(const benchmark::State&) {
    std::filesystem::create_directory(Folder);
    for (int i = 0; i != 10'000; ++i) {
        const auto path = Folder / ("settings-of-module-" + std::to_string(i) + ".ini");
        std::ofstream(path) << i;
        paths.push_back(path);
        CQMFileCheckAPI::AddWatchDog(path.wstring().c_str());
    }
    CQMFileCheckAPI::Enable(true);
}

void RemoveFiles(const benchmark::State&) {
    CQMFileCheckAPI::Initialize();
    paths.clear();
    std::filesystem::remove_all(Folder);
}

[[maybe_unused]] const bool IsRegistered = [] {
    Register("stopwatch, start and read/qmUtility", [] {
        stopwatch.Start(false, false);
        benchmark::DoNotOptimize(stopwatch.GetLapsedTime(true));
    });
    Register("stopwatch, start and read/two counter reads", [] {
        const long long start = Count();
        benchmark::DoNotOptimize(Count() - start);
    });

    Register("stopwatch, log line/qmUtility", [] { stopwatch.LogLapsedTime(true, true, L"%s", WideName); });
    Register("stopwatch, log line/fmt and one write",
             [] { FormatAndWrite(">>> {} : {:.5f} sec\n", Name, 1e-7); });

    Register("line to the console/qmUtility",
             [] { CQMConsoleAPI::Log(L"%s - End : %.2f sec\n", WideName, 1.25); });
    Register("line to the console/fmt and one write",
             [] { FormatAndWrite("{} - End : {:.2f} sec\n", Name, 1.25); });

    Register("trace marker/qmUtility",
             [] { const CQMDebugTraceStartEndMarker marker(WideName, true, true, false); });
    Register("trace marker/fmt and one write for each line, two counter reads", [] {
        FormatAndWrite("{} - Start\n", Name);
        const long long start = Count();
        FormatAndWrite("{} - End : {:.2f} sec\n", Name, static_cast<double>(Count() - start) / 1e9);
    });

    Register("frame, instant mode/qmUtility", [] {
        instantFrames.Start();
        instantFrames.End();
    });
    Register("frame, average mode/qmUtility", [] {
        averageFrames.Start();
        averageFrames.End();
    });
    Register("frame, instant mode/two tick reads", [] { ReadTicks(2); });
    Register("frame, average mode/two tick reads", [] { ReadTicks(2); });
    Register("frame counter, construct/qmUtility", [] { const CQMFPSCounter counter; });
    Register("frame counter, construct/the 2,002 tick reads of its calibration", [] { ReadTicks(2002); });

    auto* const check = Register("check of 10,000 files/qmUtility", [] {
        if (CQMFileCheckAPI::Check()) throw std::runtime_error("a file was modified");
    });
    auto* const statusCalls = Register("check of 10,000 files/a status call for each", [] {
        struct stat status;
        for (const std::string& path : paths) benchmark::DoNotOptimize(stat(path.c_str(), &status));
    });
    for (auto* const benchmark : {check, statusCalls}) benchmark->Setup(WatchFiles)->Teardown(RemoveFiles);
    return true;
}();

}  // namespace
