// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Commands, what they are called with and how they end, and the documents and lines that they work on.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/platform/File.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qmini {

/// What a command is called with. An argument that was not given is empty.
struct Call
{
    std::string File;
    std::string Section;
    std::string NewSection;
    std::string Key;
    std::string Text; ///< the value to set, or the text of a note
    std::optional<std::string> Default;
    std::optional<std::string> With;
    bool HasSection = false; ///< whether `Section` was given; "" is a section, too
    bool Commented = false;
    bool EndsWithNul = false;
    bool Json = false;
    bool Quiet = false;
    bool Descending = false;
    bool DryRun = false;
    bool Force = false;
    bool Parser = false;
    bool Help = false;

    INISyntax Syntax() const { return Parser ? INISyntax::Parser : INISyntax::Common; }
    std::string FileName() const { return File == "-" ? "standard input" : File; } ///< for messages
};

enum ExitCode
{
    Done = 0,
    Failed = 1,  ///< failed, not found, or `check` found something
    Misused = 2, ///< usage error
    Refused = 3, ///< an edit that would change more than it was asked to
};

/// Ends a command. `what` is the line for standard error, without the program's name.
struct Failure : std::runtime_error
{
    Failure(ExitCode code, const std::string& message, std::string usage = {})
        : std::runtime_error(message), Code(code), Usage(std::move(usage))
    {}

    ExitCode Code;
    std::string Usage; ///< line that follows the message, unless it is empty
};

struct Streams
{
    std::istream& In;
    std::ostream& Out;
    std::ostream& Err;
};

/// A document that is edited.
struct Editing
{
    std::string_view Before; ///< the text of the file
    INIDocument Document;
    bool IsBatch = false;
    /// In a batch: section and name of each key of which an edit may be refused; nothing when unknown.
    std::optional<std::set<std::pair<std::string, std::string>>> Unusual;
};

using Action = void(const Call& call, const Streams& streams);
using EditAction = void(const Call& call, Editing& editing);

Action Get, Keys, Sections, List, CheckFile, Create, EditBatch;
EditAction Set, Add, Delete, Rename, Comment, Uncomment, Sort, Note;

struct Command
{
    std::string_view Name;
    Action* Run;      ///< null for a command that edits
    EditAction* Edit; ///< null for others
};

/// Reads the name of a command and its arguments, with its file among them if `hasFile`.
/// @throws Failure (`Misused`)
std::pair<const Command*, Call> ReadCall(const std::vector<std::string>& words, bool hasFile = true);

/// Runs qmini with the arguments after the program's name. @return the exit code
int Run(const std::vector<std::string>& arguments, const Streams& streams);

void Say(std::ostream& err, std::string_view line); ///< prints a message on standard error
std::string OneLine(std::string_view text);         ///< @return the text without control characters
inline std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// A line of a file, and what it means where it stands.
struct NumberedLine : ini::Line<char>
{
    /// Why many programs take a line for a part of the value above.
    enum Continuation
    {
        None,
        Indented,       ///< deeper than the key above
        AfterBackslash, ///< at the end of the line above
    };

    std::size_t Number = 0;  ///< from 1
    std::string_view Within; ///< section that its record belongs to
    Continuation Continues = None;
};

/// Calls `visit` with each line of a text.
void EachLine(std::string_view text, INISyntax syntax, const std::function<void(const NumberedLine&)>& visit);

/// @return whether a line is an active one (or a commented-out one) of the call's key, or section if it has
///   no key
bool IsMatch(const NumberedLine& line, const Call& call, bool isActive = true);

/// @return what other programs may take differently in a text: numbers of lines and remarks on them, in this
///   order
std::vector<std::pair<std::size_t, std::string>> Check(std::string_view text);

/// @return the difference as `patch` reads it, from the first to the last line that changes, or nothing
/// @param name the file's name, for the header lines
std::string UnifiedDifference(const std::string& name, std::string_view before, std::string_view after);

std::string ReadAll(std::istream& standardInput);
platform::Buffer<char> ReadText(const Call& call, std::istream& standardInput); ///< @return that of the file
INIDocument ReadDocument(const Call& call, std::string_view text);

/// @return the first commented-out record of a key, or of a section if the key is empty
std::optional<INIDocument::RecordView> FindCommentedOut(const INIDocument& document, std::string_view key,
                                                        std::string_view section);

/// Makes sure that the call's key, or its section when it has no key, is there and active.
/// @throws Failure that says what is missing or commented out, and which similar name there is
void Require(const INIDocument& document, const Call& call);

/// Edits the call's file while it is locked, or copies standard input to standard output with the edit made.
/// Prints the difference in place of that for a dry run. When `edit` throws, nothing is written.
void EditFile(const Call& call, const Streams& streams, const std::function<EditAction>& edit);

} // namespace qmini
