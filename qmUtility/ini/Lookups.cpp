#include "qmUtility/ini/INIParser.h"
#include "qmUtility/ini/ScanFile.h"

#include <optional>

using ini::String;

namespace {

/// Calls `take` with the first record of the file that `matches`. The rest of the file is read all the same,
/// so that a malformed header below is reported whatever was asked.
/// @return whether there was such a record, or nothing when the file cannot be read
template <class Char, class Matches, class Take>
std::optional<bool> TakeFirst(const String<Char>& path, Matches matches, Take take)
{
    bool found = false;
    const bool isRead = ini::ScanFile(path, [&](const auto& record) {
        if (!found && matches(record)) {
            found = true;
            take(record);
        }
    });
    return isRead ? std::optional(found) : std::nullopt;
}

/// Tells the records of a section. Those below one header share the place of its name in the text, so the
/// names are compared once a header.
template <class Char>
auto IsSection(const String<Char>& section)
{
    return
        [&section, place = static_cast<const void*>(&section), isEqual = false](const auto& record) mutable {
            if (place != record.Section.data()) {
                place = record.Section.data();
                isEqual = ini::Equal(section, record.Section);
            }
            return isEqual;
        };
}

template <class Char>
auto IsRecord(const String<Char>& key, const String<Char>& section)
{
    return [&key, isSection = IsSection(section)](const auto& record) mutable {
        return isSection(record) && ini::Equal(key, record.Key);
    };
}

constexpr auto nothing = [](const auto&) {};

template <class Char>
auto FindRecord(const String<Char>& key, const String<Char>& section, const String<Char>& path)
{
    std::vector<INIParser::BasicRecord<Char>> found;
    TakeFirst(path, IsRecord(key, section),
              [&](const auto& record) { found.push_back(ini::ToRecord<Char>(record)); });
    return found;
}

template <class Char>
String<Char> FindValue(const String<Char>& key, const String<Char>& section, const String<Char>& path)
{
    String<Char> value;
    TakeFirst(path, IsRecord(key, section),
              [&](const auto& record) { value = ini::Copy<Char>(record.Value); });
    return value;
}

} // namespace

std::vector<INIParser::Record> INIParser::GetRecord(std::string key, std::string section, std::string path)
{
    return FindRecord(key, section, path);
}

std::vector<INIParser::WRecord> INIParser::GetRecord(std::wstring key, std::wstring section,
                                                     std::wstring path)
{
    return FindRecord(key, section, path);
}

std::string INIParser::GetValue(std::string key, std::string section, std::string path)
{
    return FindValue(key, section, path);
}

std::wstring INIParser::GetValue(std::wstring key, std::wstring section, std::wstring path)
{
    return FindValue(key, section, path);
}

// A file that cannot be read is said to hold whatever is asked for; callers rely on it.

bool INIParser::RecordExists(std::string key, std::string section, std::string path)
{
    return TakeFirst(path, IsRecord(key, section), nothing).value_or(true);
}

bool INIParser::RecordExists(std::wstring key, std::wstring section, std::wstring path)
{
    return TakeFirst(path, IsRecord(key, section), nothing).value_or(true);
}

bool INIParser::SectionExists(std::string section, std::string path)
{
    return TakeFirst(path, IsSection(section), nothing).value_or(true);
}

bool INIParser::SectionExists(std::wstring section, std::wstring path)
{
    return TakeFirst(path, IsSection(section), nothing).value_or(true);
}

std::vector<INIParser::Record> INIParser::GetSection(std::string section, std::string path)
{
    std::vector<Record> keys;
    ini::ScanFile(path, [&, isSection = IsSection(section)](const auto& record) mutable {
        if (isSection(record) && !record.Key.empty())
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

std::vector<INIParser::Record> INIParser::GetSections(std::string path)
{
    std::vector<Record> sections;
    ini::ScanFile(path, [&](const auto& record) {
        if (record.Key.empty())
            sections.push_back(ini::ToRecord<char>(record));
    });
    return sections;
}
