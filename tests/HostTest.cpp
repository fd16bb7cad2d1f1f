#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "tests/support/Capture.h"

#include <chrono>

namespace {

TEST(Console, ALineIsOneWriteOfUtf8AndTheStopwatchsTitleNarrow)
{
    Capture console(STDOUT_FILENO);
    CQMConsoleAPI::Log(L"%s - Start\n", L"Gr\u00F6\u00DFe \u20AC");
    CQMConsoleAPI::Log(L"%s|%.5lf sec\n", L"x", 0.25);
    CQMConsoleAPI::Log(L"%s\n", std::wstring(5000, L'y').c_str());
    CQMConsoleAPI::Log(L"no argument, 50%");
    CQMConsoleAPI::Log(L"");
    CQMConsoleAPI::Log(nullptr);
    for (const std::string title : {"", "T", "Title", "caf\u00E9", "caf\xE9"}) {
        // Of just its size, so that the address sanitizer sees any read past the end.
        const std::vector<char> exact(title.c_str(), title.c_str() + title.size() + 1);
        CQMConsoleAPI::Log(L"\n%s\n", exact.data());
    }
    CQMConsoleAPI::Log(L"\n%ls\n", L"wide");
    CQMConsoleAPI::Log(L"\n%s!\n", L"wide");
    EXPECT_EQ(console.Writes(), (std::vector<std::string>{
                                    "Gr\u00F6\u00DFe \u20AC - Start\n", "x|0.25000 sec\n",
                                    std::string(5000, 'y') + '\n', "no argument, 50%", "\n\n", "\nT\n",
                                    "\nTitle\n", "\ncaf\u00E9\n", "\ncaf\u00E9\n", "\nwide\n", "\nwide!\n"}));
}

TEST(SystemInfo, TicksRunAtTheRateTold)
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
    const std::chrono::duration<double> told(static_cast<double>(cpu::GetTick() - first) / rate);
    EXPECT_GT(told, (innerEnd - innerStart) * 0.998);
    EXPECT_LT(told, (Clock::now() - outerStart) * 1.002);
}

TEST(CommonBase, TheHandleIsGoodForProcessTimes)
{
    FILETIME time{};
    EXPECT_NE(GetProcessTimes(CQMProcess::GetHandle(), &time, &time, &time, &time), 0);
}

} // namespace
