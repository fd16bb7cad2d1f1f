// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CString.h"

#include <algorithm>

namespace {

bool IsSpace(wchar_t character) {
    const auto c = static_cast<char32_t>(character);
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
           c == 0x3000;
}

}  // namespace

CString::CString(const wchar_t* text) : m_text(text != nullptr ? text : L"") {}

int CString::Replace(wchar_t from, wchar_t to) {
    if (from == to) return 0;
    const auto count = std::count(m_text.begin(), m_text.end(), from);
    std::replace(m_text.begin(), m_text.end(), from, to);
    return static_cast<int>(count);
}

CString& CString::TrimLeft() {
    m_text.erase(m_text.begin(), std::find_if_not(m_text.begin(), m_text.end(), IsSpace));
    return *this;
}

CString& CString::TrimRight() {
    m_text.erase(std::find_if_not(m_text.rbegin(), m_text.rend(), IsSpace).base(), m_text.end());
    return *this;
}
