#pragma once

/// @file
/// Wide formatted printing with one meaning on every platform: that of `CString::Format`, whose comment has
/// the table of directives. Any thread may call.

#include <cstdarg>
#include <cstddef>
#include <string>

namespace platform {

/// Prints into a buffer. The text is cut after `capacity` - 1 characters and always ended by a zero.
/// @param buffer where the text goes.
/// @param capacity the buffer's size in characters.
/// @param format as above.
/// @param arguments what the directives ask for; used up.
/// @return the number of characters printed, or -1 when the text was cut (a `capacity` of 0 included, which
///   stores nothing).
/// @throws std::bad_alloc for lack of memory, which only a long number or narrow string needs.
std::ptrdiff_t VPrint(wchar_t* buffer, std::size_t capacity, const wchar_t* format, std::va_list arguments);
/// The same, with the arguments one by one.
std::ptrdiff_t Print(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);

/// Appends a text to the one in a buffer, which is cut after `capacity` - 1 characters and always ended by a
/// zero.
/// @param buffer holds a text that ends within `capacity` characters.
/// @param capacity the buffer's size in characters.
/// @param text not in the buffer.
void Append(wchar_t* buffer, std::size_t capacity, const wchar_t* text);

/// Prints a text as `VPrint` does.
/// @return the whole text, however long.
/// @throws std::bad_alloc
std::wstring VFormat(const wchar_t* format, std::va_list arguments);

} // namespace platform
