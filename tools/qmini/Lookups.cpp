// SPDX-License-Identifier: MIT
// The commands that read a file, and the one that creates one.

#include "qmUtility/platform/Utf8.h"
#include "qmini/Qmini.h"

#include <map>
#include <ostream>

namespace qmini {

namespace {

/// @return the text as a string of JSON
std::string JsonString(const Call& call, std::string_view view) {
    const std::string text(view);  // null-terminated
    std::string json = "\"";
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const char* const begin = at;
        const auto byte = static_cast<unsigned char>(*at);
        platform::DecodeUtf8(at);
        if (byte >= 0x80 && at - begin == 1)
            throw Failure{Failed, call.FileName() + ": not UTF-8, so no JSON: " + Quoted(text)};
        if (byte < 0x20)
            ((json += byte < 16 ? "\\u000" : "\\u001") += "0123456789abcdef"[byte % 16]);
        else
            (json += byte == '"' || byte == '\\' ? "\\" : "").append(begin, at);
    }
    return json += '"';
}

/// Prints an object of objects. Of duplicate keys the first counts, as everywhere.
void PrintJson(const Call& call, const INIDocument& document, std::ostream& out) {
    std::vector<std::string> sections;  // each without the brace that ends it
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> places;  // sections: key empty
    for (const auto& record : document) {
        if (record.Commented != ' ' || (call.HasSection && record.Section != call.Section)) continue;
        const auto [place, isNew] = places.try_emplace({record.Section, {}}, sections.size());
        if (isNew) sections.push_back("  " + JsonString(call, record.Section) + ": {");
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

/// @return what is unusual about a line in itself; empty when there is nothing
std::string Remark(const NumberedLine& line) {
    const std::size_t close = line.Text().find(']');
    if (line.IsIndented) return "continuation line: it is indented deeper than the key above";
    if (line.Continues) return "continuation line: the line above ends in a backslash";
    if (line.Text().find('\r') != std::string_view::npos)
        return "carriage return inside the line: many programs end it there";
    if (line.Text().starts_with('[') && close == std::string_view::npos) return "header without \"]\"";
    if (line.Kind == ini::LineKind::Other) return "neither a header nor a key nor a comment";
    if (line.IsHeader() && close + 1 != line.Text().size())
        return "text after \"]\": " + Quoted(ini::Trimmed(line.Text().substr(close + 1)));
    return {};
}

/// @return what `INIParser` reads in place of a line; empty when it reads the same
std::string Difference(const NumberedLine& line, const NumberedLine& parsed) {
    if (parsed.Kind == ini::LineKind::MalformedHeader)
        return "INIParser cannot read the file: \"[\" without \"]\"";
    if (parsed.IsHeader() && (!line.IsHeader() || parsed.HasKey || parsed.Section != line.Section))
        return "INIParser reads the header of section " + Quoted(parsed.Section);
    if (parsed.IsKey() && (!line.IsKey() || parsed.Key != line.Key || parsed.Value != line.Value))
        return "INIParser reads key " + Quoted(parsed.Key) + " with value " + Quoted(parsed.Value);
    return {};
}

}  // namespace

void Get(const Call& call, const Streams& streams) {
    const auto text = ReadText(call, streams.In);
    std::optional<std::string> value;
    if (!call.Has("--parser"))  // takes a fraction of the time of a document
        EachLine(text, call.Syntax(), [&](const NumberedLine& line) {
            if (!value && IsMatch(line, call)) value = line.Value;
        });
    if (!value) {
        const INIDocument document = ReadDocument(call, text);
        value = document.Get<std::string>(call.Key, call.Section);
        const auto other = FindCommentedOut(document, call.Key, call.Section);
        if (!value && other && call.Has("--commented")) value = other->Value;
        if (!value && !(value = call.Value("--default"))) RequireActive(document, call);
    }
    streams.Out << *value << '\n';
}

void Names(const Call& call, const Streams& streams) {
    const INIDocument document = ReadDocument(call, ReadText(call, streams.In));
    const bool isCommented = call.Has("--commented");
    if (call.HasSection && !(isCommented && FindCommentedOut(document, {}, call.Section)))
        RequireActive(document, call);
    std::set<std::string_view> names;
    for (const auto& record : document) {
        const bool isListed = call.HasSection ? record.Section == call.Section : record.Key.empty();
        const std::string_view name = call.HasSection ? record.Key : record.Section;
        if (isListed && (isCommented || record.Commented == ' ') && !name.empty() &&
            names.insert(name).second)
            streams.Out << name << (call.Has("-z") ? '\0' : '\n');
    }
}

void List(const Call& call, const Streams& streams) {
    const INIDocument document = ReadDocument(call, ReadText(call, streams.In));
    if (call.HasSection) RequireActive(document, call);
    if (call.Has("--json")) return PrintJson(call, document, streams.Out);
    const bool isNul = call.Has("-z");
    for (const auto& record : document)
        if (record.Commented == ' ' && !record.Key.empty() &&
            (!call.HasSection || record.Section == call.Section))
            streams.Out << record.Section << (record.Section.empty() ? "" : ".") << record.Key
                        << (isNul ? '\n' : '=') << record.Value << (isNul ? '\0' : '\n');
}

void Check(const Call& call, const Streams& streams) {
    const auto text = ReadText(call, streams.In);
    bool isClean = true;
    const auto add = [&](std::size_t line, const std::string& remark) {
        if (remark.empty()) return;
        isClean = false;
        if (!call.Has("--quiet"))
            streams.Out << call.FileName() << ':' << line << ": " << OneLine(remark) << '\n';
    };
    const bool hasMark = ini::ByteOrderMarkSize<char>(text) != 0;
    add(1, hasMark ? "byte order mark: INIParser reads it as text" : "");

    // The first active and the first commented-out line of each name
    std::map<std::pair<std::string_view, std::string_view>, std::pair<std::size_t, std::size_t>> firstLines;
    std::vector<NumberedLine> parsed;
    EachLine(text, INISyntax::Parser, [&](const NumberedLine& line) { parsed.push_back(line); });
    EachLine(text, INISyntax::Common, [&](const NumberedLine& line) {
        add(line.Number, Remark(line));
        if (line.IsActiveKey() && line.Within() != line.Nearest)
            add(line.Number, "INIParser reads it in section " + Quoted(line.Nearest));
        if (line.IsHeader() || line.IsKey()) {
            auto& [active, commentedOut] = firstLines[{line.Within(), line.Key}];
            const bool isActive = line.IsActive();
            const std::string name = (line.Key.empty() ? "" : "key " + Quoted(line.Key) + " in ") +
                                     "section " + Quoted(line.Within());
            if (isActive && active != 0)
                add(line.Number, "duplicate " + name + ": first in line " + std::to_string(active));
            else if (isActive && commentedOut != 0)
                add(line.Number,
                    name + ": INIParser finds commented-out line " + std::to_string(commentedOut));
            auto& first = isActive ? active : commentedOut;
            first = first != 0 ? first : line.Number;
        }
        if (line.Number > parsed.size())
            add(line.Number, "last line without a newline: INIParser does not read it");
        else if (!hasMark || line.Number != 1)
            add(line.Number, Difference(line, parsed[line.Number - 1]));
    });
    if (!isClean) throw Failure{Failed, {}};
}

void Create(const Call& call, const Streams& /*streams*/) {
    std::error_code error;
    if (call.File == "-" || std::filesystem::exists(call.File, error))
        throw Failure{Failed, call.FileName() + " exists already"};
    if (!call.Has("--dry-run") && !INIDocument().Save(call.File, error))
        throw Failure{Failed, "cannot write " + call.File + ": " + error.message()};
}

}  // namespace qmini
