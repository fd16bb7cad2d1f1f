// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Descriptor_linux.h"
#include "qmUtility/platform/FileLock.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

bool platform::FileLock::TryLock(const SystemPath& path, std::error_code& error)
{
    Unlock();
    error.clear();
    int file = OpenDescriptor(path.Get(), O_RDWR | O_NONBLOCK); // NFS locks only what can be written
    if (file < 0)
        file = OpenDescriptor(path.Get(), O_RDONLY | O_NONBLOCK);
    m_file = file;
    struct stat locked = {};
    struct stat named = {};
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &locked) == 0 &&
        ::stat(path.Get(), &named) == 0) {
        if (locked.st_dev == named.st_dev && locked.st_ino == named.st_ino)
            return true;
    } else if (errno != EWOULDBLOCK)
        error.assign(errno, std::generic_category());
    Unlock();
    return false;
}

void platform::FileLock::Unlock()
{
    if (m_file >= 0)
        ::close(static_cast<int>(m_file));
    m_file = -1;
}
