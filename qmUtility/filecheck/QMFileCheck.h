// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/Export.h"
#include "qmUtility/framework/CFile.h"
#include "qmUtility/framework/CString.h"

/// Checks on request whether a file has been deleted or modified since construction or `ApplyChanges`.
/// Nothing runs in the background.
///
///     CQMFileCheck file(L"settings.ini");
///     if (file.CheckModified())   // since it was constructed
///         file.ApplyChanges();    // acknowledges the change
///
/// **Paths** are stored with backslashes in place of slashes and without leading and trailing white space.
/// Outside Windows the system gets them with slashes again, so a file with a backslash in its name cannot be
/// watched there, and in UTF-8, whatever the locale; a path that is not valid Unicode names no file.
///
/// **Failure.** A file that does not exist or whose status cannot be read is not an error: its times are
/// zero. The only exception is std::bad_alloc, from construction and copying.
///
/// **Threads.** An instance belongs to one thread at a time.
class QMUTILITY_API CQMFileCheck {
public:
    /// Reads the file's status. Converts implicitly, because hosts rely on it.
    /// @param path of a file or directory, which need not exist. A relative path is resolved by each call.
    CQMFileCheck(CString path = CString());

    /// Copies the path and the stored status; does not access the file.
    CQMFileCheck(const CQMFileCheck& other);
    CQMFileCheck& operator=(const CQMFileCheck& other);  ///< copies the same

    ~CQMFileCheck();

    /// Reads and stores the file's status, which acknowledges a change.
    /// @return whether the status could be read. Otherwise the stored one stays: a deletion remains reported.
    bool ApplyChanges();

    /// @return whether the file cannot be opened for reading. An existing file that is locked or not
    ///   permitted counts as deleted, and so does a directory.
    bool CheckDeleted();

    /// Compares the file's modification time, and nothing else, with the stored one, which is unchanged.
    /// @return whether the times differ, in either direction. Deleted and created files count as modified.
    bool CheckModified();

    /// @return true, always; nothing is checked.
    bool CheckRenamed();

protected:
    /// Same as `ApplyChanges`.
    bool Initialize();

    CFileStatus m_status{};  ///< the stored status
    CString m_strPath;       ///< the normalized path
};
