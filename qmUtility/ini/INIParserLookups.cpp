// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/ini/Records.h"
#include "qmUtility/ini/TextFile.h"
#include "qmUtility/platform/File.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <system_error>
#include <type_traits>
#include <utility>

// Only the answer is copied. In the wide form, where each byte is the `wchar_t` of the same value, bytes are
// scanned and only the answer is converted.

using ini::View;

namespace {

template <class Char>
using String = std::basic_string<Char>;

/// @return the `wchar_t` of a byte; any other character unchanged.
template <class Char, class From>
Char Widen(From c) {
    return static_cast<Char>(static_cast<std::make_unsigned_t<From>>(c));
}

template <class Char, class From>
String<Char> Copy(View<From> text) {
    String<Char> copy(text.size(), Char());
    std::transform(text.begin(), text.end(), copy.begin(), Widen<Char, From>);
    return copy;
}

template <class Char, class From>
BasicINIRecord<Char> Copy(const ini::RecordView<From>& record) {
    String<Char> comments = Copy<Char>(record.Comments);
    comments.resize(ini::TidyComments<Char>(comments.data(), comments).size());
    return {std::move(comments), Widen<Char>(record.Commented), Copy<Char>(record.Section),
            Copy<Char>(record.Key), Copy<Char>(record.Value)};
}

template <class Char, class From>
bool Equal(View<Char> name, View<From> field) {
    if constexpr (std::is_same_v<Char, From>)
        return name == field;
    else
        return std::equal(name.begin(), name.end(), field.begin(), field.end(),
                          [](Char a, From b) { return a == Widen<Char>(b); });
}

/// Calls `visit` with the records of a section that has a name, without the comments above its headers.
/// Passes over the text between the headers of other sections.
/// @throws INIFormatError for a malformed header in any section
template <class Char, class From, class Visitor>
void ScanSection(View<From> text, View<Char> section, Visitor& visit) {
    constexpr std::size_t none = View<From>::npos;
    bool isInSection = false;
    std::size_t begin = 0;  // of the last header line
    for (std::size_t next = 0;;) {
        const std::size_t bracket = text.find('[', next);
        const std::size_t end = bracket != none ? text.find('\n', bracket) : none;
        const std::size_t line =
            end != none ? text.rfind('\n', bracket) + 1 : text.size();  // `none` + 1 is 0
        if (isInSection) ini::Scan(text.substr(begin, line - begin), visit);
        if (end == none) return;
        next = end + 1;
        ini::ScanLines<INISyntax::Parser>(text.substr(line, next - line), [&](const ini::Line<From>& header) {
            if (header.Kind == ini::LineKind::MalformedHeader) ini::ThrowMalformed(text, header.Raw.data());
            isInSection = Equal(section, header.Section);
        });
        begin = line;
    }
}

/// Calls `visit` with records of a file: at least with those of a section, or with all of them for an empty
/// name. Comments above a header come with all records only.
/// @return false, with nothing called, when the file cannot be opened, read to its end, or decoded
/// @throws INIFormatError for a malformed header, whatever the section
template <class Char, class Visitor>
bool ScanFile(const String<Char>& path, View<Char> section, Visitor visit) {
    const auto scan = [&](auto text) {
        if (section.empty())
            ini::Scan(text, visit);
        else
            ScanSection(text, section, visit);
        return true;
    };
    std::error_code error;
    auto bytes = platform::File::Read(platform::SystemPath(path), error);
    if (!bytes) return false;
    const ini::Encoding<Char> encoding{std::locale()};
    if (encoding.BytesAreCharacters()) return scan(View<char>(*bytes));
    const auto text = encoding.Decode(std::move(*bytes));
    return text && scan(View<Char>(*text));
}

/// Calls `visit` with the first record of a key and section.
/// @return whether there is one; true also when the file cannot be read, which callers rely on.
template <class Char, class Visitor>
bool VisitFirst(View<Char> key, View<Char> section, const String<Char>& path, Visitor visit) {
    bool isFound = false;
    // An empty key names a header, which comes with its comments.
    const bool isRead = ScanFile(path, key.empty() ? key : section, [&](const auto& record) {
        if (!isFound && Equal(key, record.Key) && Equal(section, record.Section)) {
            isFound = true;
            visit(record);
        }
    });
    return isFound || !isRead;
}

template <class Char>
auto CopyRecord(View<Char> key, View<Char> section, const String<Char>& path) {
    std::vector<BasicINIRecord<Char>> found;
    VisitFirst(key, section, path, [&](const auto& record) { found.push_back(Copy<Char>(record)); });
    return found;
}

template <class Char>
String<Char> CopyValue(View<Char> key, View<Char> section, const String<Char>& path) {
    String<Char> value;
    VisitFirst(key, section, path, [&](const auto& record) { value = Copy<Char>(record.Value); });
    return value;
}

/// @return whether there is a record of a section; true also when the file cannot be read.
template <class Char>
bool HasSection(View<Char> section, const String<Char>& path) {
    bool isFound = false;
    const bool isRead =
        ScanFile(path, section, [&](const auto& record) { isFound |= Equal(section, record.Section); });
    return isFound || !isRead;
}

}  // namespace

std::vector<INIParser::Record> INIParser::GetRecord(std::string key, std::string section, std::string path) {
    return CopyRecord<char>(key, section, path);
}

std::vector<INIParser::WRecord> INIParser::GetRecord(std::wstring key, std::wstring section,
                                                     std::wstring path) {
    return CopyRecord<wchar_t>(key, section, path);
}

std::string INIParser::GetValue(std::string key, std::string section, std::string path) {
    return CopyValue<char>(key, section, path);
}

std::wstring INIParser::GetValue(std::wstring key, std::wstring section, std::wstring path) {
    return CopyValue<wchar_t>(key, section, path);
}

bool INIParser::RecordExists(std::string key, std::string section, std::string path) {
    return VisitFirst<char>(key, section, path, [](const auto&) {});
}

bool INIParser::RecordExists(std::wstring key, std::wstring section, std::wstring path) {
    return VisitFirst<wchar_t>(key, section, path, [](const auto&) {});
}

bool INIParser::SectionExists(std::string section, std::string path) {
    return HasSection<char>(section, path);
}

bool INIParser::SectionExists(std::wstring section, std::wstring path) {
    return HasSection<wchar_t>(section, path);
}

std::vector<INIParser::Record> INIParser::GetSection(std::string section, std::string path) {
    std::vector<Record> keys;
    ScanFile<char>(path, section, [&](const auto& record) {
        if (!record.Key.empty() && record.Section == section) keys.push_back(Copy<char>(record));
    });
    return keys;
}

std::vector<std::string> INIParser::GetSectionNames(std::string path) {
    std::vector<std::string> names;
    ScanFile<char>(path, {}, [&](const auto& record) {
        if (record.Key.empty()) names.emplace_back(record.Section);
    });
    return names;
}
