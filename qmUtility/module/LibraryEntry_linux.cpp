// SPDX-License-Identifier: MIT
/// @file
/// Calls the entry point of the library that this source is linked into, as the loader does on Windows.

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

// A static object, because functions with the attribute "destructor" run too late at the end of the process:
// after the static objects of all libraries are destroyed, the framework's list of modules included.
[[gnu::init_priority(101)]] const LibraryEntry Entry; // constructed first in the library, destroyed last

} // namespace
