// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/platform/Handle.h"

namespace platform {

/// An exclusive lock on a file, whatever its name. It keeps out other locks of this kind only: `flock` on
/// Linux, a byte range behind the end of the file on Windows. It ends with the object or the process.
class FileLock {
public:
    /// Locks the file that a path names, if no other lock is on it. Symbolic links are followed.
    /// @param error why the file cannot be locked; cleared when another try may succeed.
    /// @return whether the file is locked and the path still names it: it may just have been replaced.
    bool TryLock(const SystemPath& path, std::error_code& error);

private:
    Handle m_file;
};

}  // namespace platform
