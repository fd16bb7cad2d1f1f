#include "qmUtility/ini/INIParser.h"

#include <algorithm>

using Record = INIParser::Record;
using Records = std::vector<Record>;

namespace {

template <class Record, class String>
auto FindSection(std::vector<Record>& records, const String& section)
{
    return std::find_if(records.begin(), records.end(),
                        [&](const Record& record) { return record.Section == section; });
}

template <class Record, class String>
auto FindRecord(std::vector<Record>& records, const String& key, const String& section)
{
    return std::find_if(records.begin(), records.end(),
                        [&](const Record& record) { return record.Section == section && record.Key == key; });
}

/// An edit of the first record of this key and section; no edit when there is none.
template <class Change>
auto FirstRecord(const std::string& key, const std::string& section, Change change)
{
    return [&key, &section, change](Records& records) {
        const auto at = FindRecord(records, key, section);
        if (at == records.end())
            return false;
        change(*at);
        return true;
    };
}

/// An edit of every record of this section. That there is none does not keep the file from being rewritten.
template <class Change>
auto EveryRecord(const std::string& section, Change change)
{
    return [&section, change](Records& records) {
        for (Record& record : records)
            if (record.Section == section)
                change(record);
        return true;
    };
}

/// Replaces a record's comments. The line break that is appended goes by the length of the text alone: a text
/// that ends in one gets another, and one of a single character gets none.
auto SetComments(const std::string& comments)
{
    return
        [&comments](Record& record) { record.Comments = comments.size() < 2 ? comments : comments + '\n'; };
}

template <class Char>
auto SetRecordValue(const std::basic_string<Char>& key, const std::basic_string<Char>& value,
                    const std::basic_string<Char>& section, const std::basic_string<Char>& path)
{
    return [&](std::vector<INIParser::BasicRecord<Char>>& records) {
        constexpr auto live = Char(' ');
        if (!INIParser::SectionExists(section, path)) {
            records.push_back({{}, live, section, {}, {}});
            records.push_back({{}, live, section, key, value});
            return true;
        }
        // Both questions read the file afresh. When someone else changed it meanwhile, what they found may
        // not be in the list.
        const bool exists = INIParser::RecordExists(key, section, path);
        const auto at = exists ? FindRecord(records, key, section) : FindSection(records, section);
        if (at == records.end())
            return false;
        if (exists)
            at->Value = value;
        else
            records.insert(at + 1, {{}, live, section, key, value});
        return true;
    };
}

} // namespace

template <class Char, class Change>
bool INIParser::Edit(const std::basic_string<Char>& path, Change change)
{
    std::vector<BasicRecord<Char>> records;
    return Load(path, records) && change(records) && Save(path, records);
}

bool INIParser::SetValue(std::string key, std::string value, std::string section, std::string path)
{
    return Edit(path, SetRecordValue(key, value, section, path));
}

bool INIParser::SetValue(std::wstring key, std::wstring value, std::wstring section, std::wstring path)
{
    return Edit(path, SetRecordValue(key, value, section, path));
}

bool INIParser::AddSection(std::string section, std::string path)
{
    return Edit(path, [&](Records& records) {
        records.push_back({{}, ' ', section, {}, {}});
        return true;
    });
}

bool INIParser::DeleteRecord(std::string key, std::string section, std::string path)
{
    return Edit(path, [&](Records& records) {
        const auto at = FindRecord(records, key, section);
        if (at == records.end())
            return false;
        records.erase(at);
        return true;
    });
}

bool INIParser::DeleteSection(std::string section, std::string path)
{
    return Edit(path, [&](Records& records) {
        std::erase_if(records, [&](const Record& record) { return record.Section == section; });
        return true;
    });
}

bool INIParser::RenameSection(std::string oldName, std::string newName, std::string path)
{
    return Edit(path, EveryRecord(oldName, [&](Record& record) { record.Section = newName; }));
}

bool INIParser::CommentRecord(CommentChar character, std::string key, std::string section, std::string path)
{
    return Edit(path, FirstRecord(key, section,
                                  [&](Record& record) { record.Commented = static_cast<char>(character); }));
}

bool INIParser::CommentSection(char character, std::string section, std::string path)
{
    return Edit(path, EveryRecord(section, [&](Record& record) { record.Commented = character; }));
}

bool INIParser::UnCommentRecord(std::string key, std::string section, std::string path)
{
    return Edit(path, FirstRecord(key, section, [](Record& record) { record.Commented = ' '; }));
}

bool INIParser::UnCommentSection(std::string section, std::string path)
{
    return Edit(path, EveryRecord(section, [](Record& record) { record.Commented = ' '; }));
}

bool INIParser::SetRecordComments(std::string comments, std::string key, std::string section,
                                  std::string path)
{
    return Edit(path, FirstRecord(key, section, SetComments(comments)));
}

bool INIParser::SetSectionComments(std::string comments, std::string section, std::string path)
{
    return SetRecordComments(comments, {}, section, path); // a section record is one with an empty key
}
