// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's wide string class: the subset used here, or the framework's own class.
///
/// The CMake option `QMUTILITY_FRAMEWORK` (Visual C++, `UNICODE`) builds the library with the framework
/// itself, and defines the macro of that name for its users: the headers of this folder then include the
/// framework's. Otherwise they declare the subset used here, with the same names and meaning.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/framework/CObject.h"

#include <cstdarg>
#include <cstddef>
#include <string>
#include <utility>

/// The classes of the subset. The namespace is in the names of their symbols only, so that a program's own
/// global `CObject` or `CString` does not conflict with them. Users never write the namespace.
inline namespace qmFramework {

/// A wide string value.
class QMFRAMEWORK_API CString {
public:
    CString() = default;

    /// @param text is copied; null makes an empty string.
    CString(const wchar_t* text);

    /// @return the null-terminated text, valid until the string is modified or destroyed.
    const wchar_t* GetString() const { return m_text.c_str(); }
    operator const wchar_t*() const { return GetString(); }  ///< @overload

    int GetLength() const { return static_cast<int>(m_text.size()); }  ///< number of `wchar_t`
    bool IsEmpty() const { return m_text.empty(); }                    ///< whether the length is 0

    /// @param index from 0 to `GetLength()`, the terminating null.
    /// @return the character at the index.
    /// @throws CInvalidArgException* for another index.
    wchar_t operator[](std::ptrdiff_t index) const {
        if (index < 0 || index > GetLength()) AfxThrowInvalidArgException();
        return m_text[static_cast<std::size_t>(index)];
    }

    /// Appends a text or a character.
    /// @return this string.
    CString& operator+=(const CString& text) { return m_text += text.m_text, *this; }
    CString& operator+=(wchar_t character) { return m_text += character, *this; }  ///< @overload

    /// @return both parts in one string.
    friend CString operator+(CString a, const CString& b) { return std::move(a += b); }
    friend CString operator+(CString a, wchar_t b) { return std::move(a += b); }         ///< @overload
    friend CString operator+(wchar_t a, const CString& b) { return CString() + a + b; }  ///< @overload

    /// Compares the values of the characters one by one, whatever the locale. A null text equals an empty
    /// one. The overloads for texts prevent a comparison of addresses.
    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CString& a, const wchar_t* b) { return a == CString(b); }     ///< @overload
    friend bool operator==(const wchar_t* a, const CString& b) { return CString(a) == b; }     ///< @overload
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }           ///< @overload
    friend bool operator!=(const CString& a, const wchar_t* b) { return a != CString(b); }     ///< @overload
    friend bool operator!=(const wchar_t* a, const CString& b) { return CString(a) != b; }     ///< @overload
    friend bool operator<(const CString& a, const CString& b) { return a.m_text < b.m_text; }  ///< @overload
    friend bool operator<(const CString& a, const wchar_t* b) { return a < CString(b); }       ///< @overload
    friend bool operator<(const wchar_t* a, const CString& b) { return CString(a) < b; }       ///< @overload
    friend bool operator>(const CString& a, const CString& b) { return b < a; }                ///< @overload
    friend bool operator>(const CString& a, const wchar_t* b) { return a > CString(b); }       ///< @overload
    friend bool operator>(const wchar_t* a, const CString& b) { return CString(a) > b; }       ///< @overload
    friend bool operator<=(const CString& a, const CString& b) { return !(b < a); }            ///< @overload
    friend bool operator<=(const CString& a, const wchar_t* b) { return a <= CString(b); }     ///< @overload
    friend bool operator<=(const wchar_t* a, const CString& b) { return CString(a) <= b; }     ///< @overload
    friend bool operator>=(const CString& a, const CString& b) { return !(a < b); }            ///< @overload
    friend bool operator>=(const CString& a, const wchar_t* b) { return a >= CString(b); }     ///< @overload
    friend bool operator>=(const wchar_t* a, const CString& b) { return CString(a) >= b; }     ///< @overload

    /// Replaces each occurrence of a character.
    /// @return the number of characters replaced; 0 when both characters are the same.
    int Replace(wchar_t from, wchar_t to);

    /// Removes leading or trailing white space as Unicode defines it in any locale, no-break spaces included.
    /// @return this string.
    CString& TrimLeft();
    CString& TrimRight();  ///< @overload

    /// Replaces the string with a formatted text. The directives are the same on every platform:
    ///
    /// | directive                    | argument                                                           |
    /// |------------------------------|--------------------------------------------------------------------|
    /// | `%%`                         | none; prints a percent sign                                        |
    /// | `%s`, `%ls`, `%ws`, `%lS`    | wide string                                                        |
    /// | `%hs`, `%hhs`, `%S`          | narrow string: UTF-8, each other byte the character of its value   |
    /// | `%c`, `%lc`, `%wc`           | `wchar_t`                                                          |
    /// | `%hc`, `%hhc`, `%C`          | `char`, as in a narrow string                                      |
    /// | `%d %i %u %o %x %X`          | `int`, or of `hh h l ll w j z t I I32 I64`; `I` is `size_t` wide   |
    /// | `%e %f %g %a`, upper case    | `double`, `long double` with `L`; the locale's decimal point       |
    /// | `%p`                         | pointer, printed as `%#llx`                                        |
    /// | `%n`                         | pointer, which is ignored: nothing is stored or printed            |
    ///
    /// The flags `- + # 0` and space, width, precision and `*` work as in the C library. The precision of a
    /// string counts `wchar_t`. A width, or the precision of a number, above 65535 counts as 65535. A null
    /// string prints as "(null)", a null format as nothing. Anything else after "%" is printed unchanged.
    /// @param format the arguments after it may point into this string.
    /// @throws std::bad_alloc; the string is then unchanged.
    void Format(const wchar_t* format, ...);

    /// Does the same with a list of arguments, which are indeterminate afterwards.
    void FormatV(const wchar_t* format, std::va_list arguments);

private:
    std::wstring m_text;
};

}  // namespace qmFramework

#endif
