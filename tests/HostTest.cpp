// SPDX-License-Identifier: MIT
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "tests/support/Capture.h"

#include <chrono>

namespace {

TEST(Console, CallsWriteUtf8OnceEachAndTitlesAreNarrow)
{
    Capture console(STDOUT_FILENO);
    CQMConsoleAPI::Log(L"%s - Start %.2lf\n", L"Gr\u00F6\u00DFe \u20AC", 0.25);
    CQMConsoleAPI::Log(nullptr);
    for (const std::string title : {"", "T", "caf\u00E9", "caf\xE9"}) {
        // Of just its size, so that the address sanitizer sees any read past the end.
        const std::vector<char> exact(title.c_str(), title.c_str() + title.size() + 1);
        CQMConsoleAPI::Log(L"\n%s\n", exact.data());
    }
    CQMConsoleAPI::Log(L"\n%ls\n", L"wide");
    EXPECT_EQ(console.Writes(),
              (std::vector<std::string>{"Gr\u00F6\u00DFe \u20AC - Start 0.25\n", "\n\n", "\nT\n",
                                        "\ncaf\u00E9\n", "\ncaf\u00E9\n", "\nwide\n"}));
}

TEST(SystemInfo, TicksRunAtTheReportedRate)
{
    using Clock = std::chrono::steady_clock;
    const auto rate = static_cast<double>(cpu::GetClockSpeed());
    EXPECT_EQ(static_cast<double>(cpu::GetClockSpeed()), rate);

    // However the thread is interrupted, the ticks cover the inner time span and lie within the outer one.
    const auto outerStart = Clock::now();
    const std::uint64_t first = cpu::GetTick();
    const auto innerStart = Clock::now();
    while (Clock::now() - innerStart < std::chrono::milliseconds(20))
        continue;
    const auto innerEnd = Clock::now();
    const std::chrono::duration<double> measured(static_cast<double>(cpu::GetTick() - first) / rate);
    EXPECT_GT(measured, (innerEnd - innerStart) * 0.998);
    EXPECT_LT(measured, (Clock::now() - outerStart) * 1.002);
}

TEST(CommonBase, TheHandleIsThisProcess) { EXPECT_EQ(CQMProcess::GetHandle(), GetCurrentProcess()); }

} // namespace
