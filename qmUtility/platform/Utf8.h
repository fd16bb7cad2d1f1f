// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Conversion between UTF-8 and wide text, independent of the locale and of the width of `wchar_t`.

#include <string>
#include <string_view>

namespace platform {

/// @return whether the value is a Unicode character: at most 0x10FFFF and not a surrogate.
bool IsCharacter(char32_t character);

/// Encodes a Unicode character as one to four bytes.
/// @return the end of the bytes written.
char* EncodeUtf8(char32_t character, char* to);

/// Encodes a wide text. A surrogate pair is one character, whatever the width of `wchar_t`; each code unit
/// that is not part of a Unicode character becomes U+FFFD.
std::string EncodeUtf8(std::wstring_view text);

/// Decodes the first character of a null-terminated text that is not empty, and advances past it. A byte that
/// is not part of a valid sequence decodes to the character of the same value.
char32_t DecodeUtf8(const char*& text);

/// Appends a Unicode character, as a surrogate pair where `wchar_t` is too narrow for it.
void AppendCharacter(std::wstring& to, char32_t character);

}  // namespace platform
