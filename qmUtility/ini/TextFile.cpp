// SPDX-License-Identifier: MIT
#include "qmUtility/ini/TextFile.h"

#include <array>
#include <climits>
#include <cwchar>
#include <typeinfo>

using platform::Buffer;

namespace ini {

Encoding<wchar_t>::Encoding(const std::locale& locale) : m_locale(locale) {}

std::optional<Buffer<wchar_t>> Encoding<wchar_t>::Decode(Buffer<char> bytes) const
{
    const std::string_view from = bytes;
    Buffer<wchar_t> text(from.size());
    wchar_t* const begin = text.Data.get();
    wchar_t* end = begin;
    if (BytesAreCharacters())
        end = std::transform(from.begin(), from.end(), begin,
                             [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    else {
        // The C library's conversion keeps the first bytes of a character in the state. The standard library passes
        // NULs by, and so completes the character with the bytes behind them, or drops it at the end of the text.
        const std::type_info& type = typeid(m_conversion);
        const bool keepsBytes =
            type == typeid(Conversion) || type == typeid(std::codecvt_byname<wchar_t, char, std::mbstate_t>);
        std::mbstate_t state{};
        const char* const textEnd = from.data() + from.size();
        for (const char* at = from.data(); at != textEnd;) {
            const char* const pieceEnd = keepsBytes ? std::find(at, textEnd, '\0') : textEnd;
            const auto result = m_conversion.in(state, at, pieceEnd, at, end, begin + from.size(), end);
            if (result != Conversion::ok || at != pieceEnd || (keepsBytes && std::mbsinit(&state) == 0))
                return std::nullopt;
            if (at != textEnd) {
                *end++ = L'\0';
                ++at;
            }
        }
    }
    text.Size = static_cast<std::size_t>(end - begin);
    return text;
}

/// Encodes a text as far as there is room for whole characters.
/// @param text becomes what is left of it.
/// @return false when its first character cannot be encoded.
bool Encoding<wchar_t>::Convert(std::mbstate_t& state, std::wstring_view& text, char*& to, char* end) const
{
    while (!text.empty() && end - to >= MB_LEN_MAX) {
        const wchar_t* next = text.data();
        m_conversion.out(state, next, next + text.size(), next, to, end, to);
        if (next == text.data()) // although there is room
            return false;
        text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    }
    return true;
}

char* Encoding<wchar_t>::EncodeByLocale(std::wstring_view& text, char* to, char* end)
{
    while (!Convert(m_state, text, to, end)) {
        const wchar_t mark = L'?';
        const wchar_t* next = nullptr;
        m_conversion.out(m_state, &mark, &mark + 1, next, to, end, to);
        text.remove_prefix(1);
    }
    return to;
}

char* Encoding<wchar_t>::Finish(char* to, char* end)
{
    m_conversion.unshift(m_state, to, end, to);
    return to;
}

std::optional<std::string> Encoding<wchar_t>::TryEncode(std::wstring_view text) const
{
    std::string bytes;
    if (BytesAreCharacters()) {
        if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return static_cast<char32_t>(c) > 0xFF; }))
            return std::nullopt;
        bytes.resize(text.size());
        std::transform(text.begin(), text.end(), bytes.begin(),
                       [](wchar_t c) { return static_cast<char>(c); });
        return bytes;
    }
    std::mbstate_t state{};
    std::array<char, 4096> piece;
    char* end = nullptr;
    do {
        end = piece.data();
        if (!Convert(state, text, end, piece.data() + piece.size()))
            return std::nullopt;
        bytes.append(piece.data(), end);
    } while (!text.empty());
    m_conversion.unshift(state, piece.data(), piece.data() + piece.size(), end);
    bytes.append(piece.data(), end);
    return bytes;
}

} // namespace ini
