// SPDX-License-Identifier: MIT
// The commands that edit a file.

#include "qmini/Qmini.h"

#include <sstream>

namespace qmini {

namespace {

/// Rejects what many readers take for the end of a line, and a NUL.
void RejectControlCharacters(std::string_view text) {
    for (const auto& [character, name] :
         {std::pair('\n', "newline"), std::pair('\r', "carriage return"), std::pair('\0', "NUL")})
        if (text.find(character) != std::string_view::npos)
            throw Failure{Misused, Quoted(OneLine(text)) + " holds a " + name};
}

/// Makes sure that a file can hold a section, and a key with a value in it unless the key is empty.
void RequireValid(INISyntax syntax, const std::string& section, const std::string& key = {},
                  const std::string& value = {}) {
    for (const std::string& text : {section, key, value}) RejectControlCharacters(text);
    INIDocument file(syntax);
    if (!(section.empty() && !key.empty()) && !file.AddSection(section))
        throw Failure{Misused, Quoted(section) + " cannot be the name of a section"};
    if (!key.empty() && !file.SetValue(key, "0", section))
        throw Failure{Misused, Quoted(key) + " cannot be the name of a key"};
    if (!key.empty() && !file.SetValue(key, value, section))
        throw Failure{Misused, Quoted(value) + " cannot be a value"};
}

/// Makes sure that a section can be given a name.
void RequireNew(const std::string& name, const Call& call, const INIDocument& document) {
    RequireValid(call.Syntax(), name);
    if (document.SectionExists(name))
        throw Failure{Failed, "section " + Quoted(name) + " exists already in " + call.FileName()};
}

/// @return the text of a note as comment lines
std::string CommentLines(const Call& call) {
    std::string comments;
    std::istringstream lines(call.Text);
    for (std::string line; std::getline(lines, line);) {
        line = ini::Trimmed(std::string_view(line));
        RejectControlCharacters(line);
        comments += (line.find_first_of("#;") == 0 ? "" : line.empty() ? ";" : "; ") + line + '\n';
    }
    INIDocument file(call.Syntax());
    if (!file.SetValue("0", "0", {}) || !file.SetRecordComments(comments, "0", {}))
        throw Failure{Misused, "a note cannot hold a line that reads as a commented-out header or key"};
    return comments;
}

/// Refuses an edit of a key whose value goes on in further lines, or that is active a second time.
/// @param isRefused whether the document does not make the edit. Else it takes indented lines that are
///   nothing, directly below the key, for a part of it.
/// @return the number of the first line of the key, or of the section if there is no key; 0 for none
std::size_t RefuseUnlessPlain(const Call& call, std::string_view text, bool isRefused = false) {
    const bool mayRepeat = isRefused || call.Command->Edit == Comment;
    std::size_t first = 0;
    bool isValue = false;   // whether a line that continues a value continues the key's
    bool isDirect = false;  // without empty lines and comments in between
    EachLine(text, call.Syntax(), [&](const NumberedLine& line) {
        const auto refuse = [&](const std::string& why, bool canBeForced) {
            throw Failure{
                Refused, call.FileName() + ':' + std::to_string(line.Number) + ": " + why + Quoted(call.Key) +
                             (canBeForced && !call.Has("--force") ? "; --force edits the first line" : "")};
        };
        isDirect = isDirect && line.Continues;
        if (isValue && line.Continues &&
            (isRefused || !isDirect || !line.IsIndented || line.Kind != ini::LineKind::Other))
            refuse("continues the value of key ", !line.IsIndented);
        isValue = isValue &&
                  (line.Continues || line.Text().empty() || ini::IsCommentCharacter(line.Text().front()));
        if (!IsMatch(line, call)) return;
        if (first != 0 && !mayRepeat) refuse("one of several lines of key ", true);
        isValue = isDirect = first == 0 && !call.Key.empty();
        first = first != 0 ? first : line.Number;
    });
    return first;
}

/// @return the keys of which `RefuseUnlessPlain` may refuse an edit
std::set<std::pair<std::string, std::string>> FindUnusual(std::string_view text, INISyntax syntax) {
    std::set<std::pair<std::string, std::string>> unusual;
    std::set<std::pair<std::string_view, std::string_view>> names;
    std::pair<std::string_view, std::string_view> last;
    EachLine(text, syntax, [&](const NumberedLine& line) {
        if (line.Continues) unusual.emplace(last);
        if (line.IsActiveKey()) {
            last = {line.Within(), line.Key};
            if (!names.insert(last).second) unusual.emplace(last);
        }
    });
    return unusual;
}

/// Makes sure that the line of the call's key, if it is there, is all of it.
void RequirePlain(const Call& call, Editing& editing) {
    if (call.Has("--force") || call.Key.empty()) return;
    if (editing.IsBatch && !editing.Unusual)
        editing.Unusual = FindUnusual(editing.Document.Text(), call.Syntax());
    if (!editing.IsBatch || editing.Unusual->contains({call.Section, call.Key}))
        RefuseUnlessPlain(call, editing.Document.Text());
}

/// Says why the document does not make an edit.
[[noreturn]] void Explain(const Call& call, const INIDocument& document) {
    EditAction* const edit = call.Command->Edit;
    const bool isOff = edit == Uncomment && FindCommentedOut(document, call.Key, call.Section);
    if (edit != Set && edit != Add && edit != Sort && !isOff) RequireActive(document, call);
    if (edit == Uncomment && !isOff)
        throw Failure{Failed, Quoted(call.Key.empty() ? call.Section : call.Key) + " is active"};
    if (call.HasSection && call.Section.empty() && call.Key.empty())
        throw Failure{Failed, "the keys above the first header have no header"};
    const std::size_t line = RefuseUnlessPlain(call, document.Text(), true);
    throw Failure{Refused, call.FileName() + (line != 0 ? ':' + std::to_string(line) : "") +
                               ": refused, since a line would be read differently or in another section"};
}

/// Makes an edit. @throws Failure when it is not made
void Make(const Call& call, Editing& editing) {
    if (!call.Command->Edit(call, editing)) Explain(call, editing.Document);
}

/// @return the words of a line. A word in quotes, single or double, may hold blanks and the other quote.
std::vector<std::string> SplitWords(std::string_view line) {
    std::vector<std::string> words;
    for (std::size_t at = 0; (at = line.find_first_not_of(" \t", at)) < line.size();) {
        std::string& word = words.emplace_back();
        for (; at < line.size() && line[at] != ' ' && line[at] != '\t'; ++at) {
            const char c = line[at];
            if (c != '"' && c != '\'') {
                word += c;
                continue;
            }
            const std::size_t begin = at + 1;
            at = line.find(c, begin);
            if (at == std::string_view::npos) throw Failure{Misused, std::string("no closing ") + c};
            word += line.substr(begin, at - begin);
        }
    }
    return words;
}

}  // namespace

bool Set(const Call& call, Editing& editing) {
    RequireValid(call.Syntax(), call.Section, call.Key, call.Text);
    RequirePlain(call, editing);
    return editing.Document.SetValue(call.Key, call.Text, call.Section);
}

bool Add(const Call& call, Editing& editing) {
    RequireNew(call.Section, call, editing.Document);
    return editing.Document.AddSection(call.Section);
}

bool Delete(const Call& call, Editing& editing) {
    RequirePlain(call, editing);
    return call.Key.empty() ? editing.Document.DeleteSection(call.Section)
                            : editing.Document.DeleteRecord(call.Key, call.Section);
}

bool Rename(const Call& call, Editing& editing) {
    RequireNew(call.NewSection, call, editing.Document);
    return editing.Document.RenameSection(call.Section, call.NewSection);
}

bool Comment(const Call& call, Editing& editing) {
    const std::string mark = call.Value("--with").value_or("#");
    if (mark != "#" && mark != ";") throw Failure{Misused, "--with takes \"#\" or \";\""};
    RequirePlain(call, editing);
    const auto character = static_cast<INICommentChar>(mark.front());
    return call.Key.empty() ? editing.Document.CommentSection(character, call.Section)
                            : editing.Document.CommentRecord(character, call.Key, call.Section);
}

bool Uncomment(const Call& call, Editing& editing) {
    return call.Key.empty() ? editing.Document.UnCommentSection(call.Section)
                            : editing.Document.UnCommentRecord(call.Key, call.Section);
}

bool Sort(const Call& call, Editing& editing) { return editing.Document.Sort(call.Has("--descending")); }

bool Note(const Call& call, Editing& editing) {
    const std::string comments = CommentLines(call);
    return call.Key.empty() ? editing.Document.SetSectionComments(comments, call.Section)
                            : editing.Document.SetRecordComments(comments, call.Key, call.Section);
}

void Edit(const Call& call, const Streams& streams) {
    EditFile(call, streams, [&](Editing& editing) { Make(call, editing); });
}

void EditBatch(const Call& call, const Streams& streams) {
    if (call.File == "-")
        throw Failure{Misused, "edit takes its commands from standard input, and so cannot edit it"};
    std::istringstream lines(ReadAll(streams.In));  // before the file is locked
    EditFile(call, streams, [&](Editing& editing) {
        editing.IsBatch = true;
        std::string line;
        for (std::size_t number = 1; std::getline(lines, line); ++number) {
            try {
                if (line.ends_with('\r')) line.pop_back();
                const auto words = SplitWords(line);
                if (words.empty() || words.front().starts_with('#')) continue;
                const Call edit = ReadCall(words, &call);
                Make(edit, editing);
                EditAction* const made = edit.Command->Edit;
                if (made == Uncomment && !edit.Key.empty() && editing.Unusual)
                    editing.Unusual->emplace(edit.Section, edit.Key);
                else if (made == Uncomment || made == Sort || made == Rename)
                    editing.Unusual.reset();
            } catch (const Failure& failure) {
                throw Failure{failure.Code, "line " + std::to_string(number) + ": " + failure.Message,
                              failure.Usage};
            }
        }
    });
}

}  // namespace qmini
