// SPDX-License-Identifier: MIT
#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <type_traits>
#include <utility>

namespace ini {
namespace {

const std::string* NativePath(const std::string& path) { return &path; }

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
template <class Path>
bool Open(std::filebuf& file, const Path& path, std::ios::openmode mode)
{
    file.pubimbue(std::locale::classic()); // bytes as they are, whatever the global locale
    const auto native = NativePath(path);
    return native && path.find(typename Path::value_type()) == Path::npos &&
           file.open(*native, mode) != nullptr;
}

/// The first buffer of a read: most INI files fit, and it is below the size from which common allocators take
/// memory from the system for each request, whose pages cost more than the read.
constexpr std::size_t FirstCapacity = std::size_t{96} * 1024;

template <class Path>
std::optional<Text<char>> Read(const Path& path)
{
    std::filebuf file;
    // Not in text mode: on Windows a Ctrl-Z would end the file there, and an edit would lose the rest. The
    // carriage returns that text mode removes are trimmed with the lines.
    if (!Open(file, path, std::ios::in | std::ios::binary))
        return std::nullopt;

    // The reported size only tells how much memory to use after the first buffer: a pipe reports none, system
    // files report too little, a directory anything.
    const std::streamoff reported = file.pubseekoff(0, std::ios::end);
    if (reported >= 0 && file.pubseekoff(0, std::ios::beg) != 0)
        return std::nullopt; // it would be read from its end, as an empty file

    std::istream stream(&file);
    std::size_t capacity = FirstCapacity;
    Text<char> bytes(capacity);
    for (;;) {
        // It tells a read error from the end of the file, which libc++ does not.
        const int before = std::exchange(errno, 0);
        stream.read(bytes.Data.get() + bytes.Size, static_cast<std::streamsize>(capacity - bytes.Size));
        bytes.Size += static_cast<std::size_t>(stream.gcount());
        const int error = std::exchange(errno, before);
        if (error == EINTR) { // nothing is lost: goes on where it was interrupted
            stream.clear();
            continue;
        }
        if (stream.bad() || error != 0)
            return std::nullopt;
        if (stream.eof())
            return bytes;
        capacity =
            std::max(capacity * 2, static_cast<std::size_t>(std::max<std::streamoff>(reported, 0)) + 1);
        Text<char> larger(capacity);
        std::copy_n(bytes.Data.get(), bytes.Size, larger.Data.get());
        bytes.Data = std::move(larger.Data);
    }
}

} // namespace

std::optional<Text<char>> ReadFile(const std::string& path) { return Read(path); }
std::optional<Text<char>> ReadFile(const std::wstring& path) { return Read(path); }

bool OpenForWriting(std::filebuf& file, const std::string& path) { return Open(file, path, std::ios::out); }
bool OpenForWriting(std::filebuf& file, const std::wstring& path) { return Open(file, path, std::ios::out); }

Encoding<wchar_t>::Encoding(const std::locale& locale) : m_locale(locale) {}

std::optional<Text<wchar_t>> Encoding<wchar_t>::Decode(Text<char> bytes) const
{
    const std::string_view from = bytes;
    Text<wchar_t> text(from.size());
    wchar_t* const begin = text.Data.get();
    wchar_t* end = begin;
    if (BytesAreCharacters())
        end = std::transform(from.begin(), from.end(), begin,
                             [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    else {
        std::mbstate_t state{};
        const char* read = nullptr;
        const auto result = m_conversion.in(state, from.data(), from.data() + from.size(), read, begin,
                                            begin + from.size(), end);
        if (result != Conversion::ok)
            return std::nullopt;
    }
    text.Size = static_cast<std::size_t>(end - begin);
    return text;
}

char* Encoding<wchar_t>::EncodeByLocale(std::wstring_view& text, char* to, char* end)
{
    while (!text.empty() && end - to >= MB_LEN_MAX) {
        const wchar_t* next = text.data();
        m_conversion.out(m_state, next, next + text.size(), next, to, end, to);
        if (next == text.data()) { // there is room, so the character cannot be encoded
            const wchar_t mark = L'?';
            m_conversion.out(m_state, &mark, &mark + 1, next, to, end, to);
            next = text.data() + 1;
        }
        text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    }
    return to;
}

char* Encoding<wchar_t>::Finish(char* to, char* end)
{
    m_conversion.unshift(m_state, to, end, to);
    return to;
}

} // namespace ini
