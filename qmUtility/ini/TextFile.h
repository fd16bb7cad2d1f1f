// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The conversion between the bytes of a file and its text.

#include "qmUtility/platform/File.h"

#include <cwchar>
#include <locale>
#include <optional>
#include <string>
#include <string_view>

namespace ini {

/// What encoding does with a character that the locale has no bytes for.
enum class Unencodable {
    Fail,
    Replace,  ///< by "?"
};

/// The conversion between the bytes of a file and characters.
template <class Char>
class Encoding;

/// Bytes are kept as they are.
template <>
class Encoding<char> {
public:
    explicit Encoding(const std::locale& /*locale*/) {}

    static bool BytesAreCharacters() { return true; }
    static std::optional<platform::Buffer<char>> Decode(platform::Buffer<char> bytes) { return bytes; }
    static bool Append(std::string& bytes, std::string_view text, Unencodable /*unencodable*/) {
        bytes += text;
        return true;
    }
    static void Finish(std::string& /*bytes*/) {}
};

/// The conversion of a locale.
template <>
class Encoding<wchar_t> {
public:
    explicit Encoding(const std::locale& locale) : m_locale(locale) {}

    /// @return whether each byte is the `wchar_t` of the same value, as with the classic "C" locale. The
    ///   standard library's own conversion there may stop at bytes above 127, so it is not used.
    bool BytesAreCharacters() const { return m_bytesAreCharacters; }

    /// @return the text of the bytes, or nothing when some of them cannot be decoded.
    std::optional<platform::Buffer<wchar_t>> Decode(platform::Buffer<char> bytes) const;

    /// Appends the bytes of a text.
    /// @return false when a character cannot be encoded and that fails.
    bool Append(std::string& bytes, std::wstring_view text, Unencodable unencodable);

    /// Appends the bytes that return a state-dependent encoding to its initial state.
    void Finish(std::string& bytes);

private:
    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

    std::locale m_locale;
    const Conversion& m_conversion = std::use_facet<Conversion>(m_locale);
    const bool m_bytesAreCharacters = &m_conversion == &std::use_facet<Conversion>(std::locale::classic());
    std::mbstate_t m_state{};  ///< after the last text encoded
};

}  // namespace ini
