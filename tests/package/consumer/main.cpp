// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <cassert>
#include <chrono>
#include <cstdint>

// The functions that the library calls in place of the modules'.

static int calls = 0;
void CQMConsoleAPI::Log(const wchar_t*, ...) { ++calls; }
std::uint64_t cpu::GetTick() { return std::uint64_t{1000} * static_cast<unsigned>(++calls); }
std::uint64_t cpu::GetClockSpeed() { return static_cast<unsigned>(++calls); }
void* CQMProcess::GetHandle() { return ++calls, nullptr; }

int main() {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    CQMTimer timer;
    timer.Start(true, true);
    for (const auto inner = Clock::now(); Clock::now() - inner < std::chrono::milliseconds(20);) continue;
    const double seconds = timer.GetLapsedTime(true);
    assert(seconds > 0.0199 && seconds < std::chrono::duration<double>(Clock::now() - start).count());
    timer.TraceLapsedTime(false, false, L"debugger line");
    assert(CQMFileCheck(L"none").CheckDeleted() && INIParser::GetSectionNames("none").empty());
    timer.LogLapsedTime(false, false, L"log");
    assert(calls == 1);
    CQMDebugTraceStartEndMarker(L"marker", true, true, true);  // two lines, and the processor time twice
    assert(calls == 5);
    CQMFPSCounter counter;
    counter.Start();
    counter.End();
    assert(calls > 7);
}
