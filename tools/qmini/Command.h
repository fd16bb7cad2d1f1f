// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The table of commands, from which the command line, the help texts and the manual page are made.

#include "qmUtility/ini/INIDocument.h"

#include <iosfwd>
#include <optional>
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
    bool EndsWithNul = false;
    bool Activate = false;
    bool KeepCommented = false;
    bool Descending = false;
    bool DryRun = false;
    bool Force = false;
    bool Help = false;
};

enum ExitCode
{
    Done = 0,
    Failed = 1,  ///< failed, or not found
    Misused = 2, ///< usage error
    Refused = 3, ///< an edit that would change more than it was asked to
};

/// Ends a command. `what` is the line for standard error, without the program's name.
struct Failure : std::runtime_error
{
    /// @param details lines that follow the message
    Failure(ExitCode code, const std::string& message, std::vector<std::string> details = {})
        : std::runtime_error(message), Code(code), Details(std::move(details))
    {}

    ExitCode Code;
    std::vector<std::string> Details;
};

struct Streams
{
    std::istream& In;
    std::ostream& Out;
    std::ostream& Err;
};

/// A document that is edited, and the reasons to refuse the edit unless it is forced.
struct Editing
{
    INIDocument Document;
    std::vector<std::string> Objections;
};

struct Option
{
    std::string_view Name;
    std::string_view Value; ///< the word for its value; empty when it takes none
    std::string_view Help;
    bool Call::*Flag;                       ///< where the option goes,
    std::optional<std::string> Call::*Text; ///< or its value
};

using Action = void(const Call& call, const Streams& streams);
using EditAction = void(const Call& call, Editing& editing);

struct Command
{
    Action* Run;      ///< null for a command that edits
    EditAction* Edit; ///< null for others
    std::string_view Name;
    std::string_view Arguments; ///< a word each; one in brackets may be left out
    std::vector<const Option*> Options;
    std::string_view Summary;
    std::string_view Details;
};

/// A paragraph or more of the help on all commands.
struct Topic
{
    std::string_view Title;
    std::string_view Text;
};

extern const std::vector<Command> Commands;
extern const std::vector<Topic> Topics;

std::string Pattern(const Option& option); ///< @return the option with the word for its value
std::string Usage(const Command& command); ///< @return the pattern of the command line

/// @param words the name of a command and what follows it
/// @param hasFile whether the command's file is among the words
/// @return the command, and its call
/// @throws Failure (`Misused`) that says what is wrong
std::pair<const Command*, Call> Parse(const std::vector<std::string>& words, bool hasFile = true);

/// Runs qmini.
/// @param arguments the words of the command line, without the program's name
/// @return the exit code
int Run(const std::vector<std::string>& arguments, const Streams& streams);

/// Prints a message on standard error.
void Say(std::ostream& err, std::string_view line);

std::string Quoted(std::string_view text);

// The functions of the table
Action Get, Keys, Sections, Show, CheckFile, Create, EditBatch;
EditAction Set, Add, Delete, Rename, Comment, Uncomment, Sort, Note;

} // namespace qmini
