// SPDX-License-Identifier: MIT
#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <array>
#include <typeinfo>

using platform::Buffer;

namespace ini {

std::optional<Buffer<wchar_t>> Encoding<wchar_t>::Decode(Buffer<char> bytes) const {
    const std::string_view from = bytes;
    Buffer<wchar_t> text(from.size());
    wchar_t* const begin = text.Data.get();
    wchar_t* end = begin;
    if (BytesAreCharacters())
        end = std::transform(from.begin(), from.end(), begin,
                             [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    else {
        // The C library's conversion keeps the first bytes of a character in the state. The standard library
        // passes NULs by: the bytes behind them complete the character, or the end of the text drops it.
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

bool Encoding<wchar_t>::Append(std::string& bytes, std::wstring_view text, Unencodable unencodable) {
    if (BytesAreCharacters()) {
        const auto isByte = [](wchar_t c) { return static_cast<char32_t>(c) <= 0xFF; };
        if (unencodable == Unencodable::Fail && !std::all_of(text.begin(), text.end(), isByte)) return false;
        const std::size_t size = bytes.size();
        bytes.resize(size + text.size());
        std::transform(text.begin(), text.end(), bytes.data() + size,
                       [=](wchar_t c) { return isByte(c) ? static_cast<char>(c) : '?'; });
        return true;
    }
    std::array<char, 4096> piece;  // has room for any character
    while (!text.empty()) {
        char* end = piece.data();
        const auto encode = [&](const wchar_t* from, const wchar_t* to) {
            m_conversion.out(m_state, from, to, from, piece.data(), piece.data() + piece.size(), end);
            bytes.append(piece.data(), end);
            return from;
        };
        const wchar_t* next = encode(text.data(), text.data() + text.size());
        if (next == text.data()) {
            constexpr wchar_t mark = L'?';
            if (unencodable == Unencodable::Fail) return false;
            encode(&mark, &mark + 1);
            ++next;
        }
        text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    }
    return true;
}

void Encoding<wchar_t>::Finish(std::string& bytes) {
    std::array<char, 4096> piece;
    char* end = piece.data();
    if (!BytesAreCharacters()) m_conversion.unshift(m_state, piece.data(), piece.data() + piece.size(), end);
    bytes.append(piece.data(), end);
}

}  // namespace ini
