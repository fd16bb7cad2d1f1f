#include "qmUtility/platform/Runtime.h"
#include "qmUtility/platform/SystemPath_linux.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cwchar>

std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode)
{
    if (std::wcscmp(mode, L"rb") != 0) {
        errno = EINVAL;
        return nullptr;
    }
    // The system opens directories as well; reading one then fails.
    const int descriptor = open(platform::SystemPath(path).Bytes(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat found;
    const bool isReadable = fstat(descriptor, &found) == 0 && !S_ISDIR(found.st_mode);
    std::FILE* const file = isReadable ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr && descriptor >= 0)
        close(descriptor);
    return file;
}
