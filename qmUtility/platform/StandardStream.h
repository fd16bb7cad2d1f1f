// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Unbuffered text output to the standard streams, independent of the locale.

#include <string_view>

namespace platform {

/// The standard streams; the values are their file descriptors.
enum class Stream {
    Output = 1,
    Error = 2,
};

/// Writes a text as `EncodeUtf8` does. On Windows newlines become CR LF, and a console gets the wide text.
///
/// The text is one write, so that texts of several threads do not interleave as long as the system keeps a
/// write together (4096 bytes on a pipe). It bypasses the buffers of the C library: programs that also print
/// through those flush them first.
///
/// On Linux a write that is partial or interrupted by a signal is continued. After any other failure, for
/// example on a full non-blocking pipe or a closed stream, the rest of the text is dropped. A closed pipe
/// sends no SIGPIPE, so that a log that nobody reads does not end the host; this takes two more system calls
/// where there is no file position, as on a pipe or a terminal. `errno` is preserved, since the caller may be
/// logging a failure.
/// @throws std::bad_alloc
void Write(Stream stream, std::wstring_view text);

/// Makes standard input and output of the C++ library pass bytes unchanged, newlines on Windows included.
void UseBinaryStreams();

}  // namespace platform
