#include "qmUtility/platform/StandardStream.h"
#include "qmUtility/platform/Utf8.h"

#include <unistd.h>

#include <cerrno>
#include <string>

void platform::Write(Stream stream, std::wstring_view text)
{
    const std::string bytes = EncodeUtf8(text);
    const int before = errno;
    for (std::string_view left = bytes; !left.empty();) {
        const auto written = ::write(static_cast<int>(stream), left.data(), left.size());
        if (written > 0)
            left.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            break;
    }
    errno = before;
}
