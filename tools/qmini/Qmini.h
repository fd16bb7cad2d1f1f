// SPDX-License-Identifier: MIT
#pragma once

// Commands, what they are called with and how they end, and the documents and lines that they work on.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/platform/File.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qmini {

struct Command;

/// What a command is called with. An argument that was not given is empty.
struct Call {
    const qmini::Command* Command = nullptr;
    std::string File;
    std::string Section;
    std::string NewSection;
    std::string Key;
    std::string Text;         ///< the value to set, or the text of a note
    bool HasSection = false;  ///< whether `Section` was given; "" is a section, too
    std::map<std::string, std::string, std::less<>> Options;  ///< as in "--with"; flags have no value

    bool Has(std::string_view option) const { return Options.find(option) != Options.end(); }
    std::optional<std::string> Value(std::string_view option) const {
        return Has(option) ? std::optional(Options.find(option)->second) : std::nullopt;
    }
    INISyntax Syntax() const { return Has("--parser") ? INISyntax::Parser : INISyntax::Common; }
    std::string FileName() const { return File == "-" ? "standard input" : File; }  ///< for messages
};

enum ExitCode {
    Done = 0,
    Failed = 1,   ///< failed, not found, or `check` found something
    Misused = 2,  ///< usage error
    Refused = 3,  ///< an edit that would change more than it was asked to
};

/// Thrown to end a command.
struct Failure {
    ExitCode Code;
    std::string Message;     ///< line for standard error, without the program's name; none if empty
    std::string Usage = {};  ///< line that follows, unless it is empty
};

struct Streams {
    std::istream& In;
    std::ostream& Out;
    std::ostream& Err;
};

/// A document that is edited.
struct Editing {
    INIDocument Document;
    bool IsBatch = false;
    /// In a batch: section and name of each key of which an edit may be refused, once they have been found.
    std::optional<std::set<std::pair<std::string, std::string>>> Unusual = {};
};

using Action = void(const Call& call, const Streams& streams);
using EditAction = bool(const Call& call, Editing& editing);  ///< @return whether the document made the edit

Action Get, Names, List, Check, Create, Edit, EditBatch;
EditAction Set, Add, Delete, Rename, Comment, Uncomment, Sort, Note;

struct Command {
    std::string_view Name;
    Action* Run;
    EditAction* Edit;  ///< of a command that a batch may hold, else null
};

/// Reads the name of a command and its arguments.
/// @param batch the call that reads them from a line; its file and its options are those of the line, too
/// @throws Failure (`Misused`)
Call ReadCall(const std::vector<std::string>& words, const Call* batch = nullptr);

/// Runs qmini with the arguments after the program's name. @return the exit code
int Run(const std::vector<std::string>& arguments, const Streams& streams);

void Say(std::ostream& err, std::string_view line);  ///< prints a message on standard error
std::string OneLine(std::string_view text);          ///< @return the text without control characters
inline std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// A line of a file, and what it means where it stands.
struct NumberedLine : ini::Line<char> {
    std::size_t Number = 0;          ///< from 1
    std::string_view Nearest;        ///< name of the nearest header, active or commented out
    std::string_view NearestActive;  ///< name of the nearest header that an active key belongs to
    bool IsIndented = false;         ///< deeper than the key above, so that many programs read on in it
    bool Continues = false;  ///< whether they do, for this or for a backslash at the end of the line above

    std::string_view Within() const { return IsActive() ? NearestActive : Nearest; }  ///< its section
};

/// Calls `visit` with each line of a text.
void EachLine(std::string_view text, INISyntax syntax, const std::function<void(const NumberedLine&)>& visit);

/// @return whether a line is one of the call's key, or of its section if it has no key, and active, or
///   commented out if the call uncomments it
bool IsMatch(const NumberedLine& line, const Call& call);

std::string ReadAll(std::istream& standardInput);
platform::Buffer<char> ReadText(const Call& call, std::istream& standardInput);  ///< @return that of the file
INIDocument ReadDocument(const Call& call, std::string_view text);

/// @return the first commented-out record of a key, or of a section if the key is empty
std::optional<INIDocument::RecordView> FindCommentedOut(const INIDocument& document, std::string_view key,
                                                        std::string_view section);

/// Makes sure that the call's key, or its section when it has no key, is there and active.
/// @throws Failure that says what is missing or commented out, and which similar name there is
void RequireActive(const INIDocument& document, const Call& call);

/// Edits the call's file while it is locked, or copies standard input to standard output with the edit made.
/// Prints the difference in place of that for a dry run. When `edit` throws, nothing is written.
void EditFile(const Call& call, const Streams& streams, const std::function<void(Editing&)>& edit);

}  // namespace qmini
