#pragma once

/// @file
/// The process-wide list of files that are watched for modification.

#include "qmUtility/Export.h"
#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/framework/CArray.h"
#include "qmUtility/framework/CString.h"

/// Files are added with `AddWatchDog`, `Enable(true)` turns monitoring on, and `Check` tells, each time it is
/// called, whether any of the files has been modified since it was added. See `CQMFileCheck` for paths and
/// for what counts as modified.
///
/// A modification is never acknowledged: from the first one on, `Check` answers true until `Initialize`
/// empties the list and the files are added again (or the file's time is set back to what it was).
///
/// **Threads.** There is one list in the process and nothing guards it: all calls belong to one thread.
///
/// **Failure.** Nothing is reported but running out of memory, as std::bad_alloc, from `AddWatchDog` and
/// `Check`. The list is then as it was; references to elements of `m_files` may have ended.
class QMUTILITY_API CQMFileCheckAPI
{
public:
    /// Calls `Initialize`: constructing an instance empties the list of the whole process.
    CQMFileCheckAPI();

    /// Does nothing: an instance has no state.
    CQMFileCheckAPI(const CQMFileCheckAPI&) = default;

    /// Does nothing: an instance has no state.
    CQMFileCheckAPI& operator=(const CQMFileCheckAPI& other);

    ~CQMFileCheckAPI(); // NOLINT(performance-trivially-destructible): it is exported

    /// Turns monitoring off, empties the list and releases its storage.
    /// @return true.
    static bool Initialize();

    /// Takes a file's status and adds the file at the end of the list, also when it is there already.
    /// @param path of a file, existing or not.
    /// @return true.
    static bool AddWatchDog(CString path);

    /// Reads the status of every file in the list.
    /// @return whether any was modified since it was added; false while monitoring is off, and nothing is
    ///   then read.
    static bool Check();

    /// Turns monitoring on or off. Modifications made while it is off are told once it is on.
    /// @param bEnable whether `Check` looks at the files.
    static void Enable(bool bEnable);

    static CArray<CQMFileCheck, const CQMFileCheck&> m_files; ///< the files, in the order added
    static bool m_bMonitor;                                   ///< whether monitoring is on; false at first
};
