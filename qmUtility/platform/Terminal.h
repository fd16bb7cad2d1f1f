#pragma once

/// @file
/// The terminal that a program draws in.

#include "qmUtility/platform/StandardStream.h"

#include <optional>

namespace platform {

/// In characters.
struct TerminalSize
{
    int Columns = 80;
    int Rows = 24;
};

/// Asks anew on each call, since the user may resize a terminal at any time.
/// @return the size of the terminal that the stream is written to, 80 by 24 for one that does not tell;
/// nothing when the stream goes elsewhere or the terminal does not obey escape sequences.
std::optional<TerminalSize> GetTerminalSize(Stream stream);

} // namespace platform
