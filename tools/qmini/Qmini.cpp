// SPDX-License-Identifier: MIT
/// @file
/// The command line, and the help on it.

#include "qmini/Qmini.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iterator>
#include <ostream>
#include <sstream>

namespace qmini {

namespace {

constexpr std::string_view Help =
#include "qmini/Help.txt"
    ;

constexpr Command Commands[] = {
    {"get", Get, {}},       {"keys", Keys, {}},       {"sections", Sections, {}},
    {"list", List, {}},     {"check", CheckFile, {}}, {"set", {}, Set},
    {"create", Create, {}}, {"add", {}, Add},         {"delete", {}, Delete},
    {"rename", {}, Rename}, {"comment", {}, Comment}, {"uncomment", {}, Uncomment},
    {"sort", {}, Sort},     {"note", {}, Note},       {"edit", EditBatch, {}},
};

/// The words that stand for arguments in a usage line, and where such an argument goes.
constexpr std::pair<std::string_view, std::string Call::*> Arguments[] = {
    {"FILE", &Call::File},   {"SECTION", &Call::Section}, {"[SECTION]", &Call::Section},
    {"OLD", &Call::Section}, {"NEW", &Call::NewSection},  {"KEY", &Call::Key},
    {"[KEY]", &Call::Key},   {"VALUE", &Call::Text},      {"TEXT", &Call::Text},
};

constexpr std::pair<std::string_view, bool Call::*> Flags[] = {
    {"--commented", &Call::Commented}, {"-z", &Call::EndsWithNul},          {"--json", &Call::Json},
    {"--quiet", &Call::Quiet},         {"--descending", &Call::Descending}, {"--dry-run", &Call::DryRun},
    {"--force", &Call::Force},         {"--parser", &Call::Parser},
};

constexpr std::pair<std::string_view, std::optional<std::string> Call::*> OptionsWithValue[] = {
    {"--default", &Call::Default}, {"--with", &Call::With}};

/// @return where the table has something for a name, or null
template <class Table>
auto Find(const Table& table, std::string_view name)
{
    const auto at = std::ranges::find(table, name, [](const auto& entry) { return entry.first; });
    return at != std::end(table) ? at->second : nullptr;
}

/// @return the help on a command, which begins with its usage line
std::string_view HelpOn(std::string_view command)
{
    const std::size_t begin = Help.find("usage: qmini " + std::string(command) + ' ');
    return Help.substr(begin, Help.find("\n\n\n", begin) + 1 - begin);
}

std::string Usage(std::string_view command)
{
    return std::string(HelpOn(command).substr(0, HelpOn(command).find('\n')));
}

[[noreturn]] void ThrowMisuse(std::string_view command, const std::string& message)
{
    throw Failure(Misused, std::string(command) + ": " + message, Usage(command));
}

/// Puts the arguments where the call has them.
void Assign(Call& call, std::string_view command, const std::vector<std::string>& arguments, bool hasFile)
{
    std::istringstream usage(Usage(command));
    std::vector<std::string> places(std::istream_iterator<std::string>(usage), {});
    places.erase(places.begin(), places.begin() + (hasFile ? 3 : 4)); // usage: qmini COMMAND [FILE]
    std::erase_if(places, [](const std::string& place) { return Find(Arguments, place) == nullptr; });
    if (arguments.size() < places.size())
        std::erase_if(places, [](const std::string& place) { return place.front() == '['; });
    if (arguments.size() < places.size())
        ThrowMisuse(command, "missing " + places[arguments.size()]);
    if (arguments.size() > places.size())
        ThrowMisuse(command, "one argument too many: " + Quoted(arguments[places.size()]));
    for (std::size_t i = 0; i != places.size(); ++i) {
        const auto field = Find(Arguments, places[i]);
        if (arguments[i].empty() && (field == &Call::File || field == &Call::Key))
            ThrowMisuse(command, "an empty argument cannot name a file or a key");
        call.*field = arguments[i]; // NOLINT(clang-analyzer-core.*): the others were erased
        call.HasSection = call.HasSection || field == &Call::Section;
    }
}

void PrintHelp(std::ostream& out)
{
    out << Help.substr(0, Help.find('\n')) << "\n\n  qmini COMMAND FILE [ARGUMENT...]\n\n";
    for (const Command& command : Commands) {
        const std::string usage = Usage(command.Name);
        const auto summary = HelpOn(command.Name).substr(usage.size() + 2);
        out << "  " << std::setw(31) << std::left << usage.substr(13, usage.find(" [-") - 13)
            << summary.substr(0, summary.find('\n') + 1);
    }
    out << "\n\"qmini COMMAND --help\" tells more.\n\n" << Help.substr(Help.find("Common options:"));
}

void RunCommand(std::vector<std::string> words, const Streams& streams)
{
    if (words.size() > 1 && words.front() == "--parser") // the command takes it
        std::swap(words[0], words[1]);
    if (words.empty())
        throw Failure(Misused, "no command given; see \"qmini --help\"");
    if (words.front() == "--help" || words.front() == "-h")
        return PrintHelp(streams.Out);
    if (words.front() == "--version")
        return void(streams.Out << "qmini " QMINI_VERSION "\n");
    const auto [command, call] = ReadCall(words);
    if (call.Help)
        streams.Out << HelpOn(command->Name) << "\n\"qmini --help\" explains the common options.\n";
    else if (command->Run != nullptr)
        command->Run(call, streams);
    else
        EditFile(call, streams, command->Edit);
}

} // namespace

std::pair<const Command*, Call> ReadCall(const std::vector<std::string>& words, bool hasFile)
{
    const Command* const command = std::ranges::find(Commands, words.front(), &Command::Name);
    if (command == std::end(Commands))
        throw Failure(Misused, "no command " + Quoted(words.front()) + "; see \"qmini --help\"");
    if (!hasFile && command->Edit == nullptr)
        throw Failure(Misused, Quoted(command->Name) + " does not edit");

    Call call;
    std::vector<std::string> arguments;
    const std::string usage = Usage(command->Name);
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::string name = word->substr(0, word->starts_with("--") ? word->find('=') : word->npos);
        const bool hasValue = name.size() != word->size();
        const auto flag = Find(Flags, *word);
        const auto text = Find(OptionsWithValue, name);
        if (*word == "--") {
            arguments.insert(arguments.end(), word + 1, words.end());
            break;
        }
        if (hasFile && (*word == "--help" || (*word == "-h" && arguments.empty()))) {
            call.Help = true;
            return {command, call};
        }
        if (flag != nullptr && usage.find('[' + name + ']') != std::string_view::npos)
            call.*flag = true;
        else if (text != nullptr && usage.find('[' + name + ' ') != std::string_view::npos) {
            if (!hasValue && word + 1 == words.end())
                ThrowMisuse(command->Name, "missing the value of " + name);
            call.*text = hasValue ? word->substr(name.size() + 1) : *++word;
        } else if (word->starts_with("--"))
            ThrowMisuse(command->Name, "no option " + name + "; after \"--\" it is an argument");
        else
            arguments.push_back(*word);
    }
    if (!hasFile && (call.DryRun || call.Force || call.Parser))
        ThrowMisuse(command->Name, "--dry-run, --force and --parser are options of all edits together");
    Assign(call, command->Name, arguments, hasFile);
    return {command, call};
}

std::string OneLine(std::string_view text)
{
    std::string line(text);
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
    return line;
}

void Say(std::ostream& err, std::string_view line) { err << "qmini: " << OneLine(line) << '\n'; }

int Run(const std::vector<std::string>& arguments, const Streams& streams)
{
    ExitCode code = Done;
    try {
        RunCommand(arguments, streams);
    } catch (const Failure& failure) {
        code = failure.Code;
        if (*failure.what() != '\0')
            Say(streams.Err, failure.what());
        if (!failure.Usage.empty())
            streams.Err << failure.Usage << '\n';
    } catch (const std::exception& error) {
        code = Failed;
        Say(streams.Err, error.what());
    }
    if (!streams.Out.flush() && code == Done) {
        code = Failed;
        Say(streams.Err, "cannot write to standard output");
    }
    return code;
}

} // namespace qmini
