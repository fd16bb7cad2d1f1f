// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Utf8.h"

#include <cstddef>
#include <limits>
#include <type_traits>

namespace platform {
namespace {

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

/// @return the number of bytes that encode the character.
constexpr int Length(char32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

/// The bits of a sequence's first byte that state its length.
constexpr char32_t LeadBits(int length) { return length == 1 ? 0 : 0xF00U >> length & 0xFFU; }

} // namespace

bool IsCharacter(char32_t character)
{
    return character <= 0x10FFFF && !IsHighSurrogate(character) && !IsLowSurrogate(character);
}

char* EncodeUtf8(char32_t character, char* to)
{
    const int length = Length(character);
    *to++ = static_cast<char>(LeadBits(length) | character >> 6 * (length - 1));
    for (int following = length - 2; following >= 0; --following)
        *to++ = static_cast<char>(0x80 | (character >> 6 * following & 0x3F));
    return to;
}

std::string EncodeUtf8(std::wstring_view text)
{
    std::string bytes(4 * text.size(), '\0');
    char* to = bytes.data();
    for (std::size_t i = 0; i != text.size(); ++i) {
        auto c = static_cast<char32_t>(text[i]);
        if (c < 0x80) { // most text
            *to++ = static_cast<char>(c);
            continue;
        }
        if (IsHighSurrogate(c) && i + 1 != text.size()) {
            const auto next = static_cast<char32_t>(text[i + 1]);
            if (IsLowSurrogate(next)) {
                c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
                ++i;
            }
        }
        to = EncodeUtf8(IsCharacter(c) ? c : 0xFFFD, to);
    }
    bytes.resize(static_cast<std::size_t>(to - bytes.data()));
    return bytes;
}

char32_t DecodeUtf8(const char*& text)
{
    const auto lead = static_cast<unsigned char>(*text++);
    if (lead < 0x80)
        return lead;
    for (int length = 2; length <= 4; ++length) {
        const auto lengthMask = static_cast<unsigned>(0xFF80 >> length) & 0xFFU;
        if ((lead & lengthMask) != LeadBits(length))
            continue;
        char32_t c = lead & ~lengthMask & 0xFFU;
        int following = 1;
        // The terminating null is not a continuation byte, so nothing after it is read.
        for (; following != length && (static_cast<unsigned char>(text[following - 1]) & 0xC0) == 0x80;
             ++following)
            c = c << 6 | (static_cast<unsigned char>(text[following - 1]) & 0x3F);
        if (following != length || Length(c) != length || !IsCharacter(c))
            break;
        text += length - 1;
        return c;
    }
    return lead;
}

void AppendCharacter(std::wstring& to, char32_t character)
{
    if (character > static_cast<std::make_unsigned_t<wchar_t>>(std::numeric_limits<wchar_t>::max())) {
        to += static_cast<wchar_t>(0xD7C0 + (character >> 10));
        to += static_cast<wchar_t>(0xDC00 | (character & 0x3FF));
    } else
        to += static_cast<wchar_t>(character);
}

} // namespace platform
