// SPDX-License-Identifier: MIT
#include "qmUtility/platform/FileLock.h"

#include <sys/file.h>
#include <sys/stat.h>

bool platform::FileLock::TryLock(const SystemPath& path, std::error_code& error) {
    error.clear();
    m_file = Handle(OpenDescriptor(path.Get(), O_RDWR | O_NONBLOCK));  // NFS locks only what can be written
    if (!m_file) m_file = Handle(OpenDescriptor(path.Get(), O_RDONLY | O_NONBLOCK));
    struct stat locked = {};
    struct stat named = {};
    if (m_file && ::flock(m_file, LOCK_EX | LOCK_NB) == 0 && ::fstat(m_file, &locked) == 0 &&
        ::stat(path.Get(), &named) == 0) {
        if (locked.st_dev == named.st_dev && locked.st_ino == named.st_ino) return true;
    } else if (errno != EWOULDBLOCK)
        error = LastError(path);
    m_file.Close();
    return false;
}
