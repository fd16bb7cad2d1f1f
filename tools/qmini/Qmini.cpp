// SPDX-License-Identifier: MIT
#include "qmini/Document.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <functional>
#include <iomanip>
#include <iterator>
#include <new>
#include <ostream>
#include <sstream>

namespace qmini {

namespace {

constexpr std::string_view SeeHelp = "; \"qmini --help\" lists the commands";

/// The words that stand for arguments in a usage line, and where such an argument goes.
constexpr std::pair<std::string_view, std::string Call::*> Fields[] = {
    {"FILE", &Call::File}, {"SECTION", &Call::Section}, {"OLD", &Call::Section}, {"NEW", &Call::NewSection},
    {"[KEY]", &Call::Key}, {"KEY", &Call::Key},         {"VALUE", &Call::Text},  {"TEXT", &Call::Text},
};

[[noreturn]] void ThrowMisuse(const Command& command, const std::string& message)
{
    throw Failure(Misused, std::string(command.Name) + ": " + message, {"usage: " + Usage(command)});
}

/// @return the text without control characters, which the names of a file may hold
std::string OneLine(std::string_view text)
{
    std::string line(text);
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
    return line;
}

/// Puts the arguments where the call has them.
void Assign(Call& call, const Command& command, const std::vector<std::string>& arguments, bool hasFile)
{
    std::istringstream words{std::string(command.Arguments)};
    std::vector<std::string> places(std::next(std::istream_iterator<std::string>(words), hasFile ? 0 : 1),
                                    {});
    if (arguments.size() < places.size())
        std::erase_if(places, [](const std::string& place) { return place.front() == '['; });
    if (arguments.size() < places.size())
        ThrowMisuse(command, "missing " + places[arguments.size()]);
    if (arguments.size() > places.size())
        ThrowMisuse(command, "one argument too many: " + Quoted(arguments[places.size()]));
    for (std::size_t i = 0; i != places.size(); ++i) {
        const auto field =
            std::ranges::find(Fields, places[i], [](const auto& f) { return f.first; })->second;
        if (arguments[i].empty() && (field == &Call::File || field == &Call::Key))
            ThrowMisuse(command, "an empty argument cannot name a file or a key");
        call.*field = arguments[i];
    }
}

void PrintHelp(std::ostream& out)
{
    out << "qmini reads and edits INI files.\n\n  qmini COMMAND FILE [ARGUMENT...]\n\n" << std::left;
    for (const Command& command : Commands)
        out << "  " << std::setw(10) << command.Name << std::setw(25) << command.Arguments << command.Summary
            << '\n';
    out << "\n\"qmini COMMAND --help\" tells more about a command.\n";
    for (const Topic& topic : Topics)
        out << '\n' << topic.Title << ":\n" << topic.Text;
}

void PrintHelp(const Command& command, std::ostream& out)
{
    out << "usage: " << Usage(command) << "\n\n" << command.Summary << "\n\n" << command.Details << std::left;
    for (const Option* option : command.Options)
        out << (option == command.Options.front() ? "\n  " : "  ") << std::setw(18) << Pattern(*option)
            << option->Help << '\n';
}

void RunCommand(const std::vector<std::string>& words, const Streams& streams)
{
    if (words.empty())
        throw Failure(Misused, "no command given" + std::string(SeeHelp));
    if (words.front() == "--help" || words.front() == "-h")
        return PrintHelp(streams.Out);
    if (words.front() == "--version") {
        streams.Out << "qmini " QMINI_VERSION "\n";
        return;
    }
    const auto [command, call] = Parse(words);
    if (call.Help)
        PrintHelp(*command, streams.Out);
    else if (command->Run != nullptr)
        command->Run(call, streams);
    else
        EditFile(call, streams, std::bind_front(command->Edit, call));
}

} // namespace

std::string Pattern(const Option& option)
{
    return std::string(option.Name) + (option.Value.empty() ? "" : " ") + std::string(option.Value);
}

std::string Usage(const Command& command)
{
    std::string usage = "qmini " + std::string(command.Name) + ' ' + std::string(command.Arguments);
    for (const Option* option : command.Options)
        usage += " [" + Pattern(*option) + ']';
    return usage;
}

std::pair<const Command*, Call> Parse(const std::vector<std::string>& words, bool hasFile)
{
    const auto found = std::ranges::find(Commands, words.front(), &Command::Name);
    if (found == Commands.end())
        throw Failure(Misused, "no command " + Quoted(words.front()) + std::string(SeeHelp));
    const Command& command = *found;
    if (!hasFile && command.Edit == nullptr)
        throw Failure(Misused, Quoted(command.Name) + " does not edit");

    Call call;
    std::vector<std::string> arguments;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::string name =
            word->substr(0, word->starts_with("--") ? word->find('=') : std::string::npos);
        const bool hasValue = name.size() != word->size();
        const auto option = std::ranges::find(command.Options, name, &Option::Name);
        if (*word == "--") {
            arguments.insert(arguments.end(), word + 1, words.end());
            break;
        }
        if ((*word == "--help" || *word == "-h") && hasFile) {
            call.Help = true;
            return {&command, call};
        }
        if (option == command.Options.end()) {
            if (word->starts_with("--"))
                ThrowMisuse(command, "no option " + name);
            arguments.push_back(*word);
        } else if ((*option)->Flag != nullptr) {
            if (hasValue)
                ThrowMisuse(command, "option " + name + " takes no value");
            call.*(*option)->Flag = true;
        } else {
            if (!hasValue && word + 1 == words.end())
                ThrowMisuse(command, "missing " + Pattern(**option));
            call.*(*option)->Text = hasValue ? word->substr(name.size() + 1) : *++word;
        }
    }
    if (!hasFile && (call.DryRun || call.Force))
        ThrowMisuse(command, "--dry-run and --force are options of all edits together");
    Assign(call, command, arguments, hasFile);
    return {&command, call};
}

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

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
        for (const std::string& detail : failure.Details)
            streams.Err << OneLine(detail) << '\n';
    } catch (const std::bad_alloc&) {
        code = Failed;
        Say(streams.Err, "out of memory");
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
