// SPDX-License-Identifier: MIT
// A frame loop that uses every service of the library: it draws bouncing balls, measures its frame rate,
// rereads its settings whenever their file changes, and saves the statistics of the run in the same file.
//
// It draws in place with escape sequences and changes no mode of the terminal, so there is nothing to
// restore when it is suspended or killed.

#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr const char* Help =
    R"(usage: frameloop [--frames N] [--seconds S] [FILE]

Draws bouncing balls with escape sequences until Ctrl-C, or until the output is
closed. Needs a terminal of at least 80 x 16 characters. FILE (frameloop.ini)
holds the settings, which can be edited meanwhile, and receives the statistics.

  --frames N   end after N frames
  --seconds S  end after S seconds
  --help       print this text

Exit code: 0 success, 1 FILE cannot be read or written, 2 wrong usage
)";

volatile std::sig_atomic_t interrupted = 0;

extern "C" void Interrupt(int /*signal*/) { interrupted = 1; }

CString Widen(const std::string& text)
{
    CString wide;
    wide.Format(L"%hs", text.c_str());
    return wide;
}

int ParsePositive(const std::string& name, const std::string& text)
{
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < 1)
        throw std::runtime_error(name + " must be a positive whole number");
    return number;
}

struct Options
{
    std::string File = "frameloop.ini";
    unsigned long Frames = ULONG_MAX;
    int Seconds = INT_MAX;
    bool Help = false;
};

Options ParseArguments(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--help")
            options.Help = true;
        else if (word == "--frames" && i + 1 != arguments.size())
            options.Frames = static_cast<unsigned long>(ParsePositive(word, arguments[++i]));
        else if (word == "--seconds" && i + 1 != arguments.size())
            options.Seconds = ParsePositive(word, arguments[++i]);
        else if (word[0] == '-')
            throw std::runtime_error("unknown or incomplete option '" + word + "'");
        else
            options.File = word;
    }
    return options;
}

INIDocument LoadDocument(const std::string& file)
{
    INIDocument document;
    std::error_code error;
    if (!document.Load(file, error))
        throw std::system_error(error); // a file that cannot be read is never replaced
    return document;
}

/// The settings in a file, loaded again when it changes.
class Settings
{
public:
    /// @throws std::runtime_error when the file cannot be read, or a setting is out of range
    explicit Settings(const std::string& file) : m_file(file), m_watch(Widen(file)) { Load(); }

    int FrameLimit() const { return m_frameLimit; } ///< per second; 0 for none
    int Balls() const { return m_balls; }

    /// Returns the settings as one line, or why those in the file are not in force.
    CString Describe() const
    {
        CString text;
        if (m_problem.empty())
            text.Format(L"FrameLimit %d, Balls %d in %hs", m_frameLimit, m_balls, m_file.c_str());
        else
            text.Format(L"%hs: %hs", m_file.c_str(), m_problem.c_str());
        return text;
    }

    /// Loads the settings if the file has changed. A file that was written since the last call may be
    /// incomplete and is left to the next call; a file that is gone counts as modified until it is back.
    void Update()
    try {
        const bool wasModified = m_isModified;
        m_isModified = m_watch.CheckModified();
        const bool isJustWritten = m_isModified && m_watch.ApplyChanges();
        if ((m_isModified || wasModified) && !isJustWritten)
            Load();
    } catch (const std::runtime_error& error) {
        m_problem = error.what();
    }

private:
    void Load()
    {
        const INIDocument document = LoadDocument(m_file);
        const auto number = [&](const char* key, const char* section, int fallback) {
            const std::optional<int> value = document.Get<int>(key, section);
            if (value ? *value < 0 || *value > 1000 : document.RecordExists(key, section))
                throw std::runtime_error(std::string(key) + " must be a whole number from 0 to 1000");
            return value.value_or(fallback);
        };
        const int frameLimit = number("FrameLimit", "Frames", 60);
        m_balls = number("Balls", "Picture", 5);
        m_frameLimit = frameLimit;
        m_problem.clear();
    }

    std::string m_file;
    CQMFileCheck m_watch; ///< constructed before the settings are loaded, so that no change is missed
    bool m_isModified = false;
    int m_frameLimit = 0;
    int m_balls = 0;
    std::string m_problem;
};

/// Saves the statistics and keeps what else the file holds now.
void SaveStatistics(const CQMFPSCounter& counter, double seconds, const std::string& file)
{
    INIDocument document = LoadDocument(file);
    const auto set = [&](const char* key, auto value) {
        if (!document.SetValue(key, std::to_string(value), "Statistics"))
            throw std::runtime_error(std::string(key) + " cannot be set");
    };
    const auto toSeconds = [&](auto ticks) {
        return static_cast<double>(ticks) / static_cast<double>(counter.GetTickPeriod());
    };
    set("Frames", counter.GetTotalFrame());
    set("Seconds", seconds);
    set("FramesPerSecond", static_cast<double>(counter.GetTotalFrame()) / seconds);
    set("ShortestFrame", toSeconds(counter.GetTickMinimum()));
    set("AverageFrame", toSeconds(counter.GetTickAverage()));
    set("LongestFrame", toSeconds(counter.GetTickMaximum()));
    std::error_code error;
    if (!document.Save(file, error))
        throw std::system_error(error);
}

constexpr int Rows = 12;
constexpr int Columns = 64;

/// Draws the balls where they are at a time, so that their speed does not depend on the frame rate.
std::wstring DrawBalls(double seconds, int balls)
{
    std::vector<std::wstring> rows(Rows, std::wstring(Columns, L' '));
    for (int ball = 0; ball != balls; ++ball) {
        const double right = 0.5 + 0.5 * std::sin(seconds * (0.4 + 0.13 * ball) + ball);
        const double down = 1 - std::abs(std::sin(seconds * (1.5 + 0.07 * ball) + ball));
        const auto row = static_cast<std::size_t>(std::lround(down * (Rows - 1)));
        const auto column = static_cast<std::size_t>(std::lround(right * (Columns - 1)));
        rows[row][column] = L'o';
    }
    std::wstring picture;
    for (const std::wstring& row : rows)
        picture += row + L"\033[K\n"; // erases the rest of the line
    return picture;
}

void Run(const Options& options)
{
    Settings settings(options.File);
    const CQMDebugTraceStartEndMarker marker(L"Frame loop", true, true, false);
    CQMFPSCounter counter(eQMFPSType_Instant);
    counter.Reset(); // forgets the empty frames that measured the counter's own cost
    CQMTimer stopwatch;
    const auto start = Clock::now();
    auto now = start;
    auto nextUpdate = start + std::chrono::milliseconds(100);
    auto frameEnd = start;
    std::string toTop; // the first frame is drawn where the cursor is
    CString figures;
    do {
        counter.Start();
        if (now >= nextUpdate) {
            nextUpdate = now + std::chrono::milliseconds(100);
            settings.Update();
            figures.Format(L"%.1f frames per second (mean %.1f, min %.1f, max %.1f)", counter.GetFPS(),
                           counter.GetFPSAverage(), counter.GetFPSMinimum(), counter.GetFPSMaximum());
        }
        const std::wstring picture =
            DrawBalls(std::chrono::duration<double>(now - start).count(), settings.Balls());
        std::cout << toTop << std::flush; // fails when the output is closed; the console log would not
        CQMConsoleAPI::Log(L"%s%.79s\033[K\n%.79s\033[K\n", picture.c_str(), figures.GetString(),
                           settings.Describe().GetString());
        toTop = "\033[" + std::to_string(Rows + 2) + 'A';
        if (settings.FrameLimit() != 0) {
            frameEnd = std::max(frameEnd + Clock::duration(1s) / settings.FrameLimit(), Clock::now());
            std::this_thread::sleep_until(frameEnd);
        }
        counter.End();
        now = Clock::now();
    } while (interrupted == 0 && std::cout && counter.GetTotalFrame() < options.Frames &&
             now - start < std::chrono::seconds(options.Seconds));
    stopwatch.Stop(false);
    stopwatch.LogLapsedTime(false, false, L"%d frames", static_cast<int>(counter.GetTotalFrame()));
    SaveStatistics(counter, stopwatch.GetLapsedTime(false), options.File);
}

} // namespace

int main(int argc, char* argv[])
{
    Options options;
    try {
        options = ParseArguments({argv + 1, argv + argc});
    } catch (const std::runtime_error& error) {
        std::cerr << "frameloop: " << error.what() << '\n';
        return 2;
    }
    if (options.Help) {
        std::cout << Help;
        return 0;
    }
    (void)std::signal(SIGINT, Interrupt);
    (void)std::signal(SIGTERM, Interrupt);
#ifdef SIGPIPE
    (void)std::signal(SIGPIPE, SIG_IGN); // a closed output ends the loop, which then saves the statistics
#endif
    try {
        Run(options);
    } catch (const std::exception& error) {
        std::cerr << "frameloop: " << options.File << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}
