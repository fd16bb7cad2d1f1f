#include "host/qmCommonBase.h"
#include "host/qmConsole.h"
#include "host/qmSystemInfo.h"
#include "timing/QMDebugTraceStartEndMarker.h"
#include "timing/QMFPSCounter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring calls;

TEST(Override, TheExecutablesHostModulesTakePrecedence)
{
    {
        const CQMDebugTraceStartEndMarker marker(L"name", true, true, true);
    }
    EXPECT_EQ(calls, L"%s - Start\nhandle\nhandle\nname - End : 0.00 sec (CPU)\n");
    EXPECT_EQ(CQMFPSCounter().GetTickPeriod(), 4321);
    EXPECT_EQ(CQMFPSCounter().GetTickTolerance(), 7);
}

} // namespace

// NOLINTNEXTLINE(cert-dcl50-cpp): the interface
void CQMConsoleAPI::Log(const wchar_t* format, ...) { calls += format; }

void* CQMProcess::GetHandle()
{
    calls += L"handle\n";
    return nullptr; // of no process, so that there are no times
}

std::uint64_t cpu::GetTick()
{
    static std::uint64_t tick = 0;
    return tick += 7;
}

std::uint64_t cpu::GetClockSpeed() { return 4321; }
