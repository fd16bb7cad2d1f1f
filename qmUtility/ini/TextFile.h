// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The conversion between the bytes of a file and its text.

#include "qmUtility/platform/File.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <optional>
#include <string>
#include <string_view>

namespace ini {

/// The conversion between the bytes of a file and characters.
template <class Char>
class Encoding;

/// Bytes are kept as they are.
template <>
class Encoding<char>
{
public:
    explicit Encoding(const std::locale& /*locale*/) {}

    static bool BytesAreCharacters() { return true; }

    static std::optional<platform::Buffer<char>> Decode(platform::Buffer<char> bytes) { return bytes; }

    char* Encode(std::string_view& text, char* to, char* end)
    {
        const std::size_t count = std::min(text.size(), static_cast<std::size_t>(end - to));
        to = std::copy_n(text.data(), count, to);
        text.remove_prefix(count);
        return to;
    }

    char* Finish(char* to, char* /*end*/) { return to; }

    static std::optional<std::string> TryEncode(std::string_view text) { return std::string(text); }
};

/// The conversion of a locale.
template <>
class Encoding<wchar_t>
{
public:
    explicit Encoding(const std::locale& locale);

    /// @return whether each byte is the `wchar_t` of the same value, as with the classic "C" locale. The
    ///   standard library's own conversion there may stop at bytes above 127, so it is not used.
    bool BytesAreCharacters() const { return m_bytesAreCharacters; }

    /// @return the text of the bytes, or nothing when some of them cannot be decoded.
    std::optional<platform::Buffer<wchar_t>> Decode(platform::Buffer<char> bytes) const;

    /// Encodes a text as far as there is room, with "?" for each character that cannot be encoded. Allocates
    /// nothing.
    /// @param text becomes what is left of it.
    /// @return the end of what was written.
    char* Encode(std::wstring_view& text, char* to, char* end)
    {
        if (!BytesAreCharacters())
            return EncodeByLocale(text, to, end);
        const std::size_t count = std::min(text.size(), static_cast<std::size_t>(end - to));
        to = std::transform(text.data(), text.data() + count, to, [](wchar_t c) {
            return static_cast<char32_t>(c) <= 0xFF ? static_cast<char>(c) : '?';
        });
        text.remove_prefix(count);
        return to;
    }

    /// Writes the bytes that return a state-dependent encoding to its initial state, as far as there is room.
    /// @return the end of what was written.
    char* Finish(char* to, char* end);

    /// Encodes a whole text, from the initial state of the encoding back to it.
    /// @return nothing when a character cannot be encoded.
    std::optional<std::string> TryEncode(std::wstring_view text) const;

private:
    char* EncodeByLocale(std::wstring_view& text, char* to, char* end);
    bool Convert(std::mbstate_t& state, std::wstring_view& text, char*& to, char* end) const;

    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

    std::locale m_locale;
    const Conversion& m_conversion = std::use_facet<Conversion>(m_locale);
    const bool m_bytesAreCharacters = &m_conversion == &std::use_facet<Conversion>(std::locale::classic());
    std::mbstate_t m_state{}; ///< after the last text encoded
};

} // namespace ini
