// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CString.h"
#include "qmUtility/framework/ExtensionModule.h"

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

#include <vector>

namespace {

using Modules = std::vector<HINSTANCE>;

#if defined(_WIN32)
HINSTANCE Open() { return LoadLibraryA(LIBRARY); }
bool Close(HINSTANCE library) { return FreeLibrary(library) != 0; }
void* Find(HINSTANCE library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(library, name));
}
HINSTANCE Base(HINSTANCE library, const void* /*symbol*/) { return library; }
#else
HINSTANCE Open() { return dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL); }
bool Close(HINSTANCE library) { return dlclose(library) == 0; }
void* Find(HINSTANCE library, const char* name) { return dlsym(library, name); }
HINSTANCE Base(HINSTANCE /*library*/, const void* symbol)
{
    Dl_info info{};
    dladdr(symbol, &info);
    return info.dli_fbase;
}
#endif

TEST(Module, IsRegisteredWhileItIsLoaded)
{
    for (int round = 0; round != 2; ++round) {
        ASSERT_EQ(framework::ExtensionModules(), Modules());
        auto* const library = Open();
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(Open(), library);

        auto* const isMonitoring =
            reinterpret_cast<bool*>(Find(library, "_ZN15CQMFileCheckAPI10m_bMonitorE"));
        auto* const addWatchDog =
            reinterpret_cast<bool (*)(CString)>(Find(library, "_ZN15CQMFileCheckAPI11AddWatchDogE7CString"));
        ASSERT_TRUE(isMonitoring != nullptr && addWatchDog != nullptr);
        EXPECT_EQ(framework::ExtensionModules(), Modules{Base(library, isMonitoring)});
        EXPECT_EQ(Find(library, "DllMain"), nullptr);
        EXPECT_FALSE(*isMonitoring);
        *isMonitoring = addWatchDog(L"/no such file"); // true, and forgotten when the library is unloaded

        EXPECT_TRUE(Close(library));
        EXPECT_EQ(framework::ExtensionModules().size(), 1) << "it was opened twice";
        EXPECT_TRUE(Close(library)); // unloads it, which ends the registration
    }
    EXPECT_EQ(framework::ExtensionModules(), Modules());
}

} // namespace
