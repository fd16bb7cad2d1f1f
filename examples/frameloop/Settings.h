#pragma once

/// @file
/// The host's settings, as they stand in its INI file.

#include <string>
#include <vector>

namespace hostapp {

/// Where the trace of the phases and the messages go.
enum class Sink
{
    Console,
    Debugger,
};

struct Settings
{
    std::string title = "qmUtility example host";
    int frameLimit = 60; ///< frames per second; 0 for as many as there can be
    int workload = 12;   ///< balls in the picture
    Sink sink = Sink::Console;
};

/// Reads the settings from an INI file.
/// @param settings the ones in force: one that the file does not have, has commented out, or has with a value
///   that is not allowed stays as it is
/// @param problems receives a sentence for each value that is not allowed
/// @throws std::runtime_error that says why the file cannot be read
Settings LoadSettings(const std::string& file, Settings settings, std::vector<std::string>& problems);

/// @return a text such as "FrameLimit 60 -> 30" for each setting that is not the same
std::vector<std::string> Differences(const Settings& before, const Settings& after);

} // namespace hostapp
