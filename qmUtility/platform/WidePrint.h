// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Wide formatted printing that is the same on every platform. `CString::Format` documents the directives. The
/// functions may be called from any thread.

#include <cstdarg>
#include <cstddef>
#include <string>

namespace platform {

/// Prints into a buffer. The text is truncated to `capacity` - 1 characters and null-terminated.
/// @param buffer receives the text.
/// @param capacity size of the buffer in characters; with 0 nothing is stored.
/// @param format null prints nothing.
/// @param arguments indeterminate afterwards.
/// @return the number of characters printed, or -1 when the text was truncated or `capacity` is 0.
/// @throws std::bad_alloc: numbers, narrow strings and padding need memory.
std::ptrdiff_t VPrint(wchar_t* buffer, std::size_t capacity, const wchar_t* format, std::va_list arguments);
/// The same, with variable arguments.
std::ptrdiff_t Print(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);

/// Appends a text to the one in a buffer. The result is truncated to `capacity` - 1 characters and
/// null-terminated.
/// @param buffer holds a null-terminated text.
/// @param capacity size of the buffer in characters.
/// @param text must not lie in the buffer.
void Append(wchar_t* buffer, std::size_t capacity, const wchar_t* text);

/// Prints into a string.
/// @return the text, never truncated.
/// @throws std::bad_alloc
std::wstring VFormat(const wchar_t* format, std::va_list arguments);

} // namespace platform
