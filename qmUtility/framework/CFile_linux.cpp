#include "qmUtility/framework/CFile.h"
#include "qmUtility/platform/SystemPath_linux.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <iterator>
#include <string_view>

namespace {

CTime ToTime(const statx_timestamp& time)
{
    return CTime(time.tv_sec, static_cast<std::int32_t>(time.tv_nsec));
}

} // namespace

bool CFile::GetStatus(const wchar_t* path, CFileStatus& status)
{
    const std::wstring_view text = path;
    struct statx found;
    if (statx(AT_FDCWD, platform::SystemPath(text).Bytes(), 0, STATX_BASIC_STATS | STATX_BTIME, &found) != 0)
        return false;

    status.m_ctime = (found.stx_mask & STATX_BTIME) != 0 ? ToTime(found.stx_btime) : CTime();
    status.m_mtime = ToTime(found.stx_mtime);
    status.m_atime = ToTime(found.stx_atime);
    status.m_size = found.stx_size;
    status.m_attribute = static_cast<std::uint8_t>((S_ISDIR(found.stx_mode) ? directory : normal) |
                                                   ((found.stx_mode & 0222) == 0 ? readOnly : normal));
    status.m_szFullName[text.copy(status.m_szFullName, std::size(status.m_szFullName) - 1)] = L'\0';
    return true;
}
