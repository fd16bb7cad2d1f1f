// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Files as text: opening them by narrow and wide paths, reading them whole, and converting bytes to
/// `wchar_t` and back.

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <locale>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ini {

/// A text in memory that is not initialised before it is filled.
template <class Char>
struct Text
{
    explicit Text(std::size_t capacity) : Data(std::make_unique_for_overwrite<Char[]>(capacity)) {}

    operator std::basic_string_view<Char>() const { return {Data.get(), Size}; }

    std::unique_ptr<Char[]> Data;
    std::size_t Size = 0;
};

/// Reads a file whole. A wide path is passed on as UTF-8 where the system's paths are bytes, whatever the
/// locale.
/// @return nothing when the file cannot be opened or reading fails before its end (a directory, for example);
///   also for a path that holds a NUL, which would name another file, and for a wide path that is not valid
///   Unicode.
std::optional<Text<char>> ReadFile(const std::string& path);
std::optional<Text<char>> ReadFile(const std::wstring& path); ///< @overload

/// Opens a file for writing text and truncates it, by a path that is treated as `ReadFile` does.
/// @return false when that fails; the file is then closed.
bool OpenForWriting(std::filebuf& file, const std::string& path);
bool OpenForWriting(std::filebuf& file, const std::wstring& path); ///< @overload

/// The conversion between the bytes of a file and characters.
template <class Char>
class Encoding;

/// Bytes are kept as they are.
template <>
class Encoding<char>
{
public:
    explicit Encoding(const std::locale& /*locale*/) {}

    static std::optional<Text<char>> Decode(Text<char> bytes) { return bytes; }

    char* Encode(std::string_view& text, char* to, char* end)
    {
        const std::size_t count = std::min(text.size(), static_cast<std::size_t>(end - to));
        to = std::copy_n(text.data(), count, to);
        text.remove_prefix(count);
        return to;
    }

    char* Finish(char* to, char* /*end*/) { return to; }
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
    std::optional<Text<wchar_t>> Decode(Text<char> bytes) const;

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

private:
    char* EncodeByLocale(std::wstring_view& text, char* to, char* end);

    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

    std::locale m_locale;
    const Conversion& m_conversion = std::use_facet<Conversion>(m_locale);
    const bool m_bytesAreCharacters = &m_conversion == &std::use_facet<Conversion>(std::locale::classic());
    std::mbstate_t m_state{}; ///< after the last text encoded
};

} // namespace ini
