#pragma once

/// @file
/// The host's command line.

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace hostapp {

/// Runs the host.
/// @param arguments the words of the command line, without the program's name
/// @param out receives the help; all else goes to the console log and the debugger
/// @param err receives one line, beginning "host: ", when something fails
/// @param isInterrupted asked after each frame; true ends the run like any other end
/// @return the exit code: 0 done, 1 a file cannot be read or written, 2 wrong usage
int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
        const std::function<bool()>& isInterrupted);

} // namespace hostapp
