#pragma once

/// @file
/// The difference of two texts, for people and for the program `patch`.

#include <string>

namespace qmini {

/// @param name the file's name, for the header lines
/// @return the unified difference that turns `before` into `after`; empty when they are the same
std::string UnifiedDifference(const std::string& name, const std::string& before, const std::string& after);

} // namespace qmini
