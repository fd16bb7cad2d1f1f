// SPDX-License-Identifier: MIT
/// @file
/// The commands that read a file, and the one that creates one.

#include "qmUtility/ini/INIParser.h"
#include "qmini/Check.h"
#include "qmini/Command.h"
#include "qmini/Document.h"
#include "qmini/Files.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace qmini {

void Get(const Call& call, const Streams& streams)
{
    const Input input(call.File, streams.In);
    try { // what is usual, and takes half the time of loading the file
        const auto record = INIParser::GetRecord(call.Key, call.Section, input.Path());
        if (!record.empty() && record.front().Commented == ' ') {
            streams.Out << record.front().Value << '\n';
            return;
        }
    } catch (const std::out_of_range&) { // a malformed header, which `Load` reports
    }
    const INIDocument document = Load(input);
    if (call.Default && !document.RecordExists(call.Key, call.Section)) {
        streams.Out << *call.Default << '\n';
        return;
    }
    Require(document, call.Key, call.Section, input.Name());
    streams.Out << document.GetValue(call.Key, call.Section) << '\n' << std::flush;
    if (const auto commentedOut = IsCommentedOut(document, call.Key, call.Section))
        Say(streams.Err, "note: key " + Quoted(call.Key) + " in section " + Quoted(call.Section) +
                             " is commented out" + (*commentedOut ? ", an active one follows" : ""));
}

void Keys(const Call& call, const Streams& streams)
{
    const Input input(call.File, streams.In);
    const INIDocument document = Load(input);
    Require(document, {}, call.Section, input.Name());
    for (const auto& record : document)
        if (record.Section == call.Section && !record.Key.empty())
            streams.Out << record.Key << (call.EndsWithNul ? '\0' : '\n');
}

void Sections(const Call& call, const Streams& streams)
{
    for (const std::string& name : Load(Input(call.File, streams.In)).GetSectionNames())
        streams.Out << name << (call.EndsWithNul ? '\0' : '\n');
}

void Show(const Call& call, const Streams& streams)
{
    streams.Out << Load(Input(call.File, streams.In)).Content();
}

void CheckFile(const Call& call, const Streams& streams)
{
    const Input input(call.File, streams.In);
    constexpr const char* severities[] = {"note", "warning", "warning", "error"}; // of the kinds in order
    bool isClean = true;
    for (const auto& [line, kind, text] : Check(ReadFile(input.Path()), Kind::Note)) {
        streams.Out << input.Name() << ':' << line << ": " << severities[static_cast<int>(kind)] << ": "
                    << text << '\n';
        isClean = isClean && kind == Kind::Note;
    }
    if (!isClean)
        throw Failure(Failed, {});
}

void Create(const Call& call, const Streams& /*streams*/)
{
    std::error_code ignored;
    if (fs::exists(call.File, ignored))
        throw Failure(Failed, call.File + " exists already");
    const bool done = call.DryRun ? fs::is_directory(fs::absolute(call.File).parent_path(), ignored)
                                  : INIParser::Create(call.File);
    if (!done)
        throw Failure(Failed, "cannot write " + call.File);
}

} // namespace qmini
