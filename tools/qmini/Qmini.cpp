// SPDX-License-Identifier: MIT
// The command line, and the help on it.

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
    {"get", Get, {}},         {"keys", Names, {}},        {"sections", Names, {}},
    {"list", List, {}},       {"check", Check, {}},       {"set", Edit, Set},
    {"create", Create, {}},   {"add", Edit, Add},         {"delete", Edit, Delete},
    {"rename", Edit, Rename}, {"comment", Edit, Comment}, {"uncomment", Edit, Uncomment},
    {"sort", Edit, Sort},     {"note", Edit, Note},       {"edit", EditBatch, {}},
};

/// The words that stand for arguments in a usage line, and where such an argument goes.
const std::map<std::string_view, std::string Call::*> Arguments = {
    {"FILE", &Call::File},   {"SECTION", &Call::Section}, {"[SECTION]", &Call::Section},
    {"OLD", &Call::Section}, {"NEW", &Call::NewSection},  {"KEY", &Call::Key},
    {"[KEY]", &Call::Key},   {"VALUE", &Call::Text},      {"TEXT", &Call::Text},
};

/// @return the help on a command, which begins with its usage line
std::string_view HelpOn(std::string_view command) {
    const std::size_t begin = Help.find("usage: qmini " + std::string(command) + ' ');
    return Help.substr(begin, Help.find("\n\n\n", begin) + 1 - begin);
}

std::string Usage(std::string_view command) {
    return std::string(HelpOn(command).substr(0, HelpOn(command).find('\n')));
}

[[noreturn]] void ThrowMisuse(std::string_view command, const std::string& message) {
    throw Failure{Misused, std::string(command) + ": " + message, Usage(command)};
}

/// Puts the arguments where the call has them.
/// @param usage the words of the usage line, in which the options come last
void Assign(Call& call, const std::vector<std::string>& usage, const std::vector<std::string>& arguments) {
    const auto isOption = [](const std::string& place) { return place.starts_with("[-"); };
    std::vector<std::string> places(usage.begin() + 3,
                                    std::ranges::find_if(usage, isOption));  // from FILE on
    if (arguments.size() < places.size())
        std::erase_if(places, [](const std::string& place) { return place.front() == '['; });
    if (arguments.size() < places.size())
        ThrowMisuse(call.Command->Name, "missing " + places[arguments.size()]);
    if (arguments.size() > places.size())
        ThrowMisuse(call.Command->Name, "one argument too many: " + Quoted(arguments[places.size()]));
    for (std::size_t i = 0; i != places.size(); ++i) {
        const auto field = Arguments.at(places[i]);
        if (arguments[i].empty() && (field == &Call::File || field == &Call::Key))
            ThrowMisuse(call.Command->Name, "an empty argument cannot name a file or a key");
        call.*field = arguments[i];
        call.HasSection = call.HasSection || field == &Call::Section;
    }
}

void PrintHelp(std::ostream& out) {
    out << Help.substr(0, Help.find('\n')) << "\n\n  qmini COMMAND FILE [ARGUMENT...]\n\n";
    for (const Command& command : Commands) {
        const std::string usage = Usage(command.Name);
        const auto summary = HelpOn(command.Name).substr(usage.size() + 2);
        out << "  " << std::setw(31) << std::left << usage.substr(13, usage.find(" [-") - 13)
            << summary.substr(0, summary.find('\n') + 1);
    }
    out << "\n\"qmini COMMAND --help\" tells more.\n\n" << Help.substr(Help.find("Common options:"));
}

void RunCommand(std::vector<std::string> words, const Streams& streams) {
    if (words.size() > 1 && words.front() == "--parser")  // the command takes it
        std::swap(words[0], words[1]);
    if (words.empty()) throw Failure{Misused, "no command given; see \"qmini --help\""};
    if (words.front() == "--help" || words.front() == "-h") return PrintHelp(streams.Out);
    if (words.front() == "--version") return void(streams.Out << "qmini " QMINI_VERSION "\n");
    const Call call = ReadCall(words);
    if (call.Has("--help"))
        streams.Out << HelpOn(call.Command->Name) << "\n\"qmini --help\" explains the common options.\n";
    else
        call.Command->Run(call, streams);
}

}  // namespace

Call ReadCall(const std::vector<std::string>& words, const Call* batch) {
    const Command* const command = std::ranges::find(Commands, words.front(), &Command::Name);
    if (command == std::end(Commands))
        throw Failure{Misused, "no command " + Quoted(words.front()) + "; see \"qmini --help\""};
    if (batch != nullptr && command->Edit == nullptr)
        throw Failure{Misused, Quoted(command->Name) + " does not edit"};

    Call call;
    call.Command = command;
    std::vector<std::string> arguments;
    if (batch != nullptr) arguments.push_back(batch->File);
    std::istringstream line(Usage(command->Name));
    const std::vector<std::string> usage(std::istream_iterator<std::string>(line), {});
    const auto isUsage = [&](const std::string& word) { return std::ranges::count(usage, word) != 0; };
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::string name = word->substr(0, word->starts_with("--") ? word->find('=') : word->npos);
        const bool hasValue = name.size() != word->size();
        if (*word == "--") {
            arguments.insert(arguments.end(), word + 1, words.end());
            break;
        }
        if (batch == nullptr && (*word == "--help" || (*word == "-h" && arguments.empty()))) {
            call.Options["--help"];
            return call;
        }
        if (word->starts_with('-') && isUsage('[' + *word + ']'))
            call.Options[*word];
        else if (!name.ends_with(']') && isUsage('[' + name)) {
            if (!hasValue && word + 1 == words.end())
                ThrowMisuse(command->Name, "missing the value of " + name);
            call.Options[name] = hasValue ? word->substr(name.size() + 1) : *++word;
        } else if (word->starts_with("--"))
            ThrowMisuse(command->Name, "no option " + name + "; after \"--\" it is an argument");
        else
            arguments.push_back(*word);
    }
    if (batch != nullptr) {
        if (call.Has("--dry-run") || call.Has("--force") || call.Has("--parser"))
            ThrowMisuse(command->Name, "--dry-run, --force and --parser are options of all edits together");
        call.Options.insert(batch->Options.begin(), batch->Options.end());
    }
    Assign(call, usage, arguments);
    return call;
}

std::string OneLine(std::string_view text) {
    std::string line(text);
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
    return line;
}

void Say(std::ostream& err, std::string_view line) { err << "qmini: " << OneLine(line) << '\n'; }

int Run(const std::vector<std::string>& arguments, const Streams& streams) {
    ExitCode code = Done;
    try {
        RunCommand(arguments, streams);
    } catch (const Failure& failure) {
        code = failure.Code;
        if (!failure.Message.empty()) Say(streams.Err, failure.Message);
        if (!failure.Usage.empty()) streams.Err << failure.Usage << '\n';
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

}  // namespace qmini
