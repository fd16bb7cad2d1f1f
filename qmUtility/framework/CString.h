#pragma once

/// @file
/// The framework's wide string class. Where the library is built with the framework (Visual C++, `UNICODE`;
/// the CMake option `QMUTILITY_FRAMEWORK`), the whole build and its users define `QMUTILITY_FRAMEWORK`, and
/// `CString` is the framework's own; elsewhere this header declares what is used of it, with the same names
/// and meaning.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

#include <cstdarg>
#include <string>

/// A wide string value. Copies are independent of one another.
class QMFRAMEWORK_API CString
{
public:
    CString() = default;

    /// @param text copied; null makes an empty string.
    CString(const wchar_t* text);

    /// @return the text, ended by a zero; good until the string is changed or destroyed.
    const wchar_t* GetString() const { return m_text.c_str(); }

    /// @return the number of `wchar_t` in the string.
    int GetLength() const { return static_cast<int>(m_text.size()); }

    /// @return whether there is nothing in the string.
    bool IsEmpty() const { return m_text.empty(); }

    /// @return how many characters were changed; 0 also when both characters are the same.
    int Replace(wchar_t from, wchar_t to);

    /// Removes white space from the front: what Unicode calls so, no-break spaces included, whatever the
    /// locale.
    /// @return this string.
    CString& TrimLeft();

    /// Removes the same from the end.
    /// @return this string.
    CString& TrimRight();

    /// Replaces the string by a formatted text. The directives are those of the C library, with these
    /// meanings:
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
    /// | `%n`                         | pointer, which is skipped: nothing is stored, nothing printed      |
    ///
    /// The flags `- + # 0` and space, the width and the precision have their usual meaning, `*` included; the
    /// precision of a string counts the `wchar_t` printed. Widths, and the precisions of numbers, count up to
    /// 65535. A null string prints as "(null)", a null format as nothing. Anything else after a percent sign,
    /// the end of the format included, is printed unchanged.
    /// @param format the arguments after it may point into this string.
    /// @throws std::bad_alloc; the string is then unchanged.
    void Format(const wchar_t* format, ...);

    /// Does what `Format` does with a list of arguments; what a host's own logging function is written with.
    /// @param format as for `Format`.
    /// @param arguments indeterminate afterwards.
    void FormatV(const wchar_t* format, std::va_list arguments);

    /// @return whether the texts have the same `wchar_t`, and as many.
    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    /// @return whether they have not.
    friend bool operator!=(const CString& a, const CString& b) { return a.m_text != b.m_text; }

private:
    std::wstring m_text;
};

#endif
