// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CFile.h"
#include "qmUtility/platform/SystemPath.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <iterator>
#include <string_view>

namespace {

CTime ToTime(const statx_timestamp& time) {
    return CTime(time.tv_sec, static_cast<std::int32_t>(time.tv_nsec));
}

/// Calls `statx`, or where older containers refuse that, `stat`, which reports no creation time.
bool ReadStatus(const char* path, struct statx& status) {
    if (statx(AT_FDCWD, path, 0, STATX_BASIC_STATS | STATX_BTIME, &status) == 0) return true;
    struct stat found;
    if ((errno != EPERM && errno != ENOSYS) || stat(path, &found) != 0) return false;
    status = {};
    status.stx_mode = static_cast<std::uint16_t>(found.st_mode);
    status.stx_size = static_cast<std::uint64_t>(found.st_size);
    status.stx_atime = {found.st_atim.tv_sec, static_cast<std::uint32_t>(found.st_atim.tv_nsec), 0};
    status.stx_mtime = {found.st_mtim.tv_sec, static_cast<std::uint32_t>(found.st_mtim.tv_nsec), 0};
    return true;
}

}  // namespace

bool CFile::GetStatus(const wchar_t* path, CFileStatus& status) {
    const std::wstring_view text = path;
    struct statx found;
    if (!ReadStatus(platform::SystemPath::FromWindows(text).Get(), found)) return false;

    status.m_ctime = (found.stx_mask & STATX_BTIME) != 0 ? ToTime(found.stx_btime) : CTime();
    status.m_mtime = ToTime(found.stx_mtime);
    status.m_atime = ToTime(found.stx_atime);
    status.m_size = found.stx_size;
    status.m_attribute = static_cast<std::uint8_t>((S_ISDIR(found.stx_mode) ? directory : normal) |
                                                   ((found.stx_mode & 0222) == 0 ? readOnly : normal));
    status.m_szFullName[text.copy(status.m_szFullName, std::size(status.m_szFullName) - 1)] = L'\0';
    return true;
}
