#pragma once

/// @file
/// UTF-8 and wide text, whatever the locale and the width of `wchar_t`.

#include <string>
#include <string_view>

namespace platform {

/// @return whether it is a Unicode character; surrogates are not, nor is what lies past the last character.
bool IsCharacter(char32_t character);

/// Writes a Unicode character as one to four bytes.
/// @return the end of what was written.
char* EncodeUtf8(char32_t character, char* to);

/// Two surrogates that belong together count as the character they stand for; what is not a Unicode character
/// becomes U+FFFD.
std::string EncodeUtf8(std::wstring_view text);

/// Takes one character off the front of a text that ends in a zero byte and is not empty. A byte that is not
/// part of a valid sequence is the character of the same value.
char32_t DecodeUtf8(const char*& text);

/// Appends a Unicode character, as two surrogates where `wchar_t` is too narrow for it.
void AppendCharacter(std::wstring& to, char32_t character);

} // namespace platform
