// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/ini/ScanFile.h"

#include <optional>

using ini::IsRecord;
using ini::IsSection;
using ini::String;

namespace {

/// Calls `visit` with the first record of the file that matches. The rest of the file is scanned all the
/// same, so that a malformed header is reported whatever is asked.
/// @return whether there is such a record; nothing when the file cannot be read
template <class Char, class Matches, class Visitor>
std::optional<bool> VisitFirst(const String<Char>& path, Matches matches, Visitor visit)
{
    bool isFound = false;
    // A copy of `matches` in the callback stays in registers.
    const bool isRead = ini::ScanFile(path, [&, matches](const auto& record) mutable {
        if (!isFound && matches(record)) {
            isFound = true;
            visit(record);
        }
    });
    return isRead ? std::optional(isFound) : std::nullopt;
}

template <class Char>
auto CopyRecord(const String<Char>& key, const String<Char>& section, const String<Char>& path)
{
    std::vector<INIParser::BasicRecord<Char>> found;
    VisitFirst(path, IsRecord<Char>(key, section),
               [&](const auto& record) { found.push_back(ini::ToRecord<Char>(record)); });
    return found;
}

template <class Char>
String<Char> CopyValue(const String<Char>& key, const String<Char>& section, const String<Char>& path)
{
    String<Char> value;
    VisitFirst(path, IsRecord<Char>(key, section),
               [&](const auto& record) { value = ini::Copy<Char>(record.Value); });
    return value;
}

/// A file that cannot be read is said to hold whatever is asked for; callers rely on it.
template <class Char, class Matches>
bool Exists(const String<Char>& path, Matches matches)
{
    return VisitFirst(path, matches, [](const auto&) {}).value_or(true);
}

} // namespace

std::vector<INIParser::Record> INIParser::GetRecord(std::string key, std::string section, std::string path)
{
    return CopyRecord(key, section, path);
}

std::vector<INIParser::WRecord> INIParser::GetRecord(std::wstring key, std::wstring section,
                                                     std::wstring path)
{
    return CopyRecord(key, section, path);
}

std::string INIParser::GetValue(std::string key, std::string section, std::string path)
{
    return CopyValue(key, section, path);
}

std::wstring INIParser::GetValue(std::wstring key, std::wstring section, std::wstring path)
{
    return CopyValue(key, section, path);
}

bool INIParser::RecordExists(std::string key, std::string section, std::string path)
{
    return Exists(path, IsRecord<char>(key, section));
}

bool INIParser::RecordExists(std::wstring key, std::wstring section, std::wstring path)
{
    return Exists(path, IsRecord<wchar_t>(key, section));
}

bool INIParser::SectionExists(std::string section, std::string path)
{
    return Exists(path, IsSection<char>(section));
}

bool INIParser::SectionExists(std::wstring section, std::wstring path)
{
    return Exists(path, IsSection<wchar_t>(section));
}

std::vector<INIParser::Record> INIParser::GetSection(std::string section, std::string path)
{
    std::vector<Record> keys;
    ini::ScanFile(path, [&, isSection = IsSection<char>(section)](const auto& record) mutable {
        if (!record.Key.empty() && isSection(record))
            keys.push_back(ini::ToRecord<char>(record));
    });
    return keys;
}

std::vector<std::string> INIParser::GetSectionNames(std::string path)
{
    std::vector<std::string> names;
    ini::ScanFile(path, [&](const auto& record) {
        if (record.Key.empty())
            names.emplace_back(record.Section);
    });
    return names;
}
