#pragma once

/// @file
/// Wide formatted printing that means the same on every platform.
///
/// The directives are those of the C library, with these meanings:
///
/// | directive                    | argument                                                           |
/// |------------------------------|--------------------------------------------------------------------|
/// | `%%`                         | none; prints a percent sign                                        |
/// | `%s`, `%ls`, `%ws`, `%lS`    | wide string                                                        |
/// | `%hs`, `%hhs`, `%S`          | narrow string: UTF-8, each other byte the character of its value   |
/// | `%c`, `%lc`, `%wc`           | `wchar_t`                                                          |
/// | `%hc`, `%hhc`, `%C`          | `char`, as in a narrow string                                      |
/// | `%d %i %u %o %x %X`          | `int`, or as `hh h l ll j z t I I32 I64` say; `I` is `size_t` wide |
/// | `%e %f %g %a`, upper case    | `double`, `long double` with `L`; the locale's decimal point       |
/// | `%p`                         | pointer, printed as `%#llx`                                        |
/// | `%n`                         | pointer, which is passed over: nothing is stored, nothing printed  |
///
/// Flags `- + # 0` and blank, width and precision are the usual ones, `*` included; the precision of a string
/// counts the `wchar_t` printed. A width, and the precision of a number, count up to 65535. A null string
/// prints as "(null)", a null format as nothing. Anything else after a percent sign, the end of the format
/// included, is printed as it stands. Any thread may call.

#include "platform/Export.h"

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
QMPLATFORM_API std::ptrdiff_t VPrint(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                                     std::va_list arguments);
/// The same, with the arguments one by one.
QMPLATFORM_API std::ptrdiff_t Print(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);

/// Appends a text to the one in a buffer, which is cut after `capacity` - 1 characters and always ended by a
/// zero.
/// @param buffer holds a text that ends within `capacity` characters.
/// @param capacity the buffer's size in characters.
/// @param text not in the buffer.
QMPLATFORM_API void Append(wchar_t* buffer, std::size_t capacity, const wchar_t* text);

/// Prints a text as `VPrint` does.
/// @return the whole text, however long.
/// @throws std::bad_alloc
QMPLATFORM_API std::wstring VFormat(const wchar_t* format, std::va_list arguments);

} // namespace platform
