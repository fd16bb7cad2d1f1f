#include "qmini/Commands.h"

#include "qmUtility/ini/INIParser.h"
#include "qmini/Check.h"
#include "qmini/Difference.h"
#include "qmini/Files.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <iterator>
#include <new>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace qmini {

namespace {

/// What a command is called with. An argument that was not given is empty.
struct Call
{
    std::ostream& out;
    std::string file = {};
    std::string section = {};
    std::string newSection = {};
    std::string key = {};
    std::string text = {}; ///< the value to set, or the text of a note
    INIParser::CommentChar with = INIParser::Hash;
    bool descending = false;
    bool dryRun = false;
    bool help = false;
};

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

/// @throws Failure that says what is missing
[[noreturn]] void ThrowNotFound(const Call& call)
{
    ReadFile(call.file); // when that fails, this is what there is to say
    const std::string section = "section " + Quoted(call.section);
    if (call.key.empty() || !INIParser::SectionExists(call.section, call.file))
        throw Failure(Failed, "no " + section + " in " + call.file);
    throw Failure(Failed, "no key " + Quoted(call.key) + " in " + section + " of " + call.file);
}

/// Makes sure that the key exists, or the section when the call names no key. A file that cannot be read
/// passes, since the library says that it holds everything; `Edit` tells.
void RequireTarget(const Call& call)
{
    if (!(call.key.empty() ? INIParser::SectionExists(call.section, call.file)
                           : INIParser::RecordExists(call.key, call.section, call.file)))
        ThrowNotFound(call);
}

/// Makes sure that a header with this name would be read back with the same name.
void RequireSectionName(const std::string& name)
{
    if (name.find_first_of("]=\n") != std::string::npos)
        throw Failure(Misused, "a section name cannot hold \"]\", \"=\" or a line break");
}

void RequireNoSection(const std::string& name, const std::string& file)
{
    ReadFile(file);
    if (INIParser::SectionExists(name, file))
        throw Failure(Failed, "section " + Quoted(name) + " exists already in " + file);
}

/// Makes sure that a key line with this key and value would be read back as the same.
void RequireKeyAndValue(const std::string& key, const std::string& value)
{
    if (key.find_first_of("[=\n") != std::string::npos)
        throw Failure(Misused, "a key cannot hold \"[\", \"=\" or a line break");
    if (key.find_first_of("#; \t\r") == 0)
        throw Failure(Misused, "a key cannot begin with \"#\", \";\" or a blank");
    if (value.find_first_of("[\n") != std::string::npos)
        throw Failure(Misused, "a value cannot hold \"[\" or a line break");
    if (!value.empty() && value.find_last_of(" \t\r") == value.size() - 1)
        throw Failure(Misused, "a value cannot end with a blank");
}

/// Does an edit, or shows what it would change.
/// @param edit edits the file at the path that it is given; false when that cannot be written
template <class Change>
ExitCode Edit(const Call& call, Change edit)
{
    const std::string before = ReadFile(call.file);
    if (call.dryRun) {
        const TemporaryCopy copy(before);
        edit(copy.Path());
        call.out << UnifiedDifference(call.file, before, ReadFile(copy.Path()));
        return Done;
    }
    RequireWritable(call.file);
    if (!edit(call.file))
        throw Failure(Failed, "cannot write " + call.file);
    return Done;
}

ExitCode Get(const Call& call)
{
    const auto record = INIParser::GetRecord(call.key, call.section, call.file);
    if (record.empty())
        ThrowNotFound(call);
    call.out << record.front().Value << '\n';
    return Done;
}

ExitCode Keys(const Call& call)
{
    const auto records = INIParser::GetSection(call.section, call.file);
    if (records.empty()) {
        RequireTarget(call);
        ReadFile(call.file);
    }
    for (const auto& record : records)
        call.out << record.Key << '\n';
    return Done;
}

ExitCode Sections(const Call& call)
{
    const auto names = INIParser::GetSectionNames(call.file);
    if (names.empty())
        ReadFile(call.file);
    for (const std::string& name : names)
        call.out << name << '\n';
    return Done;
}

ExitCode Show(const Call& call)
{
    const std::string content = INIParser::Content(call.file);
    if (content.empty())
        ReadFile(call.file);
    call.out << content;
    return Done;
}

ExitCode CheckFile(const Call& call)
{
    ExitCode code = Done;
    for (const Finding& finding : Check(ReadFile(call.file))) {
        call.out << call.file << ':' << finding.line << ": " << finding.text << '\n';
        code = std::max(code, finding.malformed ? Misused : Failed);
    }
    return code;
}

ExitCode Set(const Call& call)
{
    RequireSectionName(call.section);
    RequireKeyAndValue(call.key, call.text);
    return Edit(call, [&](const std::string& path) {
        return INIParser::SetValue(call.key, call.text, call.section, path);
    });
}

ExitCode Create(const Call& call)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    if (fs::exists(call.file, ignored))
        throw Failure(Failed, call.file + " exists already");
    const bool done = call.dryRun ? fs::is_directory(fs::absolute(call.file).parent_path(), ignored)
                                  : INIParser::Create(call.file);
    if (!done)
        throw Failure(Failed, "cannot write " + call.file);
    return Done;
}

ExitCode Add(const Call& call)
{
    RequireSectionName(call.section);
    RequireNoSection(call.section, call.file);
    return Edit(call, [&](const std::string& path) { return INIParser::AddSection(call.section, path); });
}

ExitCode Delete(const Call& call)
{
    RequireTarget(call);
    return Edit(call, [&](const std::string& path) {
        return call.key.empty() ? INIParser::DeleteSection(call.section, path)
                                : INIParser::DeleteRecord(call.key, call.section, path);
    });
}

ExitCode Rename(const Call& call)
{
    if (call.section.empty())
        throw Failure(Misused, "keys above the first header have no header that could be renamed");
    RequireSectionName(call.newSection);
    RequireTarget(call);
    RequireNoSection(call.newSection, call.file);
    return Edit(call, [&](const std::string& path) {
        return INIParser::RenameSection(call.section, call.newSection, path);
    });
}

ExitCode Comment(const Call& call)
{
    RequireTarget(call);
    return Edit(call, [&](const std::string& path) {
        return call.key.empty() ? INIParser::CommentSection(static_cast<char>(call.with), call.section, path)
                                : INIParser::CommentRecord(call.with, call.key, call.section, path);
    });
}

ExitCode Uncomment(const Call& call)
{
    RequireTarget(call);
    return Edit(call, [&](const std::string& path) {
        return call.key.empty() ? INIParser::UnCommentSection(call.section, path)
                                : INIParser::UnCommentRecord(call.key, call.section, path);
    });
}

ExitCode Sort(const Call& call)
{
    if (INIParser::GetSectionNames(call.file).empty()) {
        ReadFile(call.file);
        throw Failure(Failed, "no sections to sort in " + call.file);
    }
    return Edit(call, [&](const std::string& path) { return INIParser::Sort(path, call.descending); });
}

/// @return the text as comment lines
std::string CommentLines(const std::string& text)
{
    std::string comments;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.find_first_of("[=") != std::string::npos)
            throw Failure(Misused, "a comment cannot hold \"[\" or \"=\", it would be read as a record");
        if (!comments.empty())
            comments += '\n';
        comments += line.find_first_of("#;") == 0 ? line : "; " + line;
    }
    if (comments.size() == 1)
        comments += ' '; // the library ends a text with a line break from two characters on
    return comments;
}

ExitCode Note(const Call& call)
{
    const std::string comments = CommentLines(call.text);
    RequireTarget(call);
    if (!INIParser::RecordExists(call.key, call.section, call.file)) // only a header can be missing here
        throw Failure(Failed, "no header of section " + Quoted(call.section) + " in " + call.file);
    return Edit(call, [&](const std::string& path) {
        return call.key.empty() ? INIParser::SetSectionComments(comments, call.section, path)
                                : INIParser::SetRecordComments(comments, call.key, call.section, path);
    });
}

/// The words that stand for arguments in a usage line, and where such an argument goes.
struct Place
{
    std::string_view word;
    std::string Call::*field;
};

constexpr Place Places[] = {
    {"FILE", &Call::file}, {"SECTION", &Call::section}, {"OLD", &Call::section}, {"NEW", &Call::newSection},
    {"[KEY]", &Call::key}, {"KEY", &Call::key},         {"VALUE", &Call::text},  {"TEXT", &Call::text},
};

constexpr std::string_view With = "--with CHAR";
constexpr std::string_view Descending = "--descending";
constexpr std::string_view DryRun = "--dry-run";

struct Command
{
    std::string_view name;
    std::string_view arguments; ///< a word each; one in brackets may be left out
    std::vector<std::string_view> options;
    std::string_view summary;
    std::string_view details;
    ExitCode (*run)(const Call&);

    bool Takes(std::string_view option) const { return std::ranges::count(options, option) > 0; }
};

const std::vector<Command> Commands = {
    {"get",
     "FILE SECTION KEY",
     {},
     "Prints the value of a key.",
     R"(The value of a commented-out key is printed as well. When the section holds the
key twice, the first one counts.
)",
     Get},
    {"keys",
     "FILE SECTION",
     {},
     "Prints the names of a section's keys.",
     R"(One name a line, in the order of the file, those of commented-out keys included.
)",
     Keys},
    {"sections",
     "FILE",
     {},
     "Prints the names of the sections.",
     R"(One name for each header, in the order of the file, those of commented-out
headers included.
)",
     Sections},
    {"show",
     "FILE",
     {},
     "Prints the file as it is understood.",
     R"(Prints each header and key with the comments above it, and leaves out what the
file holds besides: blank lines, indentation, text after a header.
)",
     Show},
    {"check",
     "FILE",
     {},
     "Says what reading or an edit does unexpectedly.",
     R"(Prints a line "FILE:LINE: TEXT" for everything in the file that is read, or
comes out of an edit, in a way that you may not expect:

  - what an edit loses: a last line without a line end, comments after the last
    record, text after the "]" of a header, some lines that are no record;
  - what is read as something else: a line with a "[" anywhere is a header, a
    comment with a "[" or "=" is a commented-out header or key (a commented-out
    key is reported when its name holds blanks, as in a sentence);
  - what would come back as something else after an edit: a line without a key
    before its "=", a header with a "=" in its name, a line that is no record;
  - names that hide others: duplicate sections and keys, blanks around "=" and
    inside the brackets of a header (they belong to the name), a byte order mark;
  - a header without "]", which keeps every operation from reading the file.

Exit code: 0 nothing to report, 1 something, 2 a header without "]".
)",
     CheckFile},
    {"set",
     "FILE SECTION KEY VALUE",
     {DryRun},
     "Sets the value of a key.",
     R"(A key that is new becomes the first of its section; a section that is new goes
to the end of the file. A commented-out key gets the value and stays commented
out. Refused is what would not be read back the same: a key that holds "[" or
"=" or begins with "#", ";" or a blank, a value that holds "[" or ends with a
blank, a section name that holds "]" or "=", and line breaks.
)",
     Set},
    {"create",
     "FILE",
     {DryRun},
     "Makes a new, empty file.",
     R"(A file that exists is left alone. With --dry-run nothing is printed, since an
empty file has no lines.
)",
     Create},
    {"add",
     "FILE SECTION",
     {DryRun},
     "Adds an empty section at the end.",
     R"(The section must not exist. Its name cannot hold "]", "=" or a line break.
)",
     Add},
    {"delete",
     "FILE SECTION [KEY]",
     {DryRun},
     "Deletes a key, or a whole section.",
     R"(The comments above what is deleted go as well. Of duplicate keys the first is
deleted; a section is deleted wherever its name stands.
)",
     Delete},
    {"rename",
     "FILE OLD NEW",
     {DryRun},
     "Renames a section.",
     R"(Every header of the name OLD is renamed. A section NEW must not exist; its name
cannot hold "]", "=" or a line break.
)",
     Rename},
    {"comment",
     "FILE SECTION [KEY]",
     {With, DryRun},
     "Comments out a key, or a whole section.",
     R"(Nothing is lost: "qmini uncomment" brings it back. Of duplicate keys the first
is commented out. What is commented out already gets the new character.

  --with CHAR    the character to comment out with: "#" (if not given) or ";"
)",
     Comment},
    {"uncomment",
     "FILE SECTION [KEY]",
     {DryRun},
     "Makes a key, or a whole section, live again.",
     R"(Of duplicate keys the first becomes live. A key whose name begins with "#" or ";"
("##key=value" in the file) loses one of these characters, and stays commented out.
)",
     Uncomment},
    {"sort",
     "FILE",
     {Descending, DryRun},
     "Sorts the sections, and the keys in each.",
     R"(Names are compared byte by byte, so "B" comes before "a". Comments move with the
line below them. Keys above the first header are dropped, and each header of a
name that stands twice gets all the keys of that name; "qmini check" finds such
names, and --dry-run shows the outcome.

  --descending   sort from the last name to the first
)",
     Sort},
    {"note",
     "FILE SECTION [KEY] TEXT",
     {DryRun},
     "Writes the comment above a key or a header.",
     R"(TEXT replaces the comments that stand there; an empty TEXT removes them. Each
line of TEXT that does not begin with "#" or ";" gets a "; " in front. A line
cannot hold "[" or "=", since it would be read as a record.
)",
     Note},
};

constexpr std::string_view Introduction = R"(qmini reads and edits INI files.

  qmini COMMAND FILE [ARGUMENT...]

)";

constexpr std::string_view Remarks = R"(
"qmini COMMAND --help" tells more about a command. A "--" ends the options, for
arguments that begin with "--". Names must match exactly, letter case and blanks
included. Keys above the first header are in the section "".

An edit writes the whole file anew: every header and key gets one space in front
(or the character that comments it out) and a plain line end, and blank lines go.
Comments stay above the line that they stood above. --dry-run prints the
difference that an edit would make, in the form that "patch" takes, and leaves
the file alone; "qmini check" tells what else you may not expect.

Exit code: 0 done or found, 1 not found or failed, 2 wrong usage or a malformed
file (a header without "]").
)";

std::string Usage(const Command& command)
{
    std::string usage = "qmini " + std::string(command.name) + ' ' + std::string(command.arguments);
    for (const std::string_view option : command.options)
        usage += " [" + std::string(option) + ']';
    return usage;
}

void PrintHelp(std::ostream& out)
{
    out << Introduction << std::left;
    for (const Command& command : Commands)
        out << "  " << std::setw(10) << command.name << std::setw(25) << command.arguments << command.summary
            << '\n';
    out << Remarks;
}

void PrintHelp(const Command& command, std::ostream& out)
{
    out << "usage: " << Usage(command) << "\n\n" << command.summary << "\n\n" << command.details;
    if (command.Takes(DryRun))
        out << (command.options.size() == 1 ? "\n" : "")
            << "  --dry-run      print the difference that this would make, and change nothing\n";
}

/// Takes the words of a command line apart.
/// @param words the command's name and what follows it
Call Parse(const Command& command, const std::vector<std::string>& words, std::ostream& out)
{
    Call call = {out};
    std::vector<std::string> arguments;
    bool optionsEnded = false;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (optionsEnded || !word->starts_with("--")) {
            arguments.push_back(*word);
        } else if (*word == "--") {
            optionsEnded = true;
        } else if (*word == "--help") {
            call.help = true;
            return call;
        } else if (*word == DryRun && command.Takes(DryRun)) {
            call.dryRun = true;
        } else if (*word == "--descending" && command.Takes(Descending)) {
            call.descending = true;
        } else if (*word == "--with" && command.Takes(With)) {
            if (++word == words.end() || (*word != "#" && *word != ";"))
                throw Failure(Misused, "--with takes \"#\" or \";\"");
            call.with = static_cast<INIParser::CommentChar>(word->front());
        } else {
            throw Failure(Misused, "no option " + *word + "; usage: " + Usage(command));
        }
    }

    std::istringstream places{std::string(command.arguments)};
    const std::vector<std::string> names(std::istream_iterator<std::string>(places), {});
    const auto isOptional = [](const std::string& name) { return name.front() == '['; };
    const auto optional = static_cast<std::size_t>(std::ranges::count_if(names, isOptional));
    if (arguments.size() != names.size() && arguments.size() + optional != names.size())
        throw Failure(Misused, "usage: " + Usage(command));
    auto argument = arguments.begin();
    for (const std::string& name : names) {
        if (isOptional(name) && arguments.size() < names.size())
            continue;
        const auto field = std::ranges::find(Places, name, &Place::word)->field;
        if (argument->empty() && (field == &Call::file || field == &Call::key))
            throw Failure(Misused, "an empty argument cannot name a file or a key");
        call.*field = *argument++;
    }
    return call;
}

ExitCode RunCommand(const std::vector<std::string>& words, std::ostream& out)
{
    constexpr auto seeHelp = "; \"qmini --help\" lists the commands";
    if (words.empty())
        throw Failure(Misused, std::string("no command given") + seeHelp);
    if (words.front() == "--help") {
        PrintHelp(out);
        return Done;
    }
    const auto command = std::ranges::find(Commands, words.front(), &Command::name);
    if (command == Commands.end())
        throw Failure(Misused, "no command " + Quoted(words.front()) + seeHelp);
    const Call call = Parse(*command, words, out);
    if (call.help) {
        PrintHelp(*command, out);
        return Done;
    }
    try {
        return command->run(call);
    } catch (const std::out_of_range&) {                 // so the library reports a header without "]"
        if (std::filesystem::is_regular_file(call.file)) // a pipe could not be read again
            for (const Finding& finding : Check(ReadFile(call.file)))
                if (finding.malformed)
                    throw Failure(Misused,
                                  call.file + ':' + std::to_string(finding.line) + ": " + finding.text);
        throw Failure(Misused, call.file + ": header without \"]\"");
    }
}

} // namespace

int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err)
{
    ExitCode code = Failed;
    std::string message;
    try {
        code = RunCommand(arguments, out);
        if (out.flush())
            return code;
        code = Failed;
        message = "cannot write to standard output";
    } catch (const Failure& failure) {
        code = failure.Code();
        message = failure.what();
    } catch (const std::bad_alloc&) {
        message = "out of memory";
    } catch (const std::exception& error) {
        message = error.what();
    }
    std::ranges::replace_if(
        message, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?'); // one line
    err << "qmini: " << message << '\n';
    return code;
}

} // namespace qmini
