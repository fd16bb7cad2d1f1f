// SPDX-License-Identifier: MIT
/// @file
/// The commands that read a file, and the one that creates one.

#include "qmUtility/platform/Utf8.h"
#include "qmini/Qmini.h"

#include <map>
#include <ostream>

namespace qmini {

namespace {

/// Prints each name once that `select` returns for a record.
template <class Select>
void PrintNames(const Call& call, const INIDocument& document, std::ostream& out, Select select)
{
    std::set<std::string_view> names;
    for (const auto& record : document)
        if (call.Commented || record.Commented == ' ')
            if (const std::string_view name = select(record); !name.empty() && names.insert(name).second)
                out << name << (call.EndsWithNul ? '\0' : '\n');
}

/// @return the text as a string of JSON
std::string JsonString(const Call& call, std::string_view view)
{
    const std::string text(view); // null-terminated
    std::string json = "\"";
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const char* const begin = at;
        const auto byte = static_cast<unsigned char>(*at);
        platform::DecodeUtf8(at);
        if (byte >= 0x80 && at - begin == 1)
            throw Failure(Failed, call.FileName() + ": not UTF-8, so no JSON: " + Quoted(text));
        if (byte < 0x20)
            ((json += byte < 16 ? "\\u000" : "\\u001") += "0123456789abcdef"[byte % 16]);
        else
            (json += byte == '"' || byte == '\\' ? "\\" : "").append(begin, at);
    }
    return json += '"';
}

/// Prints an object of objects. Of duplicate keys the first counts, as everywhere.
void PrintJson(const Call& call, const INIDocument& document, std::ostream& out)
{
    std::vector<std::string> sections; // each without the brace that ends it
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> places; // sections: key empty
    for (const auto& record : document) {
        if (record.Commented != ' ' || (call.HasSection && record.Section != call.Section))
            continue;
        const auto [place, isNew] = places.try_emplace({record.Section, {}}, sections.size());
        if (isNew)
            sections.push_back("  " + JsonString(call, record.Section) + ": {");
        std::string& section = sections[place->second];
        if (places.try_emplace({record.Section, record.Key}).second)
            section += (section.ends_with('{') ? "\n    " : ",\n    ") + JsonString(call, record.Key) + ": " +
                       JsonString(call, record.Value);
    }
    const char* separator = "{\n";
    for (const std::string& section : sections)
        out << std::exchange(separator, ",\n") << section << (section.ends_with('{') ? "}" : "\n  }");
    out << (sections.empty() ? "{}\n" : "\n}\n");
}

} // namespace

void Get(const Call& call, const Streams& streams)
{
    const auto text = ReadText(call, streams.In);
    std::optional<std::string> value;
    if (!call.Parser) // takes a fraction of the time of a document
        EachLine(text, call.Syntax(), [&](const NumberedLine& line) {
            if (!value && IsMatch(line, call))
                value = line.Value;
        });
    if (!value) {
        const INIDocument document = ReadDocument(call, text);
        if (const auto record = document.GetRecord(call.Key, call.Section))
            value = record->Value;
        else if (const auto other = FindCommentedOut(document, call.Key, call.Section);
                 other && call.Commented)
            value = other->Value;
        else if (!(value = call.Default))
            Require(document, call);
    }
    streams.Out << *value << '\n';
}

void Keys(const Call& call, const Streams& streams)
{
    const INIDocument document = ReadDocument(call, ReadText(call, streams.In));
    if (!call.Commented || !FindCommentedOut(document, {}, call.Section))
        Require(document, call);
    PrintNames(call, document, streams.Out, [&](const auto& record) {
        return record.Section == call.Section ? record.Key : std::string_view();
    });
}

void Sections(const Call& call, const Streams& streams)
{
    PrintNames(call, ReadDocument(call, ReadText(call, streams.In)), streams.Out,
               [](const auto& record) { return record.Key.empty() ? record.Section : std::string_view(); });
}

void List(const Call& call, const Streams& streams)
{
    const INIDocument document = ReadDocument(call, ReadText(call, streams.In));
    if (call.HasSection)
        Require(document, call);
    if (call.Json)
        return PrintJson(call, document, streams.Out);
    for (const auto& record : document)
        if (record.Commented == ' ' && !record.Key.empty() &&
            (!call.HasSection || record.Section == call.Section))
            streams.Out << record.Section << (record.Section.empty() ? "" : ".") << record.Key
                        << (call.EndsWithNul ? '\n' : '=') << record.Value
                        << (call.EndsWithNul ? '\0' : '\n');
}

void CheckFile(const Call& call, const Streams& streams)
{
    const auto findings = Check(ReadText(call, streams.In));
    if (!call.Quiet)
        for (const auto& [line, text] : findings)
            streams.Out << call.FileName() << ':' << line << ": " << OneLine(text) << '\n';
    if (!findings.empty())
        throw Failure(Failed, {});
}

void Create(const Call& call, const Streams& /*streams*/)
{
    std::error_code error;
    if (call.File == "-" || std::filesystem::exists(call.File, error))
        throw Failure(Failed, call.FileName() + " exists already");
    if (!call.DryRun && !INIDocument().Save(call.File, error))
        throw Failure(Failed, "cannot write " + call.File + ": " + error.message());
}

} // namespace qmini
