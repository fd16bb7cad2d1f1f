// SPDX-License-Identifier: MIT
/// @file
/// The library's entry point: registers the library with the host's framework while it is loaded.

#include "qmUtility/framework/ExtensionModule.h"

static AFX_EXTENSION_MODULE extension;

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        if (!AfxInitExtensionModule(extension, library)) return 0;
        new CDynLinkLibrary(extension);  // owned by the framework
    } else if (reason == DLL_PROCESS_DETACH)
        AfxTermExtensionModule(extension);
    return 1;  // also when a thread starts or ends
}
