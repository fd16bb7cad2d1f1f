// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's process-wide list of extension modules (libraries that extend it): the subset used here,
/// or the framework's own list (see `CString.h`). Include it in source files only (see `platform/Kernel.h`).
/// Any thread may use the list, because any thread may load libraries.

#include "qmUtility/platform/Kernel.h"

#if defined(QMUTILITY_FRAMEWORK)
#include <afxdllx.h>
#else

#include "qmUtility/Export.h"

#include <vector>

inline namespace qmFramework {

/// State of an extension module: a zero-initialized static object of the module.
struct AFX_EXTENSION_MODULE {
    BOOL bInitialized;  ///< nonzero after `AfxInitExtensionModule`
    HINSTANCE hModule;  ///< base address of the module
};

/// Initializes the state of a module.
/// @return nonzero: it always succeeds.
QMFRAMEWORK_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module);

/// Removes the module's entries from the list, deletes them and resets the state.
QMFRAMEWORK_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state);

/// A module's entry in the list. Create it with `new`; the list owns it.
class QMFRAMEWORK_API CDynLinkLibrary {
public:
    /// Adds the entry to the list.
    /// @param state initialized by `AfxInitExtensionModule`.
    explicit CDynLinkLibrary(const AFX_EXTENSION_MODULE& state);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

    HINSTANCE m_hModule;  ///< base address of the module
};

/// Returns the list, in place of the framework's own readers: lookups of resources and classes.
/// @return the module of each entry, in the order of registration.
QMFRAMEWORK_API std::vector<HINSTANCE> ExtensionModules();

}  // namespace qmFramework

#endif
