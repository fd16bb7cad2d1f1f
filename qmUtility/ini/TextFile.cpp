#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <type_traits>

namespace ini {
namespace {

/// @return the path in the file system's own form, or nothing when the text is not valid Unicode.
std::optional<std::filesystem::path> NativePath(const std::wstring& path)
{
    if constexpr (std::is_same_v<std::filesystem::path::value_type, wchar_t>)
        return path;
    else {
        // From 32-bit characters a path is made as UTF-8 whatever the locale; from wide ones it would not be.
        const std::u32string text(path.begin(), path.end());
        const auto valid = [](char32_t c) { return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF); };
        if (!std::all_of(text.begin(), text.end(), valid))
            return std::nullopt;
        return text;
    }
}

/// Opens nothing for a path that the system could not take as it is: it would end it at a NUL, and open
/// another file.
template <class Stream>
void OpenFile(Stream& file, const std::string& path, std::ios::openmode mode)
{
    if (path.find('\0') == std::string::npos)
        file.open(path, mode);
}

template <class Stream>
void OpenFile(Stream& file, const std::wstring& path, std::ios::openmode mode)
{
    const auto native = NativePath(path);
    if (native && path.find(L'\0') == std::wstring::npos)
        file.open(*native, mode);
}

// In text mode Windows would take a Ctrl-Z for the end of the file, and an edit would lose what comes after
// it. The carriage returns that text mode would take away are trimmed with the lines.
constexpr auto reading = std::ios::in | std::ios::binary;
constexpr auto writing = std::ios::out; // as text

} // namespace

void Open(std::ifstream& file, const std::string& path) { OpenFile(file, path, reading); }
void Open(std::ifstream& file, const std::wstring& path) { OpenFile(file, path, reading); }
void Open(std::ofstream& file, const std::string& path) { OpenFile(file, path, writing); }
void Open(std::ofstream& file, const std::wstring& path) { OpenFile(file, path, writing); }

std::optional<Bytes> ReadWhole(std::ifstream& file)
{
    // What the file reports as its size only says how much room to make once the first of it was read: a pipe
    // reports none, system files report too little, a directory anything.
    const std::streamoff reported = file.rdbuf()->pubseekoff(0, std::ios::end);
    if (reported >= 0 && file.rdbuf()->pubseekoff(0, std::ios::beg) != 0)
        return std::nullopt; // it would be read from its end, as an empty file

    std::size_t capacity = std::size_t{96} * 1024;
    Bytes bytes = {std::make_unique_for_overwrite<char[]>(capacity)};
    for (;;) {
        file.read(bytes.Data.get() + bytes.Size, static_cast<std::streamsize>(capacity - bytes.Size));
        bytes.Size += static_cast<std::size_t>(file.gcount());
        if (file.bad())
            return std::nullopt;
        if (file.eof())
            return bytes;
        capacity =
            std::max(capacity * 2, static_cast<std::size_t>(std::max<std::streamoff>(reported, 0)) + 1);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(bytes.Data.get(), bytes.Size, larger.get());
        bytes.Data = std::move(larger);
    }
}

bool Encoding::BytesAreCharacters() const
{
    return &m_conversion == &std::use_facet<Conversion>(std::locale::classic());
}

std::optional<std::wstring> Encoding::Decode(std::string_view bytes) const
{
    std::wstring text(bytes.size(), L'\0');
    std::mbstate_t state{};
    const char* read = nullptr;
    wchar_t* written = nullptr;
    const auto result = m_conversion.in(state, bytes.data(), bytes.data() + bytes.size(), read, text.data(),
                                        text.data() + text.size(), written);
    if (result != Conversion::ok)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(written - text.data()));
    return text;
}

void Encoding::Write(std::ostream& out, std::wstring_view text)
{
    std::array<char, 512> buffer;
    const wchar_t* const end = text.data() + text.size();
    const auto convert = [&](const wchar_t*& from, const wchar_t* to) {
        char* written = buffer.data();
        m_conversion.out(m_state, from, to, from, written, written + buffer.size(), written);
        out.write(buffer.data(), written - buffer.data());
    };
    for (const wchar_t* from = text.data(); from != end;) {
        const wchar_t* const before = from;
        if (BytesAreCharacters()) {
            from += std::min(end - from, std::ssize(buffer));
            std::transform(before, from, buffer.begin(), [](wchar_t c) {
                return static_cast<char32_t>(c) <= 0xFF ? static_cast<char>(c) : '?';
            });
            out.write(buffer.data(), from - before);
            continue;
        }
        convert(from, end);
        if (from == before) { // stuck at a character that has no bytes
            ++from;
            const wchar_t* mark = L"?";
            convert(mark, mark + 1);
        }
    }
}

void Encoding::Finish(std::ostream& out)
{
    std::array<char, 16> buffer;
    char* end = buffer.data();
    m_conversion.unshift(m_state, buffer.data(), buffer.data() + buffer.size(), end);
    out.write(buffer.data(), end - buffer.data());
}

} // namespace ini
