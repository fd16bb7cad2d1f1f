#pragma once

/// @file
/// The program, without its process.

#include "qmini/Command.h"

namespace qmini {

/// Runs qmini.
/// @param arguments the words of the command line, without the program's name
/// @param streams standard input and output, and one that receives messages, each in a line that begins with
///   "qmini: "
/// @return the exit code
int Run(const std::vector<std::string>& arguments, const Streams& streams);

} // namespace qmini
