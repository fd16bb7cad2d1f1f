// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CFile.h"
#include "qmUtility/platform/Kernel.h"

#include <iterator>
#include <string_view>

namespace {

/// @param time in 100-nanosecond units since 1 January 1601; 0 means "not recorded".
CTime ToTime(const FILETIME& time) {
    const std::int64_t units = std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    if (units == 0) return CTime();
    constexpr std::int64_t perSecond = 10'000'000;
    constexpr std::int64_t secondsTo1970 = 11'644'473'600;
    return CTime(units / perSecond - secondsTo1970, static_cast<std::int32_t>(units % perSecond * 100));
}

}  // namespace

bool CFile::GetStatus(const wchar_t* path, CFileStatus& status) {
    WIN32_FILE_ATTRIBUTE_DATA found;
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &found)) return false;

    status.m_ctime = ToTime(found.ftCreationTime);
    status.m_mtime = ToTime(found.ftLastWriteTime);
    status.m_atime = ToTime(found.ftLastAccessTime);
    status.m_size = std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
    status.m_attribute = static_cast<std::uint8_t>(found.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_NORMAL});
    const std::wstring_view text = path;
    status.m_szFullName[text.copy(status.m_szFullName, std::size(status.m_szFullName) - 1)] = L'\0';
    return true;
}
