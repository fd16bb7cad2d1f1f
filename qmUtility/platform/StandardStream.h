#pragma once

/// @file
/// Text for the standard output and error streams, past the C library's buffers and locale.

#include <string_view>

namespace platform {

/// The standard streams, by their descriptors' numbers.
enum class Stream
{
    Output = 1,
    Error = 2,
};

/// Writes a text as UTF-8, on Windows with CR LF for line breaks and to a console as it is, whatever the
/// locale and the code page, with one write, so that the texts of several threads do not mix, as far as the
/// system keeps one write together (on a pipe, 4096 bytes). What is not a Unicode character becomes U+FFFD.
/// The C library's buffer is passed by: a program that also prints to the stream through that flushes first.
/// Only what a write has left over, or a signal has interrupted, is written again; on any other failure, a
/// stream that would block included, the rest of the text is dropped. A pipe without a reader raises SIGPIPE
/// as ever. `errno` stays as it was, since who logs a failure may yet look at it.
/// @throws std::bad_alloc
void Write(Stream stream, std::wstring_view text);

} // namespace platform
