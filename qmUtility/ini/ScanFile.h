// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Scanning files for single answers. A wide scan visits views of bytes where each byte is the `wchar_t` of
/// the same value: only the answer is converted.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <locale>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

namespace ini {

template <class Char>
using String = std::basic_string<Char>;

/// @return the `wchar_t` of a byte; any other character unchanged.
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
bool Equal(std::basic_string_view<Char> name, std::basic_string_view<From> field)
{
    if constexpr (std::is_same_v<Char, From>)
        return name == field;
    else
        return std::equal(name.begin(), name.end(), field.begin(), field.end(),
                          [](Char a, From b) { return a == Widen<Char>(b); });
}

/// @return the comment lines of a range that `Scan` has found: each trimmed and followed by one newline.
template <class Char, class From>
String<Char> NormalizedComments(std::basic_string_view<From> range)
{
    String<Char> comments;
    EachComment(range, [&](auto line) { (comments += Copy<Char>(line)) += Char('\n'); });
    return comments;
}

/// @return a copy of a record that `Scan` visits.
template <class Char, class From>
INIParser::BasicRecord<Char> ToRecord(const RecordView<From>& view)
{
    return {NormalizedComments<Char>(view.Comments), Widen<Char>(view.Commented), Copy<Char>(view.Section),
            Copy<Char>(view.Key), Copy<Char>(view.Value)};
}

/// Matches the records of a section. The records below one header share the view of its name, and those above
/// the first header a view of nothing, so names are compared once for each header: a record whose view is
/// that of the record before it gets the same answer.
template <class Char>
class IsSection
{
public:
    explicit IsSection(std::basic_string_view<Char> section) : m_section(section) {}

    template <class From>
    bool operator()(const RecordView<From>& record)
    {
        if (record.Section.data() != m_lastData || record.Section.size() != m_lastSize) {
            m_lastData = record.Section.data();
            m_lastSize = record.Section.size();
            m_isEqual = Equal(m_section, record.Section);
        }
        return m_isEqual;
    }

private:
    std::basic_string_view<Char> m_section;
    const void* m_lastData = nullptr;
    std::size_t m_lastSize = std::basic_string_view<Char>::npos; // no record's
    bool m_isEqual = false;
};

/// Matches the records of a key in a section.
template <class Char>
class IsRecord
{
public:
    IsRecord(std::basic_string_view<Char> key, std::basic_string_view<Char> section)
        : m_key(key), m_isSection(section)
    {}

    template <class From>
    bool operator()(const RecordView<From>& record)
    {
        return m_isSection(record) && Equal(m_key, record.Key);
    }

private:
    std::basic_string_view<Char> m_key;
    IsSection<Char> m_isSection;
};

/// Calls `visit` with the `RecordView` of each record of a file, once all of the file was read.
/// @return false, with nothing called, when the file cannot be opened, read to its end, or decoded
/// @throws std::out_of_range for a malformed header, as `Scan` does
template <class Char, class Visitor>
bool ScanFile(const String<Char>& path, Visitor&& visit)
{
    std::error_code ignored;
    auto bytes = platform::File::Read(platform::SystemPath(path), ignored);
    if (!bytes)
        return false;
    if constexpr (!std::is_same_v<Char, char>) {
        const Encoding<Char> encoding{std::locale()};
        if (!encoding.BytesAreCharacters()) {
            const auto text = encoding.Decode(std::move(*bytes));
            if (text)
                Scan(std::wstring_view(*text), visit);
            return text.has_value();
        }
    }
    Scan(std::string_view(*bytes), visit);
    return true;
}

} // namespace ini
