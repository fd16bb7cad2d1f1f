#include "platform/StandardStream.h"

#include "platform/Utf8.h"

#include <cerrno>
#include <string>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace platform {
namespace {

/// @return the number of bytes written, or a negative number.
auto WriteBytes(int descriptor, std::string_view bytes)
{
#if defined(_WIN32)
    return ::_write(descriptor, bytes.data(), static_cast<unsigned>(bytes.size()));
#else
    return ::write(descriptor, bytes.data(), bytes.size());
#endif
}

} // namespace

void Write(Stream stream, std::wstring_view text)
{
    const std::string bytes = ToUtf8(text);
    const int before = errno;
    for (std::string_view left = bytes; !left.empty();) {
        const auto written = WriteBytes(static_cast<int>(stream), left);
        if (written > 0)
            left.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            break;
    }
    errno = before;
}

} // namespace platform
