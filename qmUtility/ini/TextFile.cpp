#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <type_traits>

namespace ini {
namespace {

/// @return the path in the file system's own form; nothing when the text is not valid Unicode.
std::optional<std::filesystem::path> NativePath(const std::wstring& path)
{
    if constexpr (std::is_same_v<std::filesystem::path::value_type, wchar_t>)
        return path;
    else {
        // The standard library converts 32-bit characters to UTF-8 whatever the locale, but not wide ones.
        const std::u32string text(path.begin(), path.end());
        const auto valid = [](char32_t c) { return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF); };
        if (!std::all_of(text.begin(), text.end(), valid))
            return std::nullopt;
        return text;
    }
}

/// Opens nothing for a path with a NUL: the system would end it there, and open another file.
template <class Stream>
void OpenFile(Stream& file, const std::string& path, std::ios::openmode mode)
{
    file.imbue(std::locale::classic()); // bytes as they are, whatever the global locale
    if (path.find('\0') == std::string::npos)
        file.open(path, mode);
}

template <class Stream>
void OpenFile(Stream& file, const std::wstring& path, std::ios::openmode mode)
{
    file.imbue(std::locale::classic());
    const auto native = NativePath(path);
    if (native && path.find(L'\0') == std::wstring::npos)
        file.open(*native, mode);
}

/// The first buffer of a read: most INI files fit, and it is below the size from which common allocators take
/// memory from the system for each request, whose pages cost more than the read.
constexpr std::size_t FirstCapacity = std::size_t{96} * 1024;

template <class Path>
std::optional<Bytes> Read(const Path& path)
{
    std::ifstream file;
    // Not in text mode: on Windows a Ctrl-Z would end the file there, and an edit would lose the rest. The
    // carriage returns that text mode removes are trimmed with the lines.
    OpenFile(file, path, std::ios::in | std::ios::binary);
    if (!file.is_open())
        return std::nullopt;

    // The reported size only tells how much memory to use after the first buffer: a pipe reports none, system
    // files report too little, a directory anything.
    const std::streamoff reported = file.rdbuf()->pubseekoff(0, std::ios::end);
    if (reported >= 0 && file.rdbuf()->pubseekoff(0, std::ios::beg) != 0)
        return std::nullopt; // it would be read from its end, as an empty file

    std::size_t capacity = FirstCapacity;
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

} // namespace

std::optional<Bytes> ReadFile(const std::string& path) { return Read(path); }
std::optional<Bytes> ReadFile(const std::wstring& path) { return Read(path); }

void Open(std::ofstream& file, const std::string& path) { OpenFile(file, path, std::ios::out); }
void Open(std::ofstream& file, const std::wstring& path) { OpenFile(file, path, std::ios::out); }

Encoding::Encoding(const std::locale& locale) : m_locale(locale) {}

bool Encoding::BytesAreCharacters() const
{
    return &m_conversion == &std::use_facet<Conversion>(std::locale::classic());
}

std::optional<std::wstring> Encoding::Decode(std::string_view bytes) const
{
    std::wstring text(bytes.size(), L'\0');
    if (BytesAreCharacters()) {
        std::transform(bytes.begin(), bytes.end(), text.begin(),
                       [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
        return text;
    }
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
        if (from == before) { // stuck at a character that cannot be encoded
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
