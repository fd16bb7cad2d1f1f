#pragma once

/// @file
/// What is expected of INI files, said as plainly as possible: lines are copied one by one, every step is
/// taken by itself, and nothing is fast. The fuzzers hold the library against it, so it shares nothing with
/// the library but the record.

#include "qmUtility/ini/INIDocument.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

/// Ends the process, which the fuzzer takes for a crash, when something does not hold.
inline void Require(bool holds, const char* what)
{
    if (holds)
        return;
    (void)std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

namespace model {

template <class Char>
using String = std::basic_string<Char>;
template <class Char>
using Record = INIParser::BasicRecord<Char>;
template <class Char>
using Records = std::vector<Record<Char>>;

template <class Char>
bool Has(const String<Char>& text, char c)
{
    return text.find(Char(c)) != text.npos;
}

template <class Char>
String<Char> Trim(const String<Char>& text)
{
    const Char blanks[] = {' ', '\t', '\n', '\r', 0};
    const auto first = text.find_first_not_of(blanks);
    return first == text.npos ? String<Char>()
                              : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class Char>
String<Char> Widen(const std::string& bytes)
{
    String<Char> text;
    for (const char c : bytes)
        text += static_cast<Char>(static_cast<unsigned char>(c));
    return text;
}

/// @throws std::out_of_range for a header without a "]"
template <class Char>
Records<Char> Load(const String<Char>& text)
{
    Records<Char> records;
    String<Char> section;
    String<Char> pending;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find(Char('\n'), begin)) != text.npos; begin = end + 1) {
        String<Char> line = Trim(text.substr(begin, end - begin));
        if (line.empty())
            continue;
        Record<Char> record;
        if (line[0] == '#' || line[0] == ';') {
            if (!Has(line, '[') && !Has(line, '=')) {
                pending += line + Char('\n');
                continue;
            }
            record.Commented = line[0];
            line = Trim(line.substr(1));
        }
        if (Has(line, '[')) {
            line = line.substr(1);
            if (!Has(line, ']'))
                throw std::out_of_range("invalid string position");
            line = line.substr(0, line.find(Char(']')));
            section = line;
            record.Section = section;
            record.Comments = pending;
            pending.clear();
        }
        if (Has(line, '=')) {
            record.Section = section;
            record.Key = line.substr(0, line.find(Char('=')));
            record.Value = line.substr(line.find(Char('=')) + 1);
            record.Comments = pending;
            pending.clear();
        }
        if (pending.empty())
            records.push_back(record);
    }
    return records;
}

/// The line of a record, without what stands before it.
template <class Char>
String<Char> Line(const Record<Char>& record)
{
    if (record.Key.empty())
        return Char('[') + record.Section + Char(']') + Char('\n');
    return record.Key + Char('=') + record.Value + Char('\n');
}

inline std::string Save(const Records<char>& records)
{
    std::string text;
    for (const auto& record : records)
        text += record.Comments + record.Commented + Line(record);
    return text;
}

/// What is written for records that hold bytes, as all do that were read with the classic locale.
inline std::string Save(const Records<wchar_t>& records)
{
    std::wstring text;
    bool isFirst = true;
    for (const auto& record : records) {
        text += record.Comments;
        if (record.Key.empty() && !isFirst)
            text += L'\n';
        if (record.Key.empty())
            isFirst = false;
        if (record.Commented != L' ')
            text += record.Commented;
        text += Line(record);
    }
    std::string bytes;
    for (const wchar_t c : text)
        bytes += c >= 0 && c <= 255 ? static_cast<char>(c) : '?';
    return bytes;
}

inline std::string Content(const Records<char>& records)
{
    std::string text;
    for (const auto& record : records)
        text += record.Comments + (record.Commented == ' ' ? "" : std::string(1, record.Commented)) +
                Line(record);
    return text;
}

template <class Char>
bool operator==(const Records<Char>& a, const Records<Char>& b)
{
    const auto same = [](const Record<Char>& x, const Record<Char>& y) {
        return x.Comments == y.Comments && x.Commented == y.Commented && x.Section == y.Section &&
               x.Key == y.Key && x.Value == y.Value;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

template <class Char>
auto Find(Records<Char>& records, const String<Char>& key, const String<Char>& section)
{
    return std::find_if(records.begin(), records.end(),
                        [&](const auto& record) { return record.Section == section && record.Key == key; });
}

template <class Char>
auto Find(Records<Char>& records, const String<Char>& section)
{
    return std::find_if(records.begin(), records.end(),
                        [&](const auto& record) { return record.Section == section; });
}

template <class Char>
void SetValue(Records<Char>& records, const String<Char>& key, const String<Char>& value,
              const String<Char>& section)
{
    const Record<Char> added = {{}, Char(' '), section, key, value};
    if (Find(records, section) == records.end()) {
        records.push_back({{}, Char(' '), section, {}, {}});
        records.push_back(added);
    } else if (Find(records, key, section) == records.end())
        records.insert(Find(records, section) + 1, added);
    else
        Find(records, key, section)->Value = value;
}

inline Records<char> Sorted(const Records<char>& records, bool descending)
{
    // The order of equal names is left open. Here it is what the same sort makes of the same list.
    const auto sort = [descending](Records<char>& list, std::string Record<char>::*field) {
        std::sort(list.begin(), list.end(), [&](const auto& a, const auto& b) {
            return descending ? b.*field < a.*field : a.*field < b.*field;
        });
    };
    Records<char> headers;
    for (const auto& record : records)
        if (record.Key.empty())
            headers.push_back(record);
    sort(headers, &Record<char>::Section);
    Records<char> sorted;
    for (const auto& header : headers) {
        Records<char> keys;
        for (const auto& record : records)
            if (!record.Key.empty() && record.Section == header.Section)
                keys.push_back(record);
        sort(keys, &Record<char>::Key);
        sorted.push_back(header);
        sorted.insert(sorted.end(), keys.begin(), keys.end());
    }
    return sorted;
}

} // namespace model
