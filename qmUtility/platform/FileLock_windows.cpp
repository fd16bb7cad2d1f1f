// SPDX-License-Identifier: MIT
#include "qmUtility/platform/FileLock.h"
#include "qmUtility/platform/Kernel.h"

namespace {

/// Opens a file so that it can be read, written, renamed and replaced meanwhile. A file that is being
/// replaced has no name for a moment.
HANDLE Open(const platform::SystemPath& path)
{
    for (int tries = 0;; ++tries) {
        const HANDLE file =
            ::CreateFileW(path.Get(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE || ::GetLastError() != ERROR_FILE_NOT_FOUND || tries == 10)
            return file;
        ::Sleep(10);
    }
}

bool IsSame(HANDLE a, HANDLE b)
{
    BY_HANDLE_FILE_INFORMATION first;
    BY_HANDLE_FILE_INFORMATION second;
    return ::GetFileInformationByHandle(a, &first) != 0 && ::GetFileInformationByHandle(b, &second) != 0 &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace

bool platform::FileLock::TryLock(const SystemPath& path, std::error_code& error)
{
    Unlock();
    error.clear();
    const HANDLE file = Open(path);
    m_file = reinterpret_cast<std::intptr_t>(file);
    OVERLAPPED range = {};
    range.OffsetHigh = 0x7FFFFFFF; // no file has this byte: the lock would keep others from reading it
    if (file != INVALID_HANDLE_VALUE &&
        ::LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range) != 0) {
        const HANDLE named = Open(path);
        const bool isSame = IsSame(file, named);
        if (named != INVALID_HANDLE_VALUE)
            ::CloseHandle(named);
        if (isSame)
            return true;
    } else if (const DWORD code = ::GetLastError();
               code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING && code != ERROR_SHARING_VIOLATION)
        error.assign(static_cast<int>(code), std::system_category());
    Unlock();
    return false;
}

void platform::FileLock::Unlock()
{
    if (m_file != -1) // which is INVALID_HANDLE_VALUE, too
        ::CloseHandle(reinterpret_cast<HANDLE>(m_file));
    m_file = -1;
}
