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

TEST(Module, IsRegisteredWhileItIsLoaded)
{
    for (int round = 0; round != 2; ++round) {
        ASSERT_EQ(framework::ExtensionModules(), Modules());
        auto* const library = Open();
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(Open(), library);

        auto* const isMonitoring = static_cast<bool*>(Symbol(library, "_ZN15CQMFileCheckAPI10m_bMonitorE"));
        auto* const addWatchDog = reinterpret_cast<bool (*)(CString)>(
            Symbol(library, "_ZN15CQMFileCheckAPI11AddWatchDogE7CString"));
        ASSERT_TRUE(isMonitoring != nullptr && addWatchDog != nullptr);
        EXPECT_EQ(framework::ExtensionModules(), Modules{Base(library, isMonitoring)});
        EXPECT_EQ(Symbol(library, "DllMain"), nullptr);
        EXPECT_FALSE(*isMonitoring);
        *isMonitoring = addWatchDog(L"/no such file"); // true, and forgotten when the library is unloaded

        EXPECT_TRUE(Close(library));
        EXPECT_EQ(framework::ExtensionModules().size(), 1) << "it was opened twice";
        EXPECT_TRUE(Close(library));
        EXPECT_FALSE(IsLoaded());
    }
    EXPECT_EQ(framework::ExtensionModules(), Modules());
}

} // namespace
