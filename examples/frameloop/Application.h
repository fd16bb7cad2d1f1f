#pragma once

/// @file
/// The host application: its frame loop, and what it does with its settings file.

#include "examples/frameloop/FrameLog.h"
#include "examples/frameloop/Screen.h"
#include "examples/frameloop/Settings.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CQMFPSCounter;

namespace hostapp {

struct Options
{
    std::string settingsFile = "host.ini";
    std::string frameLog;                      ///< empty for none
    std::chrono::milliseconds checkEvery{100}; ///< how often the settings file is looked at
};

/// Figures of a run, times in seconds.
struct Statistics
{
    unsigned long frames;
    double seconds;
    double shortestFrame;
    double longestFrame;
    double averageFrame; ///< of the last 10000 frames
};

class Application
{
public:
    /// Loads the settings.
    /// @throws std::runtime_error when they, or the frame log, cannot be had
    explicit Application(const Options& options);

    /// Draws frames, one at least, as long as `goOn` returns true, which is asked after each. Changes of the
    /// settings file are taken over meanwhile.
    Statistics Run(const std::function<bool(const CQMFPSCounter&)>& goOn);

    /// Writes the figures into the settings file and closes the frame log.
    /// @throws std::runtime_error when either cannot be written
    void Finish(const Statistics& statistics);

private:
    void DrawFrame(Screen& screen, double seconds) const;
    void Watch() const;
    void ReloadSettings(Screen& screen);
    void SaveStatistics(const Statistics& statistics) const;
    bool UsesConsole() const { return m_settings.sink == Sink::Console; }

    Options m_options;
    Settings m_settings;
    FrameLog m_frameLog;
};

} // namespace hostapp
