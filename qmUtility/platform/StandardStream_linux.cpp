// SPDX-License-Identifier: MIT
#include "qmUtility/platform/StandardStream.h"
#include "qmUtility/platform/Utf8.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

namespace {

/// Writes all of the text, or as much as the descriptor accepts.
/// @return whether the descriptor is a pipe or socket that nobody reads any longer.
bool WriteBytes(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const auto written = ::write(descriptor, text.data(), text.size());
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            return written < 0 && errno == EPIPE;
    }
    return false;
}

} // namespace

void platform::Write(Stream stream, std::wstring_view text)
{
    const std::string bytes = EncodeUtf8(text);
    const int descriptor = static_cast<int>(stream);
    const int before = errno;
    if (::lseek(descriptor, 0, SEEK_CUR) >= 0) // what has a position sends no signal
        WriteBytes(descriptor, bytes);
    else {
        // A closed pipe sends SIGPIPE to the thread that writes. The signal is blocked meanwhile and taken
        // back, unless one is pending already, which it can only be when it was blocked before.
        sigset_t pipe;
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        sigset_t mask;
        pthread_sigmask(SIG_BLOCK, &pipe, &mask);
        sigset_t pending;
        sigemptyset(&pending);
        if (sigismember(&mask, SIGPIPE) != 0)
            sigpending(&pending);
        if (WriteBytes(descriptor, bytes) && sigismember(&pending, SIGPIPE) == 0) {
            const timespec noWait{};
            sigtimedwait(&pipe, nullptr, &noWait);
        }
        pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    }
    errno = before;
}

void platform::UseBinaryStreams() {}
