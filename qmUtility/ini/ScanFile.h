#pragma once

/// @file
/// What the operations read a file with: its records one after the other, as views. A wide operation is
/// handed views of bytes where each byte is the `wchar_t` of the same value, so that only what it keeps is
/// converted.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ini {

template <class Char>
using String = std::basic_string<Char>;

/// The `wchar_t` of a byte; any other character as it is.
template <class Char, class From>
Char Widen(From c)
{
    if constexpr (std::is_same_v<Char, From>)
        return c;
    else
        return static_cast<Char>(static_cast<unsigned char>(c));
}

template <class Char, class From>
String<Char> Copy(std::basic_string_view<From> text)
{
    if constexpr (std::is_same_v<Char, From>)
        return String<Char>(text);
    else {
        String<Char> copy(text.size(), Char());
        std::transform(text.begin(), text.end(), copy.begin(), Widen<Char, From>);
        return copy;
    }
}

template <class Char, class From>
bool Equal(const String<Char>& name, std::basic_string_view<From> field)
{
    if constexpr (std::is_same_v<Char, From>)
        return name == field;
    else
        return std::equal(name.begin(), name.end(), field.begin(), field.end(),
                          [](Char a, From b) { return a == Widen<Char>(b); });
}

template <class Char, class From>
INIParser::BasicRecord<Char> ToRecord(const RecordView<From>& view)
{
    String<Char> comments;
    EachComment(view.Comments, [&](auto line) { (comments += Copy<Char>(line)) += Char('\n'); });
    return {std::move(comments), Widen<Char>(view.Commented), Copy<Char>(view.Section), Copy<Char>(view.Key),
            Copy<Char>(view.Value)};
}

/// Calls `listener` with the `RecordView` of each record of a file, once all of the file was read.
/// @return false, with nothing called, when the file cannot be opened, read to its end, or decoded
/// @throws std::out_of_range for a malformed header, as `Scan` does
template <class Char, class Listener>
bool ScanFile(const String<Char>& path, Listener&& listener)
{
    std::ifstream file;
    Open(file, path);
    if (!file.is_open())
        return false;
    const auto bytes = ReadWhole(file);
    if (!bytes)
        return false;
    if constexpr (!std::is_same_v<Char, char>) {
        const Encoding encoding;
        if (!encoding.BytesAreCharacters()) {
            const auto text = encoding.Decode(*bytes);
            if (text)
                Scan(std::wstring_view(*text), listener);
            return text.has_value();
        }
    }
    Scan(std::string_view(*bytes), listener);
    return true;
}

} // namespace ini
