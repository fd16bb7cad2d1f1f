// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Conversion of wide paths for system calls.

#include "qmUtility/platform/Utf8.h"

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <numeric>
#include <string_view>

namespace platform {

/// A null-terminated path in UTF-8 with slashes in place of backslashes; empty, which names no file, when the wide
/// path is not valid Unicode.
///
/// Polling the watch list converts each path again. A conversion therefore allocates nothing, and an ASCII path
/// takes no branch for each character.
class SystemPath
{
public:
    explicit SystemPath(std::wstring_view path)
    {
        path = path.substr(0, PATH_MAX); // one more than the system accepts
        const auto withSlash = [](wchar_t c) { return c == L'\\' ? L'/' : c; };
        const auto joined = std::accumulate(path.begin(), path.end(), char32_t{}, std::bit_or<char32_t>());
        char* to = m_bytes.data();
        if (joined < 0x80)
            to = std::transform(path.begin(), path.end(), to,
                                [&](wchar_t c) { return static_cast<char>(withSlash(c)); });
        else if (std::all_of(path.begin(), path.end(), IsCharacter))
            for (const wchar_t c : path)
                to = EncodeUtf8(static_cast<char32_t>(withSlash(c)), to);
        *to = '\0';
    }

    const char* Bytes() const { return m_bytes.data(); }

private:
    std::array<char, 4 * PATH_MAX + 1> m_bytes;
};

} // namespace platform
