// SPDX-License-Identifier: MIT
#include "qmUtility/platform/FileLock.h"
#include "qmUtility/platform/Kernel.h"

namespace {

using platform::Handle;

/// A file that is being replaced has no name for a moment.
Handle Open(const platform::SystemPath& path) {
    for (int tries = 0;; ++tries) {
        Handle file(path, Handle::Access::Read);
        if (file || ::GetLastError() != ERROR_FILE_NOT_FOUND || tries == 10) return file;
        ::Sleep(10);
    }
}

bool IsSame(HANDLE a, HANDLE b) {
    BY_HANDLE_FILE_INFORMATION first;
    BY_HANDLE_FILE_INFORMATION second;
    return ::GetFileInformationByHandle(a, &first) != 0 && ::GetFileInformationByHandle(b, &second) != 0 &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

}  // namespace

bool platform::FileLock::TryLock(const SystemPath& path, std::error_code& error) {
    error.clear();
    m_file = Open(path);
    OVERLAPPED range = {};
    range.OffsetHigh = 0x7FFFFFFF;  // no file has this byte: the lock would keep others from reading it
    if (m_file &&
        ::LockFileEx(m_file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range) != 0) {
        if (IsSame(m_file, Open(path))) return true;
    } else if (const DWORD code = ::GetLastError();
               code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING && code != ERROR_SHARING_VIOLATION)
        error = LastError(path);
    m_file.Close();
    return false;
}
