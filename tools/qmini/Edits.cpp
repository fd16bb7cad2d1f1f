// SPDX-License-Identifier: MIT
/// @file
/// The commands that edit a file.

#include "qmUtility/ini/Grammar.h"
#include "qmini/Command.h"
#include "qmini/Document.h"

#include <set>
#include <sstream>
#include <utility>

namespace qmini {

namespace {

/// @throws Failure when the text holds one of the characters
void Forbid(std::string_view characters, std::string_view text, const std::string& message)
{
    if (text.find_first_of(characters) != std::string_view::npos)
        throw Failure(Misused, message);
}

/// Makes sure that a header with this name would be read back with the same name.
void RequireSectionName(std::string_view name)
{
    Forbid("]=\n", name, "a section name cannot hold \"]\", \"=\" or a newline");
}

void RequireNoSection(const std::string& name, const Call& call, const INIDocument& document)
{
    if (document.SectionExists(name))
        throw Failure(Failed, "section " + Quoted(name) + " exists already in " + call.File);
}

/// Makes sure that a key line with this key and value would be read back as the same.
void RequireKeyAndValue(std::string_view key, std::string_view value)
{
    Forbid("[=\n", key, "a key cannot hold \"[\", \"=\" or a newline");
    Forbid("#; \t\r", key.substr(0, 1), "a key cannot begin with \"#\", \";\" or a blank");
    Forbid("[\n", value, "a value cannot hold \"[\" or a newline");
    Forbid(" \t\r", value.substr(value.size() - !value.empty()), "a value cannot end with a blank");
}

/// @return the text as comment lines
std::string CommentLines(const std::string& text)
{
    std::string comments;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Forbid("[=", line, "a comment cannot hold \"[\" or \"=\": it would be read as a record");
        if (!comments.empty())
            comments += '\n';
        comments += line.find_first_of("#;") == 0 ? line : "; " + line;
    }
    if (comments.size() == 1)
        comments += ' '; // the library appends a newline to texts of two characters or more
    return comments;
}

/// @return the words of a line. A word in quotes, single or double, may hold blanks and the other quote.
std::vector<std::string> SplitWords(std::string_view line)
{
    constexpr std::string_view blanks = " \t\r";
    std::vector<std::string> words;
    for (std::size_t at = 0; (at = line.find_first_not_of(blanks, at)) != std::string_view::npos;) {
        words.emplace_back();
        while (at < line.size() && blanks.find(line[at]) == std::string_view::npos) {
            const char quote = line[at];
            if (quote != '"' && quote != '\'') {
                words.back() += line[at++];
                continue;
            }
            const std::size_t end = line.find(quote, at + 1);
            if (end == std::string_view::npos)
                throw Failure(Misused, std::string("no closing ") + quote);
            words.back() += line.substr(at + 1, end - at - 1);
            at = end + 1;
        }
    }
    return words;
}

/// Makes sure that there is what the call names, and objects to a commented-out key that hides an active one.
void RequireTarget(const Call& call, Editing& editing)
{
    Require(editing.Document, call.Key, call.Section, call.File);
    if (!call.Key.empty() && IsCommentedOut(editing.Document, call.Key, call.Section) == true)
        editing.Objections.push_back("key " + Quoted(call.Key) + " is commented out, an active one follows");
}

} // namespace

void Set(const Call& call, Editing& editing)
{
    RequireSectionName(call.Section);
    RequireKeyAndValue(call.Key, call.Text);
    INIDocument& document = editing.Document;
    const auto commentedOut = IsCommentedOut(document, call.Key, call.Section);
    if (commentedOut && !call.Activate && !call.KeepCommented)
        editing.Objections.push_back("key " + Quoted(call.Key) + " is commented out" +
                                     (*commentedOut ? ", an active one follows" : "") +
                                     ": say --activate or --keep-commented");
    if (!document.RecordExists(call.Key, call.Section))
        if (const auto similar = SimilarName(document, call.Key, call.Section, false))
            editing.Objections.push_back("no key " + Quoted(call.Key) +
                                         ", but one that differs in blanks: " + Quoted(*similar));
    document.SetValue(call.Key, call.Text, call.Section);
    if (call.Activate)
        document.UnCommentRecord(call.Key, call.Section);
}

void Add(const Call& call, Editing& editing)
{
    RequireSectionName(call.Section);
    RequireNoSection(call.Section, call, editing.Document);
    editing.Document.AddSection(call.Section);
}

void Delete(const Call& call, Editing& editing)
{
    RequireTarget(call, editing);
    if (call.Key.empty())
        editing.Document.DeleteSection(call.Section);
    else
        editing.Document.DeleteRecord(call.Key, call.Section);
}

void Rename(const Call& call, Editing& editing)
{
    if (call.Section.empty())
        throw Failure(Misused, "keys above the first header have no header that could be renamed");
    RequireSectionName(call.NewSection);
    Require(editing.Document, {}, call.Section, call.File);
    RequireNoSection(call.NewSection, call, editing.Document);
    editing.Document.RenameSection(call.Section, call.NewSection);
}

void Comment(const Call& call, Editing& editing)
{
    const std::string with = call.With.value_or("#");
    if (with != "#" && with != ";")
        throw Failure(Misused, "--with takes \"#\" or \";\"");
    RequireTarget(call, editing);
    if (call.Key.empty())
        editing.Document.CommentSection(with.front(), call.Section);
    else
        editing.Document.CommentRecord(INIParser::CommentChar(with.front()), call.Key, call.Section);
}

void Uncomment(const Call& call, Editing& editing)
{
    RequireTarget(call, editing);
    if (call.Key.empty())
        editing.Document.UnCommentSection(call.Section);
    else
        editing.Document.UnCommentRecord(call.Key, call.Section);
}

void Sort(const Call& call, Editing& editing)
{
    std::set<std::pair<std::string_view, std::string_view>> names;
    for (const auto& record : editing.Document) {
        if (!record.Key.empty() && !names.contains({record.Section, {}}))
            editing.Objections.push_back("key " + Quoted(record.Key) + " has no header: sorting drops it");
        if (!names.emplace(record.Section, record.Key).second)
            editing.Objections.push_back(
                record.Key.empty()
                    ? "section " + Quoted(record.Section) + " is duplicate: sorting doubles its keys"
                    : "key " + Quoted(record.Key) + " in section " + Quoted(record.Section) +
                          " is duplicate: sorting may change which is first");
    }
    if (!editing.Document.Sort(call.Descending))
        throw Failure(Failed, "no sections to sort in " + call.File);
}

void Note(const Call& call, Editing& editing)
{
    const std::string comments = CommentLines(call.Text);
    RequireTarget(call, editing);
    if (!editing.Document.RecordExists(call.Key, call.Section)) // only a header can be missing here
        throw Failure(Failed, "no header of section " + Quoted(call.Section) + " in " + call.File);
    editing.Document.SetRecordComments(comments, call.Key, call.Section);
}

void EditBatch(const Call& call, const Streams& streams)
{
    if (call.File == "-")
        throw Failure(Misused, "edit takes its commands from standard input, and so cannot edit it");
    EditFile(call, streams, [&](Editing& editing) {
        std::size_t number = 0;
        for (std::string line; std::getline(streams.In, line);) {
            const std::string where = "line " + std::to_string(++number) + ": ";
            const std::size_t former = editing.Objections.size();
            try {
                const auto words = SplitWords(line);
                if (words.empty() || words.front().starts_with('#'))
                    continue;
                auto [command, edit] = Parse(words, false);
                edit.File = call.File;
                command->Edit(edit, editing);
            } catch (const Failure& failure) {
                throw Failure(failure.Code, where + failure.what(), failure.Details);
            }
            for (std::size_t i = former; i != editing.Objections.size(); ++i)
                editing.Objections[i].insert(0, where);
        }
        if (streams.In.bad())
            throw Failure(Failed, "cannot read standard input");
    });
}

} // namespace qmini
