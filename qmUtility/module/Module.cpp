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
        new CDynLinkLibrary(extension); // which the framework owns
        break;
    case DLL_PROCESS_DETACH:
        AfxTermExtensionModule(extension);
        break;
    default: // a thread that begins or ends is nothing to the library
        break;
    }
    return 1;
}
