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

/// Writes a text as `EncodeUtf8` does. On Windows newlines become CR LF, and a console receives the wide text
/// itself.
///
/// The text is one write, so that texts of several threads do not interleave as long as the system keeps a
/// write together (4096 bytes on a pipe). It bypasses the buffers of the C library: a program that also
/// prints through those flushes them first.
///
/// On Linux a write that is partial or interrupted by a signal is continued. After any other failure, for
/// example on a full non-blocking pipe or a stream that the host has closed, the rest of the text is dropped.
/// A closed pipe sends no SIGPIPE, as there is none on Windows: a log that nobody reads any longer does not
/// end the host. That takes two more system calls on what has no file position, such as a pipe or a terminal.
/// `errno` is preserved, because the caller may be logging a failure.
/// @throws std::bad_alloc
void Write(Stream stream, std::wstring_view text);

/// Makes standard input and output of the C++ library pass bytes unchanged, which on Windows convert
/// newlines.
void UseBinaryStreams();

}  // namespace platform
