#include "qmUtility/framework/CString.h"
#include "qmUtility/framework/ExtensionModule.h"

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

#include <algorithm>
#include <thread>
#include <vector>

namespace {

using Modules = std::vector<HINSTANCE>;

#if defined(_WIN32)
HINSTANCE Open() { return LoadLibraryA(LIBRARY); }
bool Close(HINSTANCE library) { return FreeLibrary(library) != 0; }
bool IsLoaded() { return GetModuleHandleA(LIBRARY) != nullptr; }
void* Symbol(HINSTANCE library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(library, name));
}
HINSTANCE Base(HINSTANCE library, const void* /*symbol*/) { return library; }
#else
void* Open() { return dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL); }
bool Close(void* library) { return dlclose(library) == 0; }
bool IsLoaded() { return dlopen(LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr; }
void* Symbol(void* library, const char* name) { return dlsym(library, name); }
HINSTANCE Base(void* /*library*/, const void* symbol)
{
    Dl_info info{};
    dladdr(symbol, &info);
    return info.dli_fbase;
}
#endif

template <class Function>
Function* Find(decltype(Open()) library, const char* name)
{
    return reinterpret_cast<Function*>(Symbol(library, name));
}

TEST(Module, IsRegisteredWhileItIsLoaded)
{
    for (int round = 0; round != 3; ++round) {
        ASSERT_EQ(framework::ExtensionModules(), Modules());
        auto* const library = Open();
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(Open(), library);

        auto* const isMonitoring = Find<bool>(library, "_ZN15CQMFileCheckAPI10m_bMonitorE");
        ASSERT_NE(isMonitoring, nullptr);
        EXPECT_EQ(framework::ExtensionModules(), Modules{Base(library, isMonitoring)});
        EXPECT_EQ(Symbol(library, "DllMain"), nullptr);

        // What the list holds goes with the library; the next round's is a new one.
        EXPECT_FALSE(*isMonitoring);
        *isMonitoring = true;
        EXPECT_FALSE(Find<bool()>(library, "_ZN15CQMFileCheckAPI5CheckEv")());
        EXPECT_TRUE(
            Find<bool(CString)>(library, "_ZN15CQMFileCheckAPI11AddWatchDogE7CString")(L"/no such file"));

        EXPECT_TRUE(Close(library));
        EXPECT_EQ(framework::ExtensionModules().size(), 1) << "it was opened twice";
        EXPECT_TRUE(Close(library));
        EXPECT_FALSE(IsLoaded());
    }
    EXPECT_EQ(framework::ExtensionModules(), Modules());
}

TEST(Module, TheListMayBeUsedFromAnyThread)
{
    static AFX_EXTENSION_MODULE states[4];
    std::vector<std::thread> threads;
    for (auto& state : states)
        threads.emplace_back([&state] {
            auto* const base = reinterpret_cast<HINSTANCE>(&state);
            for (int i = 0; i != 100; ++i) {
                EXPECT_TRUE(AfxInitExtensionModule(state, base));
                new CDynLinkLibrary(state);
                const Modules modules = framework::ExtensionModules();
                EXPECT_EQ(std::count(modules.begin(), modules.end(), base), 1);
                AfxTermExtensionModule(state);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(framework::ExtensionModules(), Modules());
}

} // namespace
