// SPDX-License-Identifier: MIT
/// @file
/// The commands that edit a file.

#include "qmini/Qmini.h"

#include <sstream>

namespace qmini {

namespace {

/// Rejects what many readers take for the end of a line, and a NUL.
void RejectControlCharacters(std::string_view text)
{
    constexpr std::pair<char, const char*> characters[] = {
        {'\n', "newline"}, {'\r', "carriage return"}, {'\0', "NUL"}};
    for (const auto& [character, name] : characters)
        if (text.find(character) != std::string_view::npos)
            throw Failure(Misused, Quoted(OneLine(text)) + " holds a " + name);
}

/// Makes sure that a file can hold a section, and a key with a value in it unless the key is empty.
void RequireReadable(INISyntax syntax, const std::string& section, const std::string& key,
                     const std::string& value)
{
    for (const std::string& text : {section, key, value})
        RejectControlCharacters(text);
    INIDocument file(syntax);
    if (!(section.empty() && !key.empty()) && !file.AddSection(section))
        throw Failure(Misused, Quoted(section) + " cannot be the name of a section");
    if (!key.empty() && !file.SetValue(key, "0", section))
        throw Failure(Misused, Quoted(key) + " cannot be the name of a key");
    if (!key.empty() && !file.SetValue(key, value, section))
        throw Failure(Misused, Quoted(value) + " cannot be a value");
}

void RequireNoSection(const std::string& name, const Call& call, const INIDocument& document)
{
    RequireReadable(call.Syntax(), name, {}, {});
    if (document.SectionExists(name))
        throw Failure(Failed, "section " + Quoted(name) + " exists already in " + call.FileName());
}

/// @return the text of a note as comment lines
std::string CommentLines(const Call& call)
{
    std::string comments;
    std::istringstream lines(call.Text);
    for (std::string line; std::getline(lines, line);) {
        line = ini::Trimmed(std::string_view(line));
        RejectControlCharacters(line);
        comments += (line.find_first_of("#;") == 0 ? "" : line.empty() ? ";" : "; ") + line + '\n';
    }
    INIDocument file(call.Syntax());
    if (!file.SetValue("0", "0", {}) || !file.SetRecordComments(comments, "0", {}))
        throw Failure(Misused, "a note cannot hold a line that reads as a commented-out header or key");
    return comments;
}

/// Refuses an edit of a key whose value goes on in further lines, or that is active a second time.
/// @param isRefused whether the document does not make the edit. Else it takes indented lines that are
///   nothing, directly below the key, for a part of it.
void RefuseUnlessPlain(const Call& call, std::string_view text, bool mayRepeat, bool isRefused = false)
{
    bool isFound = false;
    bool isValue = false;  // whether a line that continues a value continues the key's
    bool isDirect = false; // without empty lines and comments in between
    EachLine(text, call.Syntax(), [&](const NumberedLine& line) {
        const auto refuse = [&](const std::string& why, bool canBeForced) {
            throw Failure(Refused, call.FileName() + ':' + std::to_string(line.Number) + ": " + why +
                                       Quoted(call.Key) +
                                       (canBeForced && !call.Force ? "; --force edits the first line" : ""));
        };
        const bool isIndented = line.Continues == NumberedLine::Indented;
        const bool isContinuation = line.Continues != NumberedLine::None;
        isDirect = isDirect && isContinuation;
        if (isValue && isContinuation &&
            (isRefused || !isDirect || !isIndented || line.Kind != ini::LineKind::Other))
            refuse("continues the value of key ", !isIndented);
        isValue =
            isValue && (isContinuation || line.Text().empty() || ini::IsCommentCharacter(line.Text().front()));
        if (!IsMatch(line, call))
            return;
        if (isFound && !mayRepeat)
            refuse("one of several lines of key ", true);
        isValue = isDirect = isValue || !isFound;
        isFound = true;
    });
}

/// @return the keys of which `RefuseUnlessPlain` may refuse an edit
std::set<std::pair<std::string, std::string>> FindUnusual(std::string_view text, INISyntax syntax)
{
    std::set<std::pair<std::string, std::string>> unusual;
    std::set<std::pair<std::string_view, std::string_view>> names;
    std::pair<std::string_view, std::string_view> last;
    EachLine(text, syntax, [&](const NumberedLine& line) {
        if (line.Continues != NumberedLine::None)
            unusual.emplace(last);
        if (line.Kind == ini::LineKind::Key && line.Commented == ' ') {
            last = {line.Within, line.Key};
            if (!names.insert(last).second)
                unusual.emplace(last);
        }
    });
    return unusual;
}

/// Makes sure that the line of the call's key, if it is there, is all of it.
void RequirePlain(const Call& call, Editing& editing, bool mayRepeat)
{
    if (call.Force || call.Key.empty())
        return;
    if (!editing.IsBatch)
        return RefuseUnlessPlain(call, editing.Before, mayRepeat);
    if (!editing.Unusual)
        editing.Unusual = FindUnusual(editing.Document.Text(), call.Syntax());
    if (editing.Unusual->contains({call.Section, call.Key}))
        RefuseUnlessPlain(call, editing.Document.Text(), mayRepeat);
}

/// Refuses an edit of an active line, or of one that is commented out, that the document does not make.
[[noreturn]] void Refuse(const Call& call, const INIDocument& document, bool isActive = true)
{
    if (!call.Key.empty())
        RefuseUnlessPlain(call, document.Text(), true, true);
    else if (call.Section.empty())
        throw Failure(Failed, "the keys above the first header have no header");
    std::string at;
    EachLine(document.Text(), call.Syntax(), [&](const NumberedLine& line) {
        if (at.empty() && IsMatch(line, call, isActive))
            at = ':' + std::to_string(line.Number);
    });
    throw Failure(Refused, call.FileName() + at +
                               ": refused, since a line would be read differently or in another section");
}

/// Makes sure that an edit of what is there and active was made.
void RequireDone(bool isDone, const Call& call, const INIDocument& document)
{
    if (isDone)
        return;
    Require(document, call);
    Refuse(call, document);
}

/// @return the words of a line. A word in quotes, single or double, may hold blanks and the other quote.
std::vector<std::string> SplitWords(std::string_view line)
{
    std::vector<std::string> words;
    bool isWord = false;
    char quote = '\0'; // NUL outside quotes
    for (const char c : line) {
        const bool isBlank = quote == '\0' && (c == ' ' || c == '\t');
        if (!isBlank && !isWord)
            words.emplace_back();
        isWord = !isBlank;
        if (quote == '\0' && (c == '"' || c == '\''))
            quote = c;
        else if (quote != '\0' && c == quote)
            quote = '\0';
        else if (isWord)
            words.back() += c;
    }
    if (quote != '\0')
        throw Failure(Misused, std::string("no closing ") + quote);
    return words;
}

} // namespace

void Set(const Call& call, Editing& editing)
{
    RequireReadable(call.Syntax(), call.Section, call.Key, call.Text);
    RequirePlain(call, editing, false);
    if (!editing.Document.SetValue(call.Key, call.Text, call.Section))
        Refuse(call, editing.Document);
}

void Add(const Call& call, Editing& editing)
{
    RequireNoSection(call.Section, call, editing.Document);
    if (!editing.Document.AddSection(call.Section))
        Refuse(call, editing.Document);
}

void Delete(const Call& call, Editing& editing)
{
    RequirePlain(call, editing, false);
    INIDocument& document = editing.Document;
    RequireDone(call.Key.empty() ? document.DeleteSection(call.Section)
                                 : document.DeleteRecord(call.Key, call.Section),
                call, document);
}

void Rename(const Call& call, Editing& editing)
{
    RequireNoSection(call.NewSection, call, editing.Document);
    RequireDone(editing.Document.RenameSection(call.Section, call.NewSection), call, editing.Document);
}

void Comment(const Call& call, Editing& editing)
{
    const std::string with = call.With.value_or("#");
    if (with != "#" && with != ";")
        throw Failure(Misused, "--with takes \"#\" or \";\"");
    const auto character = static_cast<INICommentChar>(with.front());
    INIDocument& document = editing.Document;
    RequirePlain(call, editing, true);
    RequireDone(call.Key.empty() ? document.CommentSection(character, call.Section)
                                 : document.CommentRecord(character, call.Key, call.Section),
                call, document);
}

void Uncomment(const Call& call, Editing& editing)
{
    INIDocument& document = editing.Document;
    if (!(call.Key.empty() ? document.UnCommentSection(call.Section)
                           : document.UnCommentRecord(call.Key, call.Section))) {
        if (FindCommentedOut(document, call.Key, call.Section))
            Refuse(call, document, false);
        Require(document, call);
        throw Failure(Failed, Quoted(call.Key.empty() ? call.Section : call.Key) + " is active");
    }
    if (editing.Unusual && !call.Key.empty())
        editing.Unusual->emplace(call.Section, call.Key);
    else
        editing.Unusual.reset();
}

void Sort(const Call& call, Editing& editing) { editing.Document.Sort(call.Descending); }

void Note(const Call& call, Editing& editing)
{
    const std::string comments = CommentLines(call);
    INIDocument& document = editing.Document;
    RequireDone(call.Key.empty() ? document.SetSectionComments(comments, call.Section)
                                 : document.SetRecordComments(comments, call.Key, call.Section),
                call, document);
}

void EditBatch(const Call& call, const Streams& streams)
{
    if (call.File == "-")
        throw Failure(Misused, "edit takes its commands from standard input, and so cannot edit it");
    std::istringstream lines(ReadAll(streams.In)); // before the file is locked
    EditFile(call, streams, [&](const Call&, Editing& editing) {
        editing.IsBatch = true;
        std::string line;
        for (std::size_t number = 1; std::getline(lines, line); ++number) {
            try {
                if (line.ends_with('\r'))
                    line.pop_back();
                const auto words = SplitWords(line);
                if (words.empty() || words.front().starts_with('#'))
                    continue;
                auto [command, edit] = ReadCall(words, false);
                edit.File = call.File;
                edit.Parser = call.Parser;
                edit.Force = call.Force;
                command->Edit(edit, editing);
                if (command->Edit == Sort || command->Edit == Rename)
                    editing.Unusual.reset();
            } catch (const Failure& failure) {
                throw Failure(failure.Code, "line " + std::to_string(number) + ": " + failure.what(),
                              failure.Usage);
            }
        }
    });
}

} // namespace qmini
