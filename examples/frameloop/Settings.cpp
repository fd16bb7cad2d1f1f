#include "examples/frameloop/Settings.h"

#include "examples/frameloop/Text.h"
#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/ini/INIParser.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace hostapp {

namespace {

struct Setting
{
    const char* section;
    const char* key;
    const char* allowed;                              ///< what a value has to be
    bool (*set)(Settings&, const std::string& value); ///< false when the value is not allowed
    std::string (*get)(const Settings&);
};

template <int Settings::*Member, int Least, int Most>
bool SetNumber(Settings& settings, const std::string& value)
{
    int number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end || number < Least || number > Most)
        return false;
    settings.*Member = number;
    return true;
}

template <int Settings::*Member>
std::string GetNumber(const Settings& settings)
{
    return std::to_string(settings.*Member);
}

bool SetSink(Settings& settings, const std::string& value)
{
    if (value != "debugger" && value != "console")
        return false;
    settings.sink = value == "debugger" ? Sink::Debugger : Sink::Console;
    return true;
}

std::string GetSink(const Settings& settings)
{
    return settings.sink == Sink::Console ? "console" : "debugger";
}

bool SetTitle(Settings& settings, const std::string& value)
{
    settings.title = value;
    return true;
}

std::string GetTitle(const Settings& settings) { return '"' + settings.title + '"'; }

constexpr Setting Table[] = {
    {"Window", "Title", "a text", SetTitle, GetTitle},
    {"Frames", "FrameLimit", "a whole number from 0 to 1000", SetNumber<&Settings::frameLimit, 0, 1000>,
     GetNumber<&Settings::frameLimit>},
    {"Frames", "Workload", "a whole number from 1 to 1000", SetNumber<&Settings::workload, 1, 1000>,
     GetNumber<&Settings::workload>},
    {"Log", "Sink", "\"console\" or \"debugger\"", SetSink, GetSink},
};

std::string Trimmed(const std::string& text)
{
    const auto begin = text.find_first_not_of(" \t");
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

void RequireReadable(const std::string& file)
{
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored))
        throw std::runtime_error(file + " does not exist");
    if (!std::filesystem::is_regular_file(file, ignored) || !std::ifstream(file))
        throw std::runtime_error(file + " cannot be read");
    if (CQMFileCheck(Wide(file)).CheckDeleted()) // it trims blanks, and takes a backslash for a separator
        throw std::runtime_error(file + " cannot be watched under this name");
}

bool EndsInsideALine(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return stream.seekg(-1, std::ios::end) && stream.peek() != '\n';
}

} // namespace

Settings LoadSettings(const std::string& file, Settings settings, std::vector<std::string>& problems)
try {
    RequireReadable(file);
    for (const Setting& setting : Table) {
        // Not GetValue: it would also find a key that is commented out, above the live one perhaps, and it
        // takes the blanks around a "=" for a part of key and value.
        const auto records = INIParser::GetSection(setting.section, file);
        const auto record = std::ranges::find_if(records, [&](const INIParser::Record& candidate) {
            return candidate.Commented == ' ' && Trimmed(candidate.Key) == setting.key;
        });
        if (record == records.end())
            continue;
        const std::string value = Trimmed(record->Value);
        if (!setting.set(settings, value))
            problems.push_back(std::string(setting.key) + " is \"" + value + "\" and not " + setting.allowed +
                               ", " + setting.get(settings) + " is used");
    }
    if (EndsInsideALine(file))
        problems.emplace_back("the last line has no line end: it is not read, and lost when the host ends");
    return settings;
} catch (const std::out_of_range&) { // so the library reports it
    throw std::runtime_error(file + " has a section header without \"]\"");
}

std::vector<std::string> Differences(const Settings& before, const Settings& after)
{
    std::vector<std::string> differences;
    for (const Setting& setting : Table) {
        const std::string was = setting.get(before);
        const std::string is = setting.get(after);
        if (was != is)
            differences.push_back(std::string(setting.key).append(" ").append(was).append(" -> ").append(is));
    }
    return differences;
}

} // namespace hostapp
