// SPDX-License-Identifier: MIT
#include "qmini/Document.h"

#include "qmUtility/ini/Grammar.h"
#include "qmini/Check.h"
#include "qmini/Difference.h"

#include <algorithm>
#include <cctype>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace qmini {

namespace {

std::string Message(const Input& input, const Finding& finding)
{
    return input.Name() + ':' + std::to_string(finding.Line) + ": " + finding.Text;
}

} // namespace

INIDocument Load(const Input& input)
{
    INIDocument document;
    try {
        if (document.Load(input.Path()))
            return document;
        ReadFile(input.Path()); // which says why not
    } catch (const std::out_of_range&) {
        for (const Finding& finding : Check(ReadFile(input.Path()), Kind::Malformed))
            throw Failure(Failed, Message(input, finding));
    }
    throw Failure(Failed, "cannot read " + input.Name());
}

std::optional<std::string> SimilarName(const INIDocument& document, std::string_view key,
                                       std::string_view section, bool ignoresCase)
{
    const auto isSame = [ignoresCase](unsigned char a, unsigned char b) {
        return a == b || (ignoresCase && std::tolower(a) == std::tolower(b));
    };
    const auto wanted = ini::Trimmed(key.empty() ? section : key);
    for (const auto& record : document) {
        const std::string_view name = key.empty() ? record.Section : record.Key;
        if ((key.empty() || (record.Section == section && !name.empty())) &&
            std::ranges::equal(ini::Trimmed(name), wanted, isSame))
            return std::string(name);
    }
    return std::nullopt;
}

void Require(const INIDocument& document, std::string_view key, std::string_view section,
             const std::string& file)
{
    const bool hasSection = document.SectionExists(section);
    if (hasSection && (key.empty() || document.RecordExists(key, section)))
        return;
    if (!hasSection)
        key = {};
    const std::string where = "section " + Quoted(section);
    const auto similar = SimilarName(document, key, section, true);
    throw Failure(Failed,
                  "no " + (key.empty() ? where + " in " : "key " + Quoted(key) + " in " + where + " of ") +
                      file + (similar ? "; did you mean " + Quoted(*similar) + '?' : ""));
}

std::optional<bool> IsCommentedOut(const INIDocument& document, std::string_view key,
                                   std::string_view section)
{
    const auto isKey = [&](const auto& record) { return record.Key == key && record.Section == section; };
    const auto first = std::find_if(document.begin(), document.end(), isKey);
    if (first == document.end() || first->Commented == ' ')
        return std::nullopt;
    return std::any_of(first, document.end(),
                       [&](const auto& record) { return record.Commented == ' ' && isKey(record); });
}

void EditFile(const Call& call, const Streams& streams, const std::function<void(Editing&)>& edit)
{
    RequireNoSafetyCopy(call.File); // or the file may be half an edit
    const Input input(call.File, streams.In);
    const bool isFilter = call.File == "-";
    if (input.IsCopy() && !isFilter)
        throw Failure(Failed, "cannot edit " + call.File + ": not a regular file");

    const std::string before = ReadFile(input.Path());
    Editing editing;
    for (const Finding& finding : Check(before, Kind::Loss)) {
        if (finding.What == Kind::Malformed)
            throw Failure(call.Force ? Failed : Refused, Message(input, finding));
        editing.Objections.push_back(Message(input, finding));
    }
    editing.Document = Load(input);
    edit(editing);
    const std::string text = editing.Document.SavedText();

    if (call.DryRun)
        streams.Out << UnifiedDifference(input.Name(), ReadFile(input.Path(), {}), text);
    if (!editing.Objections.empty() && !call.Force)
        throw Failure(Refused, input.Name() + ": refused (--force does it anyway, --dry-run shows it):",
                      std::move(editing.Objections));
    if (call.DryRun)
        return;
    if (isFilter)
        streams.Out << text;
    else
        Rewrite(call.File, before, text);
}

} // namespace qmini
