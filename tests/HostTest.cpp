// SPDX-License-Identifier: MIT
#include "qmUtility/framework/ExtensionModule.h"
#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/host/qmSystemInfo.h"
#include "qmUtility/platform/Kernel.h"
#include "tests/support/Capture.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#include <link.h>
#endif

#include <algorithm>
#include <bit>
#include <chrono>
#include <future>

namespace {

TEST(Console, CallsWriteUtf8OnceEachAndTitlesAreNarrow) {
    Capture console(STDOUT_FILENO);
    CQMConsoleAPI::Log(L"%s - Start %.2lf\n", L"Gr\u00F6\u00DFe \u20AC", 0.25);
    CQMConsoleAPI::Log(nullptr);
    for (const char* const title : {"", "T", "caf\xE9"}) CQMConsoleAPI::Log(L"\n%s\n", title);
    CQMConsoleAPI::Log(L"\n%ls\n", L"wide");
    EXPECT_EQ(console.Writes(), (std::vector<std::string>{"Gr\u00F6\u00DFe \u20AC - Start 0.25\n", "\n\n",
                                                          "\nT\n", "\ncaf\u00E9\n", "\nwide\n"}));
}

TEST(SystemInfo, TicksRunAtTheReportedRate) {
    using Clock = std::chrono::steady_clock;
    const auto rate = static_cast<double>(cpu::GetClockSpeed());

    // However the thread is interrupted, the ticks cover the inner time span and lie within the outer one.
    const auto outerStart = Clock::now();
    const std::uint64_t first = cpu::GetTick();
    const auto innerStart = Clock::now();
    while (Clock::now() - innerStart < std::chrono::milliseconds(20)) continue;
    const auto innerEnd = Clock::now();
    const std::chrono::duration<double> measured(static_cast<double>(cpu::GetTick() - first) / rate);
    EXPECT_GT(measured, (innerEnd - innerStart) * 0.998);
    EXPECT_LT(measured, (Clock::now() - outerStart) * 1.002);
}

TEST(CommonBase, TheHandleIsThisProcess) { EXPECT_EQ(CQMProcess::GetHandle(), GetCurrentProcess()); }

#if defined(_WIN32)
HINSTANCE Base(HINSTANCE library) { return library; }
#else
HINSTANCE LoadLibraryA(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
bool FreeLibrary(HINSTANCE library) { return dlclose(library) == 0; }
HINSTANCE Base(HINSTANCE library) {
    return std::bit_cast<HINSTANCE>(static_cast<link_map*>(library)->l_addr);
}
#endif

TEST(Module, IsRegisteredWhileItIsLoaded) {
    for (int round = 0; round != 2; ++round) {
        auto* const library = LoadLibraryA(LIBRARY);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(ExtensionModules(), std::vector{Base(library)});
        EXPECT_TRUE(FreeLibrary(library) && ExtensionModules().empty());  // no longer loaded
    }
}

TEST(Module, TheListIsUsableFromEachThread) {  // the thread sanitizer finds what the results do not show
    const auto use = [] {
        AFX_EXTENSION_MODULE state{};
        auto* const instance = reinterpret_cast<HINSTANCE>(&state);
        for (int i = 0; i != 100; ++i) {
            EXPECT_NE(AfxInitExtensionModule(state, instance), 0);
            new CDynLinkLibrary(state);
            EXPECT_EQ(std::ranges::count(ExtensionModules(), instance), 1);
            AfxTermExtensionModule(state);
        }
    };
    const auto other = std::async(std::launch::async, use);  // its destructor waits
    use();
}

}  // namespace
