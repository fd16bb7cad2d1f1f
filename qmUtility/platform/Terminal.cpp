#include "qmUtility/platform/Terminal.h"

#if defined(_WIN32)
#include "qmUtility/platform/Kernel.h"

#include <io.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace platform {

#if defined(_WIN32)

std::optional<TerminalSize> GetTerminalSize(Stream stream)
{
    const int descriptor = static_cast<int>(stream);
    if (::_isatty(descriptor) == 0)
        return std::nullopt;
    const auto console = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (::GetConsoleMode(console, &mode) == 0 ||
        ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0 ||
        ::GetConsoleScreenBufferInfo(console, &info) == 0)
        return std::nullopt;
    return TerminalSize{info.srWindow.Right - info.srWindow.Left + 1,
                        info.srWindow.Bottom - info.srWindow.Top + 1};
}

#else

std::optional<TerminalSize> GetTerminalSize(Stream stream)
{
    const int descriptor = static_cast<int>(stream);
    if (::isatty(descriptor) == 0)
        return std::nullopt;
    winsize size = {};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return TerminalSize{};
    return TerminalSize{size.ws_col, size.ws_row};
}

#endif

} // namespace platform
