// SPDX-License-Identifier: MIT
/// @file
/// Calls the entry point of the library that this source is linked into, as the loader does on Windows.

#include "qmUtility/platform/Kernel.h"

#include <dlfcn.h>

namespace {

struct LibraryEntry {
    LibraryEntry() { Call(DLL_PROCESS_ATTACH); }
    ~LibraryEntry() { Call(DLL_PROCESS_DETACH); }
    static void Call(DWORD reason) {
        Dl_info library{};
        dladdr(reinterpret_cast<const void*>(&DllMain), &library);
        DllMain(library.dli_fbase, reason, nullptr);
    }
};

// A static object, because functions with the attribute "destructor" run too late at the end of the process:
// after the static objects of all libraries are destroyed, the framework's list of modules included.
[[gnu::init_priority(101)]] const LibraryEntry Entry;  // constructed first in the library, destroyed last

}  // namespace
