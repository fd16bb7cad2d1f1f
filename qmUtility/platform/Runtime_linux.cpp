// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Runtime.h"
#include "qmUtility/platform/SystemPath_linux.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::FILE* _wfopen(const wchar_t* path, const wchar_t* /*mode*/)
{
    // The system opens directories too, and fails to read them.
    const int descriptor = open(platform::SystemPath(path).Bytes(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat found;
    const bool isReadable = fstat(descriptor, &found) == 0 && !S_ISDIR(found.st_mode);
    std::FILE* const file = isReadable ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr && descriptor >= 0)
        close(descriptor);
    return file;
}
