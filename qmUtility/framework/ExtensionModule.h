#pragma once

/// @file
/// The framework's list of extension modules, the libraries that serve it with classes, as much as is used of
/// it; see `CString.h` for when it is the framework's own.
///
/// Include it from source files only; see `platform/Kernel.h`. The list may be used from any thread, since
/// libraries are loaded on any.

#include "qmUtility/platform/Kernel.h"

#if defined(QMUTILITY_FRAMEWORK)
#include <afxdllx.h>
#else

#include "qmUtility/Export.h"

#include <vector>

/// A module's own place for what is known of it: an object of static storage, all zero at first.
struct AFX_EXTENSION_MODULE
{
    BOOL bInitialized;
    HINSTANCE hModule;
};

/// Fills in the module's structure.
/// @return nonzero on success, which is always.
QMFRAMEWORK_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module);

/// Takes the module's entries off the list and ends their lives.
QMFRAMEWORK_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state);

/// A module's entry in the list of the process. It is made with `new`, and the list owns it.
class QMFRAMEWORK_API CDynLinkLibrary
{
public:
    /// Enters the list.
    /// @param state filled in by `AfxInitExtensionModule`.
    explicit CDynLinkLibrary(const AFX_EXTENSION_MODULE& state);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
    ~CDynLinkLibrary() = default;

    HINSTANCE m_hModule;
};

namespace framework {

/// @return the module of each entry of the list, in the order entered.
QMFRAMEWORK_API std::vector<HINSTANCE> ExtensionModules();

} // namespace framework

#endif
