// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The expected behaviour, written for clarity rather than speed. The fuzzers compare the library with it;
/// the two share only the record.

#include "qmUtility/ini/INIRecord.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// Ends the process, which the fuzzer reports as a crash, when something does not hold.
inline void Verify(bool holds, const char* what)
{
    if (holds)
        return;
    (void)std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline bool operator==(const BasicINIRecord<char>& a, const BasicINIRecord<char>& b)
{
    return a.Comments == b.Comments && a.Commented == b.Commented && a.Section == b.Section &&
           a.Key == b.Key && a.Value == b.Value;
}

namespace model {

struct Record : BasicINIRecord<char>
{
    bool IsHeader = false;   ///< whether its line begins a section
    bool IsNothing = false;  ///< whether its line is neither a header nor a key
    std::string Active = {}; ///< the section that it belongs to when it is active
};
using Records = std::vector<Record>;

inline bool Has(const std::string& text, char c) { return text.find(c) != std::string::npos; }

inline std::string Trim(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\n\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\n\r") - first + 1);
}

/// Reads as `INIParser` does.
/// @throws std::out_of_range for a header without a "]"
inline Records Load(const std::string& text)
{
    Records records;
    std::string section;
    std::string pending;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && !lines.eof();) {
        line = Trim(line);
        if (line.empty())
            continue;
        Record record;
        record.IsNothing = !Has(line, '[') && !Has(line, '=');
        if (line[0] == '#' || line[0] == ';') {
            if (record.IsNothing) {
                pending += line + '\n';
                continue;
            }
            record.Commented = line[0];
            line = Trim(line.substr(1));
        }
        if (Has(line, '[')) {
            line = line.substr(1);
            if (!Has(line, ']'))
                throw std::out_of_range("invalid string position");
            line.erase(line.find(']'));
            section = line;
            record.IsHeader = true;
            record.Section = section;
            record.Comments = pending;
            pending.clear();
        }
        if (Has(line, '=')) {
            record.Section = section;
            record.Key = line.substr(0, line.find('='));
            record.Value = line.substr(line.find('=') + 1);
            record.Comments = pending;
            pending.clear();
        }
        record.Active = record.Section;
        if (pending.empty())
            records.push_back(record);
    }
    return records;
}

constexpr auto ByteOrderMark = "\xEF\xBB\xBF";

/// What a line of the common syntax says, if it is not commented out.
/// @return a header, a key, or a record without names for any other line.
inline Record Meaning(const std::string& line)
{
    Record record;
    if (line[0] == '[' && Has(line, ']'))
        record.Section = Trim(line.substr(1, line.find(']') - 1));
    record.IsHeader = !record.Section.empty();
    if (!record.IsHeader && Has(line, '=')) {
        record.Key = Trim(line.substr(0, line.find('=')));
        record.Value = record.Key.empty() ? "" : Trim(line.substr(line.find('=') + 1));
    }
    return record;
}

/// Reads as most programs do.
inline Records LoadCommon(const std::string& text)
{
    Records records;
    std::string active; // the section of active keys
    std::string any;    // the section of commented-out ones
    std::string pending;
    std::istringstream lines(text.substr(text.starts_with(ByteOrderMark) ? 3 : 0));
    for (std::string line; std::getline(lines, line);) {
        line = Trim(line);
        const bool isMarked = line.starts_with('#') || line.starts_with(';');
        const std::string rest = isMarked ? Trim(line.substr(1)) : line;
        Record record = rest.empty() ? Record() : Meaning(rest);
        const std::string name = record.Section + record.Key;
        if (isMarked) {
            const bool isDirect = rest.size() + 1 == line.size();
            const bool isPlain = record.IsHeader ? rest.find(']') + 1 == rest.size()
                                                 : name.find_first_of(" \t\r") == std::string::npos;
            if (name.empty() || name[0] == '#' || name[0] == ';' || (!isDirect && !isPlain)) {
                pending += line + '\n';
                continue;
            }
            record.Commented = line[0];
        }
        if (!name.empty()) {
            if (record.IsHeader)
                any = name;
            if (record.IsHeader && !isMarked)
                active = name;
            if (!record.IsHeader)
                record.Section = isMarked ? any : active;
            record.Active = active;
            record.Comments = pending;
            records.push_back(record);
        }
        pending.clear();
    }
    return records;
}

/// The text of the records, with what stands before an active line.
inline std::string Text(const Records& records, const std::string& active)
{
    std::string text;
    for (const auto& record : records)
        text += record.Comments + (record.Commented == ' ' ? active : std::string(1, record.Commented)) +
                (record.Key.empty() ? '[' + record.Section + ']' : record.Key + '=' + record.Value) + '\n';
    return text;
}

inline bool IsActive(const Record& record) { return record.Commented == ' '; }

/// @return the records sorted as `INIParser` sorts them, which drops keys without a header
inline Records Sorted(const Records& records, bool descending)
{
    // The order of equal names is left open. Here it is what the same sort makes of the same list.
    const auto select = [&](auto isSelected, std::string Record::*field) {
        Records list;
        std::ranges::copy_if(records, std::back_inserter(list), isSelected);
        std::sort(list.begin(), list.end(), [&](const auto& a, const auto& b) {
            return descending ? b.*field < a.*field : a.*field < b.*field;
        });
        return list;
    };
    Records sorted;
    for (const auto& header : select([](const auto& x) { return x.Key.empty(); }, &Record::Section)) {
        const auto isKey = [&](const auto& x) { return !x.Key.empty() && x.Section == header.Section; };
        sorted.push_back(header);
        std::ranges::copy(select(isKey, &Record::Key), std::back_inserter(sorted));
    }
    return sorted;
}

} // namespace model
