#include "examples/frameloop/CommandLine.h"

#include "examples/frameloop/Application.h"
#include "examples/frameloop/Pace.h"
#include "qmUtility/timing/QMFPSCounter.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <exception>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <system_error>

namespace hostapp {

namespace {

constexpr const char* Help = R"(host draws an animated picture and measures its own frame rate.

  host [--frames N] [--seconds S] [--frame-log FILE] [SETTINGS]

  SETTINGS          the INI file with the settings (host.ini if not given); a
                    sample with all of them is examples/host/host.ini
  --frames N        end after N frames
  --seconds S       end after S seconds
  --frame-log FILE  write the figures of every frame to FILE, which is overwritten
  --help            print this

Without --frames and --seconds it runs until Ctrl-C. Changes of the settings file
are taken over while it runs: edit FrameLimit, say, in another terminal. A file
that is deleted, or has a section header without a "]", changes nothing until it
can be read again. In the end the statistics of the run go into the section
Statistics of the file.

In a terminal there is a picture; elsewhere there is a line each half second.

)";

constexpr const char* Codes = R"(
Exit code: 0 done, 1 a file cannot be read or written, 2 wrong usage.
)";

class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const std::string& message)
        : std::runtime_error(message + "; \"host --help\" tells what there is")
    {}
};

struct CommandLine
{
    Options options;
    unsigned long frames = 0; ///< 0 for no bound
    double seconds = 0;       ///< 0 for no bound
    bool help = false;
};

template <class Number>
Number ParseNumber(const std::string& option, const std::string& text, Number least)
{
    constexpr Number most = 1'000'000'000;
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !(number >= least && number <= most))
        throw UsageError(option + " takes a number from " + (least < 1 ? "0.001" : "1") + " to a billion");
    return number;
}

CommandLine Parse(const std::vector<std::string>& words)
{
    CommandLine line;
    std::vector<std::string> files;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const std::string& option = *word;
        const auto argument = [&] {
            if (word + 1 == words.end() || word[1].empty())
                throw UsageError(option + " takes an argument");
            return *++word;
        };
        if (option == "--help")
            line.help = true;
        else if (option == "--frames")
            line.frames = ParseNumber(option, argument(), 1UL);
        else if (option == "--seconds")
            line.seconds = ParseNumber(option, argument(), 0.001);
        else if (option == "--frame-log")
            line.options.frameLog = argument();
        else if (option.empty() || option.front() == '-')
            throw UsageError("no option \"" + option + '"');
        else
            files.push_back(option);
    }
    if (files.size() > 1)
        throw UsageError("more than one settings file");
    if (!files.empty())
        line.options.settingsFile = files.front();
    std::error_code ignored; // when one of the files is not there
    if (std::filesystem::equivalent(line.options.settingsFile, line.options.frameLog, ignored))
        throw UsageError("the frame log would overwrite the settings file");
    return line;
}

void RunHost(const CommandLine& line, const std::function<bool()>& isInterrupted)
{
    Application application(line.options);
    const auto end = Clock::now() + std::chrono::duration<double>(line.seconds);
    const Statistics statistics = application.Run([&](const CQMFPSCounter& counter) {
        return !isInterrupted() && (line.frames == 0 || counter.GetTotalFrame() < line.frames) &&
               (line.seconds == 0 || Clock::now() < end);
    });
    application.Finish(statistics);
}

} // namespace

int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
        const std::function<bool()>& isInterrupted)
{
    int code = 1;
    std::string message;
    try {
        const CommandLine line = Parse(arguments);
        if (!line.help)
            RunHost(line, isInterrupted);
        else if (!(out << Help << FrameLog::Description << Codes << std::flush))
            throw std::runtime_error("cannot write to standard output");
        return 0;
    } catch (const UsageError& error) {
        code = 2;
        message = error.what();
    } catch (const std::exception& error) {
        message = error.what();
    }
    std::ranges::replace_if(
        message, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?'); // one line
    err << "host: " << message << '\n';
    return code;
}

} // namespace hostapp
