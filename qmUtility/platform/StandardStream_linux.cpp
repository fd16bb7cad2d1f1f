// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Handle.h"
#include "qmUtility/platform/StandardStream.h"
#include "qmUtility/platform/Utf8.h"

#include <unistd.h>

#include <csignal>

void platform::Write(Stream stream, std::wstring_view text) {
    const std::string bytes = EncodeUtf8(text);
    const int descriptor = static_cast<int>(stream);
    const LastErrorPreserver preserver;
    if (::lseek(descriptor, 0, SEEK_CUR) >= 0) {  // what has a position sends no signal
        WriteAll(descriptor, bytes);
        return;
    }
    // A closed pipe sends SIGPIPE to the thread that writes. The signal is blocked meanwhile and taken back,
    // unless one is pending already, which it can only be when it was blocked before.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, &pipe, &mask);
    sigset_t pending;
    sigemptyset(&pending);
    if (sigismember(&mask, SIGPIPE) != 0) sigpending(&pending);
    if (!WriteAll(descriptor, bytes) && errno == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        const timespec noWait{};
        sigtimedwait(&pipe, nullptr, &noWait);
    }
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

void platform::UseBinaryStreams() {}
