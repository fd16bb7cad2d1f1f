#include "platform/CFile.h"
#include "platform/Runtime.h"
#include "platform/Utf8.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cwchar>
#include <functional>
#include <iterator>
#include <numeric>
#include <string_view>

namespace {

/// A path for the system's calls: UTF-8, and here, and only here, with slashes for backslashes. It stands on
/// the stack and is made without a branch for each character where it can be, since files are asked for by
/// the thousand.
class SystemPath
{
public:
    explicit SystemPath(std::wstring_view path)
    {
        path = path.substr(0, PATH_MAX); // which is too long already
        const auto withSlash = [](wchar_t c) { return c == L'\\' ? L'/' : c; };
        const auto joined = std::accumulate(path.begin(), path.end(), char32_t{}, std::bit_or<char32_t>());
        char* to = m_bytes.data();
        if (joined < 0x80)
            to = std::transform(path.begin(), path.end(), to,
                                [&](wchar_t c) { return static_cast<char>(withSlash(c)); });
        else if (std::all_of(path.begin(), path.end(), platform::IsCharacter))
            for (const wchar_t c : path)
                to = platform::PutUtf8(static_cast<char32_t>(withSlash(c)), to);
        // else it stays the empty path, which names no file
        *to = '\0';
    }

    const char* Bytes() const { return m_bytes.data(); }

private:
    std::array<char, 4 * PATH_MAX + 1> m_bytes;
};

CTime ToTime(const statx_timestamp& time)
{
    return CTime(time.tv_sec, static_cast<std::int32_t>(time.tv_nsec));
}

} // namespace

bool CFile::GetStatus(const wchar_t* path, CFileStatus& status)
{
    const std::wstring_view text = path;
    struct statx found;
    if (statx(AT_FDCWD, SystemPath(text).Bytes(), 0, STATX_BASIC_STATS | STATX_BTIME, &found) != 0)
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

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the runtime's name
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode)
{
    if (std::wcscmp(mode, L"rb") != 0) {
        errno = EINVAL;
        return nullptr;
    }
    // The system lets a directory be opened; reading it then fails.
    const int descriptor = open(SystemPath(path).Bytes(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat found;
    const bool isReadable = fstat(descriptor, &found) == 0 && !S_ISDIR(found.st_mode);
    std::FILE* const file = isReadable ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr && descriptor >= 0)
        close(descriptor);
    return file;
}
