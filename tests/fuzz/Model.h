// SPDX-License-Identifier: MIT
#pragma once

// The expected behaviour, written for clarity rather than speed. The fuzzers compare the library with it;
// the two share only the record.

#include "qmUtility/ini/INIRecord.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

inline bool operator==(const BasicINIRecord<char>& a, const BasicINIRecord<char>& b) {
    return a.Comments == b.Comments && a.Commented == b.Commented && a.Section == b.Section &&
           a.Key == b.Key && a.Value == b.Value;
}

namespace model {

struct Record : BasicINIRecord<char> {
    bool IsHeader = false;    ///< whether its line begins a section
    bool IsNothing = false;   ///< whether its line is neither a header nor a key
    std::string Active = {};  ///< the section that it belongs to when it is active

    bool IsActive() const { return Commented == ' '; }
};
using Records = std::vector<Record>;

inline bool Has(const std::string& text, char c) { return text.find(c) != std::string::npos; }

inline std::string Trim(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\n\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\n\r") - first + 1);
}

constexpr auto ByteOrderMark = "\xEF\xBB\xBF";

/// What `INIParser` takes a line for, without a character that comments it out.
/// @throws INIFormatError for a header without a "]"
inline Record ReadParser(std::string line) {
    Record record;
    record.IsHeader = Has(line, '[');
    if (record.IsHeader) line.erase(0, 1);
    if (record.IsHeader && !Has(line, ']')) throw INIFormatError(0);
    if (record.IsHeader) record.Section = line.erase(line.find(']'));
    record.IsNothing = !record.IsHeader && !Has(line, '=');
    if (Has(line, '=')) {
        record.Key = line.substr(0, line.find('='));
        record.Value = line.substr(line.find('=') + 1);
    }
    return record;
}

/// What most programs take a line for, or what they would take a comment for.
/// @param line without a character that comments it out, and trimmed
inline Record ReadCommon(const std::string& line, bool isComment, bool isTrimmed) {
    Record record;
    if (line.starts_with('[') && Has(line, ']')) record.Section = Trim(line.substr(1, line.find(']') - 1));
    record.IsHeader = !record.Section.empty();
    if (!record.IsHeader && Has(line, '=')) record.Key = Trim(line.substr(0, line.find('=')));
    if (!record.Key.empty()) record.Value = Trim(line.substr(line.find('=') + 1));
    const std::string name = record.Section + record.Key;
    const bool isPlain = record.IsHeader ? line.find(']') + 1 == line.size()
                                         : name.find_first_of(" \t\r") == std::string::npos;
    const bool isProse = isComment && (name[0] == '#' || name[0] == ';' || (isTrimmed && !isPlain));
    record.IsNothing = name.empty() || isProse;
    return record;
}

/// @throws INIFormatError for a header without a "]", in the syntax `Parser`
inline Records Load(const std::string& text, INISyntax syntax) {
    const bool isCommon = syntax == INISyntax::Common;
    Records records;
    std::string active;  // the section of active keys
    std::string any;     // the section of commented-out ones
    std::string pending;
    std::istringstream lines(text.substr(isCommon && text.starts_with(ByteOrderMark) ? 3 : 0));
    for (std::string line; std::getline(lines, line) && (isCommon || !lines.eof());) {
        line = Trim(line);
        if (line.empty() && !isCommon) continue;
        const bool isMarked = line.starts_with('#') || line.starts_with(';');
        const std::string rest = isMarked ? Trim(line.substr(1)) : line;
        Record record =
            isCommon ? ReadCommon(rest, isMarked, rest.size() + 1 != line.size()) : ReadParser(rest);
        if (isMarked && record.IsNothing) {
            pending += line + '\n';
            continue;
        }
        record.Commented = isMarked ? line[0] : ' ';
        if (record.IsHeader) any = record.Section;
        if (record.IsHeader && !(isCommon && isMarked)) active = any;
        record.Active = active;
        if (!record.IsHeader && !record.IsNothing) record.Section = isMarked ? any : active;
        const bool losesComments = !isCommon && record.IsHeader && Has(record.Section, '=');
        record.Comments = losesComments ? "" : pending;
        if (!record.IsNothing || (!isCommon && pending.empty())) records.push_back(record);
        if (!record.IsNothing || isCommon) pending.clear();
    }
    return records;
}

/// The text of the records, with what stands before an active line.
inline std::string Text(const Records& records, const std::string& active) {
    std::string text;
    for (const auto& record : records)
        text += record.Comments + (record.IsActive() ? active : std::string(1, record.Commented)) +
                (record.Key.empty() ? '[' + record.Section + ']' : record.Key + '=' + record.Value) + '\n';
    return text;
}

/// @return the records sorted as `INIParser` sorts them, which drops keys without a header
inline Records Sorted(const Records& records, bool descending) {
    // The order of equal names is left open. Here it is what the same sort makes of the same list.
    const auto select = [&](auto isOther, std::string Record::*name) {
        Records list = records;
        std::erase_if(list, isOther);
        std::ranges::sort(
            list, [=](const auto& a, const auto& b) { return descending ? b < a : a < b; }, name);
        return list;
    };
    Records sorted;
    for (const auto& header : select([](const auto& x) { return !x.Key.empty(); }, &Record::Section)) {
        const auto isOther = [&](const auto& x) { return x.Key.empty() || x.Section != header.Section; };
        sorted.push_back(header);
        std::ranges::copy(select(isOther, &Record::Key), std::back_inserter(sorted));
    }
    return sorted;
}

}  // namespace model
