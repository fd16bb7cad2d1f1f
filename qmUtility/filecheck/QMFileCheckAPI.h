// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/framework/CArray.h"

/// The list of watched files of the process.
///
///     CQMFileCheckAPI::AddWatchDog(L"settings.ini");
///     CQMFileCheckAPI::Enable(true);
///     if (CQMFileCheckAPI::Check())       // a file has been modified since it was added
///         CQMFileCheckAPI::Initialize();  // empties the list, to fill it again
///
/// Changes are never acknowledged: `Check` stays true until the list is rebuilt, or the file gets its former
/// modification time back. `CQMFileCheck` documents paths and what counts as modified.
///
/// **Threads.** The list is unguarded: all calls belong to one thread.
///
/// **Failure.** The only exception is std::bad_alloc, from `AddWatchDog`. The list is unchanged then, but
/// references to elements of `m_files` may be invalid.
class QMUTILITY_API CQMFileCheckAPI {
public:
    /// Calls `Initialize`: constructing an instance empties the list of the whole process.
    CQMFileCheckAPI();

    CQMFileCheckAPI(const CQMFileCheckAPI&) = default;         ///< instances are stateless
    CQMFileCheckAPI& operator=(const CQMFileCheckAPI& other);  ///< instances are stateless
    ~CQMFileCheckAPI();  // NOLINT(performance-trivially-destructible): it is exported

    /// Turns monitoring off, empties the list and releases its storage.
    /// @return true.
    static bool Initialize();

    /// Reads the status of a file and appends the file to the list, even if it is already there.
    /// @param path of a file, which need not exist.
    /// @return true.
    static bool AddWatchDog(CString path);

    /// Checks every file of the list, unless monitoring is off.
    /// @return whether any file has been modified since it was added; false while monitoring is off.
    static bool Check();

    /// Turns monitoring on or off. `Check` reports modifications made while it was off once it is on again.
    static void Enable(bool bEnable);

    static CArray<CQMFileCheck, const CQMFileCheck&> m_files;  ///< files in the order added
    static bool m_bMonitor;                                    ///< whether monitoring is on; initially false
};
