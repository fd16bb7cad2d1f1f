#pragma once

/// @file
/// Files as text: opening them by narrow and wide paths, reading them whole, and turning bytes into `wchar_t`
/// and back.

#include <cstddef>
#include <fstream>
#include <locale>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ini {

/// Opens a file for reading, with all its bytes, or for writing text, emptied. The stream stays closed when
/// that fails, and for a path with a NUL, which would name another file. A wide path is passed on as UTF-8
/// where the system's paths are bytes, whatever the locale, and opens nothing when it is not valid Unicode.
void Open(std::ifstream& file, const std::string& path);
void Open(std::ifstream& file, const std::wstring& path);
void Open(std::ofstream& file, const std::string& path);
void Open(std::ofstream& file, const std::wstring& path);

/// Uninitialised memory that holds a text.
struct Bytes
{
    std::unique_ptr<char[]> Data;
    std::size_t Size = 0;

    operator std::string_view() const { return {Data.get(), Size}; }
};

/// @return all that an open file holds, or nothing when reading it failed before its end (a directory, say).
std::optional<Bytes> ReadWhole(std::ifstream& file);

/// How bytes become `wchar_t` and back: the conversion of the global locale, as it was at construction.
class Encoding
{
public:
    /// @return whether each byte is the `wchar_t` of the same value, as in the classic "C" locale. The
    ///   compiler's own conversion there may stop at bytes above 127, so it is not asked.
    bool BytesAreCharacters() const;

    /// @return the text of the bytes, or nothing when they hold something that the conversion cannot decode.
    std::optional<std::wstring> Decode(std::string_view bytes) const;

    /// Writes a text, with "?" for each character that has no bytes. Allocates nothing.
    void Write(std::ostream& out, std::wstring_view text);

    /// Writes what takes the bytes back to where a text begins, in an encoding that shifts.
    void Finish(std::ostream& out);

private:
    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

    std::locale m_locale;
    const Conversion& m_conversion = std::use_facet<Conversion>(m_locale);
    std::mbstate_t m_state{}; ///< between one piece of text written and the next
};

} // namespace ini
