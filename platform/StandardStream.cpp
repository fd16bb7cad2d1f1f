#include "platform/StandardStream.h"

#include "platform/Utf8.h"

#include <string>

#if defined(_WIN32)
#include "platform/Kernel.h"

#include <io.h>
#else
#include <unistd.h>

#include <cerrno>
#endif

namespace platform {

#if defined(_WIN32)

// Past the C runtime, which cuts a text with line breaks into pieces.
void Write(Stream stream, std::wstring_view text)
{
    if (text.empty()) // which the reader of a pipe could take for its end
        return;
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(static_cast<int>(stream)));
    DWORD ignored = 0;
    if (::GetConsoleMode(handle, &ignored) != 0) { // a console takes characters, whatever its code page
        ::WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &ignored, nullptr);
        return;
    }
    std::string bytes;
    for (const char c : ToUtf8(text)) {
        if (c == '\n')
            bytes += '\r';
        bytes += c;
    }
    ::WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &ignored, nullptr);
}

#else

void Write(Stream stream, std::wstring_view text)
{
    const std::string bytes = ToUtf8(text);
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

#endif

} // namespace platform
