#pragma once

/// @file
/// A file that is watched for changes.

#include "qmUtility/Export.h"
#include "qmUtility/framework/CFile.h"
#include "qmUtility/framework/CString.h"

/// A file by its path, with the status that the file had when that was last taken: at construction, or by
/// `ApplyChanges`. It answers whether the file has been deleted or modified since; nothing is watched in
/// between.
///
/// **Paths** are stored with backslashes for slashes and without the white space at either end. Elsewhere
/// than on Windows the file system is asked with slashes for backslashes and in UTF-8, whatever the locale,
/// so there a file whose name holds a backslash cannot be watched. A path that is not valid Unicode names no
/// file.
///
/// **Failure.** A file that does not exist or cannot be examined is no failure: its times count as zero. Only
/// running out of memory is reported, as std::bad_alloc.
///
/// **Threads.** An instance belongs to one thread at a time.
class QMUTILITY_API CQMFileCheck
{
public:
    /// Takes the file's status.
    /// @param path of a file, existing or not, or of a directory; a relative one is looked up from the
    ///   directory that is current at each call.
    explicit CQMFileCheck(CString path = CString());

    /// Copies the path and the status as it was taken; the file is not looked at.
    CQMFileCheck(const CQMFileCheck& other);

    /// Copies the path and the status as it was taken; the file is not looked at.
    CQMFileCheck& operator=(const CQMFileCheck& other);

    ~CQMFileCheck();

    /// Takes the file's status anew, which acknowledges a change.
    /// @return whether it could be read. If not, the former status stays: a deletion cannot be acknowledged.
    bool ApplyChanges();

    /// @return whether the file cannot be opened for reading: one that exists but is locked or not permitted
    ///   counts as deleted, and so does a directory.
    bool CheckDeleted();

    /// @return whether the time of the last modification differs, in either direction, from the one in the
    ///   stored status, which stays as it is. A file that has gone counts as modified, and so does one that
    ///   has appeared. Contents, size, and all else play no part.
    bool CheckModified();

    /// @return true, always: nothing is examined.
    bool CheckRenamed();

protected:
    /// The same as `ApplyChanges`.
    bool Initialize();

    CFileStatus m_status{}; ///< the status as last taken
    CString m_strPath;      ///< with backslashes, and without white space at either end
};
