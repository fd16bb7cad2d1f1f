// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Descriptor_linux.h"
#include "qmUtility/platform/Runtime.h"
#include "qmUtility/platform/SystemPath.h"

#include <sys/stat.h>
#include <unistd.h>

std::FILE* _wfopen(const wchar_t* path, const wchar_t* /*mode*/)
{
    // The system opens directories too, and fails to read them.
    const int descriptor =
        platform::OpenDescriptor(platform::SystemPath::FromWindows(path).Get(), O_RDONLY | O_NONBLOCK);
    struct stat found;
    const bool isReadable = fstat(descriptor, &found) == 0 && !S_ISDIR(found.st_mode);
    std::FILE* const file = isReadable ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr && descriptor >= 0)
        close(descriptor);
    return file;
}
