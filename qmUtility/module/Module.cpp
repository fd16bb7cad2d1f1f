// SPDX-License-Identifier: MIT
/// @file
/// The library's entry point: registers the library with the host's framework while it is loaded.

#include "qmUtility/framework/ExtensionModule.h"

namespace {

AFX_EXTENSION_MODULE extension;

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* /*reserved*/)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        if (!AfxInitExtensionModule(extension, library))
            return 0;
        new CDynLinkLibrary(extension); // owned by the framework
        break;
    case DLL_PROCESS_DETACH:
        AfxTermExtensionModule(extension);
        break;
    default: // threads that start or end
        break;
    }
    return 1;
}
