#pragma once

/// @file
/// The commands of qmini.

#include <iosfwd>
#include <string>
#include <vector>

namespace qmini {

/// Runs qmini.
/// @param arguments the words of the command line, without the program's name
/// @param out receives what the command prints
/// @param err receives one line, beginning "qmini: ", when the command fails
/// @return the exit code: 0 done or found, 1 not found or failed, 2 wrong usage or a malformed file
int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace qmini
