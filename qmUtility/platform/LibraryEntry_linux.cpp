/// @file
/// Calls the entry point of the library that this source is built into, as the loader does on Windows.

#include "qmUtility/platform/Kernel.h"

#include <dlfcn.h>

namespace {

class LibraryEntry
{
public:
    LibraryEntry() { DllMain(Base(), DLL_PROCESS_ATTACH, nullptr); }
    ~LibraryEntry() { DllMain(Base(), DLL_PROCESS_DETACH, nullptr); }
    LibraryEntry(const LibraryEntry&) = delete;
    LibraryEntry& operator=(const LibraryEntry&) = delete;

private:
    static HINSTANCE Base()
    {
        Dl_info library{};
        dladdr(reinterpret_cast<const void*>(&DllMain), &library);
        return library.dli_fbase;
    }
};

// An object rather than a pair of functions called at load and unload: at the end of the process those of the
// latter kind run after all static objects are destroyed, in every library.
[[gnu::init_priority(101)]] const LibraryEntry libraryEntry; // first of the library's objects

} // namespace
