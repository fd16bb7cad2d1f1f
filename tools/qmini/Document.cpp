#include "qmini/Document.h"

#include "qmini/Check.h"
#include "qmini/Difference.h"
#include "qmini/Failure.h"

#include <ostream>
#include <stdexcept>

namespace qmini {

namespace {

std::string Message(const Input& input, const Finding& finding)
{
    return input.Name() + ':' + std::to_string(finding.Line) + ": " + finding.Text;
}

/// @return what `INIDocument::Save` writes.
std::string SavedText(const INIDocument& document)
{
    std::string text;
    for (const auto& record : document) {
        (text += record.Comments) += record.Commented;
        if (record.Key.empty())
            ((text += '[') += record.Section) += ']';
        else
            ((text += record.Key) += '=') += record.Value;
        text += '\n';
    }
    return text;
}

[[noreturn]] void Refuse(const std::string& name, std::vector<std::string> objections)
{
    constexpr std::size_t shown = 10;
    if (objections.size() > shown + 1) {
        const std::size_t rest = objections.size() - shown;
        objections.resize(shown);
        objections.push_back("... and " + std::to_string(rest) + " more");
    }
    throw Failure(Refused, name + ": refused (--force does it all the same, --dry-run shows it):",
                  std::move(objections));
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
    const std::string text = SavedText(editing.Document);

    if (call.DryRun)
        streams.Out << UnifiedDifference(input.Name(), ReadFile(input.Path(), {}), text);
    if (!editing.Objections.empty() && !call.Force)
        Refuse(input.Name(), std::move(editing.Objections));
    if (call.DryRun)
        return;
    if (isFilter)
        streams.Out << text;
    else
        Rewrite(call.File, before, text);
}

} // namespace qmini
