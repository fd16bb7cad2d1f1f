// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's wide string class: the subset used here, or the framework's own class.
///
/// The CMake option `QMUTILITY_FRAMEWORK` (Visual C++, `UNICODE`) builds the library with the framework itself.
/// The build and all users then define `QMUTILITY_FRAMEWORK`, and the headers of this folder include the
/// framework's. Otherwise they declare the subset used here, with the same names and meaning.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

#include <cstdarg>
#include <string>

/// The classes of the subset. The namespace is in the names of their symbols only: a program that has its own global
/// `CObject` or `CString` neither replaces ours nor has its own replaced. No source names it.
inline namespace qmFramework {

/// A wide string value.
class QMFRAMEWORK_API CString
{
public:
    CString() = default;

    /// @param text is copied; null makes an empty string.
    CString(const wchar_t* text);

    /// @return the null-terminated text, valid until the string is modified or destroyed.
    const wchar_t* GetString() const { return m_text.c_str(); }

    /// Replaces each occurrence of a character.
    /// @return the number of characters replaced; 0 when both characters are the same.
    int Replace(wchar_t from, wchar_t to);

    /// Removes leading white space as Unicode defines it, no-break spaces included, whatever the locale.
    /// @return this string.
    CString& TrimLeft();

    /// Removes trailing white space, as `TrimLeft` does at the other end.
    /// @return this string.
    CString& TrimRight();

    /// Replaces the string with a formatted text. The directives are the same on every platform:
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
    /// | `%n`                         | pointer, which is ignored: nothing is stored or printed            |
    ///
    /// The flags `- + # 0` and space, width, precision and `*` work as in the C library. The precision of a string
    /// counts `wchar_t`. A width, or the precision of a number, above 65535 counts as 65535. A null string prints
    /// as "(null)", a null format as nothing. Anything else after a percent sign is printed unchanged.
    /// @param format the arguments after it may point into this string.
    /// @throws std::bad_alloc; the string is then unchanged.
    void Format(const wchar_t* format, ...);

    /// Does the same with a list of arguments, for a host's own functions with variable arguments.
    /// @param format as for `Format`.
    /// @param arguments indeterminate afterwards.
    void FormatV(const wchar_t* format, std::va_list arguments);

private:
    std::wstring m_text;
};

} // namespace qmFramework

#endif
