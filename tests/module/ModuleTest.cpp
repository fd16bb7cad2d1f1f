#include "platform/CString.h"
#include "platform/ExtensionModule.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <vector>

namespace {

using Modules = std::vector<HINSTANCE>;

template <class Function>
Function* Find(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

TEST(Module, IsRegisteredWhileItIsLoaded)
{
    for (int round = 0; round != 3; ++round) {
        ASSERT_EQ(platform::ExtensionModules(), Modules());
        void* const library = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL), library);

        auto* const isMonitoring = Find<bool>(library, "_ZN15CQMFileCheckAPI10m_bMonitorE");
        ASSERT_NE(isMonitoring, nullptr);
        Dl_info info{};
        dladdr(isMonitoring, &info);
        EXPECT_EQ(platform::ExtensionModules(), Modules{info.dli_fbase});
        EXPECT_EQ(dlsym(library, "DllMain"), nullptr);

        // What the list holds goes with the library; the next round's is a new one.
        EXPECT_FALSE(*isMonitoring);
        *isMonitoring = true;
        EXPECT_FALSE(Find<bool()>(library, "_ZN15CQMFileCheckAPI5CheckEv")());
        EXPECT_TRUE(
            Find<bool(CString)>(library, "_ZN15CQMFileCheckAPI11AddWatchDogE7CString")(L"/no such file"));

        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(platform::ExtensionModules().size(), 1) << "it was opened twice";
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
    EXPECT_EQ(platform::ExtensionModules(), Modules());
}

TEST(Module, TheListMayBeUsedFromAnyThread)
{
    static AFX_EXTENSION_MODULE states[4];
    std::vector<std::thread> threads;
    for (auto& state : states)
        threads.emplace_back([&state] {
            for (int i = 0; i != 100; ++i) {
                EXPECT_TRUE(AfxInitExtensionModule(state, &state));
                new CDynLinkLibrary(state);
                new CDynLinkLibrary(state);
                const Modules modules = platform::ExtensionModules();
                EXPECT_EQ(std::count(modules.begin(), modules.end(), &state), 2);
                AfxTermExtensionModule(state);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(platform::ExtensionModules(), Modules());
}

} // namespace
