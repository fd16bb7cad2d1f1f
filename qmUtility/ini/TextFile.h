#pragma once

/// @file
/// Files as text: opening them by narrow and wide paths, reading them whole, and converting bytes to
/// `wchar_t` and back.

#include <cstddef>
#include <fstream>
#include <locale>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace ini {

/// Uninitialised memory that holds a text.
struct Bytes
{
    std::unique_ptr<char[]> Data;
    std::size_t Size = 0;

    operator std::string_view() const { return {Data.get(), Size}; }
};

/// Reads a file whole. A wide path is passed on as UTF-8 where the system's paths are bytes, whatever the
/// locale.
/// @return nothing when the file cannot be opened or reading fails before its end (a directory, for example);
///   also for a path that holds a NUL, which would name another file, and for a wide path that is not valid
///   Unicode.
std::optional<Bytes> ReadFile(const std::string& path);
std::optional<Bytes> ReadFile(const std::wstring& path); ///< @overload

/// Opens a file for writing text and truncates it, by a path that is treated as `ReadFile` does. The stream
/// stays closed when that fails.
void Open(std::ofstream& file, const std::string& path);
void Open(std::ofstream& file, const std::wstring& path); ///< @overload

/// The conversion of a locale between bytes and `wchar_t`.
class Encoding
{
public:
    explicit Encoding(const std::locale& locale);

    /// @return whether each byte is the `wchar_t` of the same value, as with the classic "C" locale. The
    ///   standard library's own conversion there may stop at bytes above 127, so it is not used.
    bool BytesAreCharacters() const;

    /// @return the text of the bytes, or nothing when some of them cannot be decoded.
    std::optional<std::wstring> Decode(std::string_view bytes) const;

    /// Writes a text, with "?" for each character that cannot be encoded. Allocates nothing.
    void Write(std::ostream& out, std::wstring_view text);

    /// Writes the bytes that return a state-dependent encoding to its initial state.
    void Finish(std::ostream& out);

private:
    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

    std::locale m_locale;
    const Conversion& m_conversion = std::use_facet<Conversion>(m_locale);
    std::mbstate_t m_state{}; ///< after the last text written
};

} // namespace ini
