// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Utf8.h"

#include <bit>
#include <cstddef>

namespace platform {
namespace {

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

/// @return the number of bytes that encode the character.
constexpr int Length(char32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

}  // namespace

bool IsCharacter(char32_t character) {
    return character <= 0x10FFFF && !IsHighSurrogate(character) && !IsLowSurrogate(character);
}

char* EncodeUtf8(char32_t character, char* to) {
    const int length = Length(character);
    const char32_t lengthBits = length == 1 ? 0 : 0xF00U >> length & 0xFFU;
    *to++ = static_cast<char>(lengthBits | character >> 6 * (length - 1));
    for (int following = length - 2; following >= 0; --following)
        *to++ = static_cast<char>(0x80 | (character >> 6 * following & 0x3F));
    return to;
}

std::string EncodeUtf8(std::wstring_view text) {
    std::string bytes(4 * text.size(), '\0');
    char* to = bytes.data();
    for (std::size_t i = 0; i != text.size(); ++i) {
        auto c = static_cast<char32_t>(text[i]);
        if (c < 0x80) {  // most text
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

char32_t DecodeUtf8(const char*& text) {
    const auto lead = static_cast<unsigned char>(*text++);
    const int length = std::countl_one(lead);  // of a sequence of several bytes
    if (length < 2 || length > 4) return lead;
    char32_t c = lead & (0x7FU >> length);
    for (int i = 0; i != length - 1; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80) return lead;  // also at the terminating null: nothing after it is read
        c = c << 6 | (byte & 0x3FU);
    }
    if (Length(c) != length || !IsCharacter(c)) return lead;
    text += length - 1;
    return c;
}

void AppendCharacter(std::wstring& to, char32_t character) {
    if (sizeof(wchar_t) == 2 && character > 0xFFFF) {
        to += static_cast<wchar_t>(0xD7C0 + (character >> 10));
        to += static_cast<wchar_t>(0xDC00 | (character & 0x3FF));
    } else
        to += static_cast<wchar_t>(character);
}

}  // namespace platform
