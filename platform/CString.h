#pragma once

/// @file
/// The framework's wide string class. Where the library is built with the framework (Visual C++, `UNICODE`;
/// the CMake option `QMUTILITY_FRAMEWORK`), the whole build and its users define `QMUTILITY_FRAMEWORK`, and
/// `CString` is the framework's own; elsewhere this header declares what is used of it, with the same names
/// and meaning.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "platform/Export.h"

#include <string>

/// A wide string value. Copies are independent of one another.
class QMPLATFORM_API CString
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

    /// Makes the string a formatted text; see `platform::VFormat` for the directives. The arguments may point
    /// into this string.
    void Format(const wchar_t* format, ...);

    /// @return whether the texts have the same `wchar_t`, and as many.
    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    /// @return whether they have not.
    friend bool operator!=(const CString& a, const CString& b) { return a.m_text != b.m_text; }

private:
    std::wstring m_text;
};

#endif
