// SPDX-License-Identifier: MIT
#include "qmUtility/platform/SystemPath.h"
#include "qmUtility/platform/Utf8.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <numeric>

namespace platform {

SystemPath::SystemPath(const std::string& path)
    : m_path(path.find('\0') == std::string::npos ? path.c_str() : "") {}

SystemPath::SystemPath(const std::wstring& path) : SystemPath(path, L'/') {}

// Polling the watch list converts each path again, so an ASCII path takes no branch for each character.
SystemPath::SystemPath(std::wstring_view path, wchar_t separator) : m_path(m_converted) {
    path = path.substr(0, PATH_MAX);  // one more than the system accepts
    const auto withSlash = [=](wchar_t c) { return c == separator ? L'/' : c; };
    const auto joined = std::accumulate(path.begin(), path.end(), char32_t{}, std::bit_or<char32_t>());
    char* to = m_converted;
    if (path.find(L'\0') == std::wstring_view::npos) {
        if (joined < 0x80)
            to = std::transform(path.begin(), path.end(), to,
                                [&](wchar_t c) { return static_cast<char>(withSlash(c)); });
        else if (std::all_of(path.begin(), path.end(), IsCharacter))
            for (const wchar_t c : path) to = EncodeUtf8(static_cast<char32_t>(withSlash(c)), to);
    }
    *to = '\0';
}

}  // namespace platform
