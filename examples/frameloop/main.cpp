// SPDX-License-Identifier: MIT
// A frame loop that uses every service of the library. It changes no mode of the terminal, so nothing has to
// be restored when it is suspended or killed.

#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* Help =
    R"(usage: frameloop [--seconds S] [FILE]

Draws bouncing balls with escape sequences until Ctrl-C, or until the output is
closed. Needs a terminal of at least 80 x 16 characters. FILE (frameloop.ini)
contains the settings, which can be edited while it runs, and receives the
statistics.

  --seconds S  end after S seconds
  --help       print this text

Exit code: 0 success, 1 FILE cannot be read or written, 2 usage error
)";

volatile std::sig_atomic_t interrupted = 0;

extern "C" void Interrupt(int /*signal*/) { interrupted = 1; }

/// The settings and statistics in a file.
class Settings {
public:
    /// @throws std::system_error when the file cannot be read
    explicit Settings(const std::filesystem::path& file) : m_file(file), m_watch(file.wstring().c_str()) {
        Load();
    }

    int FrameLimit() const { return Number("FrameLimit", "Frames", 60); }  ///< per second; 0 for none
    int Balls() const { return Number("Balls", "Picture", 5); }

    /// Loads a modified file one call later, when its writer is probably done.
    void Update() {
        if (m_watch.CheckModified() && m_watch.ApplyChanges())
            m_isModified = true;
        else if (std::exchange(m_isModified, false))
            m_values.Load(m_file);  // a file that cannot be read changes nothing
    }

    /// Saves the statistics, and keeps what else the file contains now.
    /// @throws std::system_error when the file cannot be read or written
    void SaveStatistics(const CQMFPSCounter& counter, double seconds) {
        const auto period = static_cast<double>(counter.GetTickPeriod());
        Load();
        Set("Frames", counter.GetTotalFrame());
        Set("Seconds", seconds);
        Set("FramesPerSecond", static_cast<double>(counter.GetTotalFrame()) / seconds);
        Set("ShortestFrame", static_cast<double>(counter.GetTickMinimum()) / period);
        Set("AverageFrame", counter.GetTickAverage() / period);
        Set("LongestFrame", static_cast<double>(counter.GetTickMaximum()) / period);
        std::error_code error;
        if (!m_values.Save(m_file, error)) throw std::system_error(error);
    }

private:
    void Load() {
        std::error_code error;
        if (!m_values.Load(m_file, error))
            throw std::system_error(error);  // a file that cannot be read is never replaced
    }

    int Number(const char* key, const char* section, int fallback) const {
        return std::clamp(m_values.Get<int>(key, section).value_or(fallback), 0, 1000);
    }

    template <class T>
    void Set(const char* key, T value) {
        if (!m_values.SetValue(key, std::to_string(value), "Statistics"))
            throw std::runtime_error(std::string(key) + " cannot be set");
    }

    std::filesystem::path m_file;
    CQMFileCheck m_watch;  ///< constructed before the settings are loaded, so that no change is missed
    bool m_isModified = false;
    INIDocument m_values;
};

constexpr int Rows = 12;
constexpr int Columns = 64;

/// Draws the balls where they are at a time, so that their speed does not depend on the frame rate.
std::wstring DrawBalls(double seconds, int balls) {
    std::wstring picture;
    for (int row = 0; row != Rows; ++row) picture += std::wstring(Columns, L' ') + L'\n';
    for (int ball = 0; ball != balls; ++ball) {
        const double right = 0.5 + 0.5 * std::sin(seconds * (0.4 + 0.13 * ball) + ball);
        const double down = 1 - std::abs(std::sin(seconds * (1.5 + 0.07 * ball) + ball));
        const long row = std::lround(down * (Rows - 1));
        const long column = std::lround(right * (Columns - 1));
        picture[static_cast<std::size_t>(row * (Columns + 1) + column)] = L'o';
    }
    return picture;
}

void Run(const std::string& file, std::chrono::seconds duration) {
    Settings settings(file);
    const CQMDebugTraceStartEndMarker marker(L"Frame loop", true, true, false);
    CQMFPSCounter counter(eQMFPSType_Instant);
    counter.Reset();  // removes the empty frames that measured the counter's own cost
    CQMTimer stopwatch;
    const auto start = Clock::now();
    auto now = start;
    auto nextUpdate = start;
    auto frameEnd = start;
    std::string toTop;  // the first frame is drawn where the cursor is
    CString status;
    do {
        counter.Start();
        if (now >= nextUpdate) {
            nextUpdate = now + std::chrono::milliseconds(100);
            settings.Update();
            status.Format(
                L"%.1f frames per second (mean %.1f, min %.1f, max %.1f)\033[K\n"
                L"FrameLimit %d, Balls %d in %.40hs\033[K\n",
                counter.GetFPS(), counter.GetFPSAverage(), counter.GetFPSMinimum(), counter.GetFPSMaximum(),
                settings.FrameLimit(), settings.Balls(), file.c_str());
        }
        std::cout << toTop << std::flush;  // fails when the output is closed; the console log would not
        const std::chrono::duration<double> time = now - start;
        const std::wstring picture = DrawBalls(time.count(), settings.Balls());
        CQMConsoleAPI::Log(L"%s%s", picture.c_str(), status.GetString());
        toTop = "\033[" + std::to_string(Rows + 2) + 'A';
        if (settings.FrameLimit() != 0) {
            frameEnd = std::max(frameEnd + Clock::duration(std::chrono::seconds(1)) / settings.FrameLimit(),
                                Clock::now());
            std::this_thread::sleep_until(frameEnd);
        }
        counter.End();
        now = Clock::now();
    } while (interrupted == 0 && std::cout && now - start < duration);
    const double seconds = stopwatch.GetLapsedTime(true);
    stopwatch.LogLapsedTime(false, false, L"%d frames", static_cast<int>(counter.GetTotalFrame()));
    settings.SaveStatistics(counter, seconds);
}

}  // namespace

int main(int argc, char* argv[]) {
    std::string file = "frameloop.ini";
    std::chrono::seconds duration = std::chrono::hours(24 * 365);
    try {
        for (int i = 1; i < argc; ++i) {
            const std::string word = argv[i];
            if (word == "--help") {
                std::cout << Help;
                return 0;
            }
            if (word[0] != '-')
                file = word;
            else if (word == "--seconds" && i + 1 != argc)
                duration = std::chrono::seconds(std::stoi(argv[++i]));
            else
                throw std::invalid_argument(word);
        }
    } catch (const std::logic_error&) {
        std::cerr << "frameloop: invalid arguments; see --help\n";
        return 2;
    }
    for (const int number : {SIGINT, SIGTERM}) (void)std::signal(number, Interrupt);
#ifdef SIGPIPE
    (void)std::signal(SIGPIPE, SIG_IGN);  // a closed output ends the loop, which then saves the statistics
#endif
    try {
        Run(file, duration);
    } catch (const std::exception& error) {
        std::cerr << "frameloop: " << file << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}
