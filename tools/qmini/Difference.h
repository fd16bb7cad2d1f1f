// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The difference of two texts, for people and for the program `patch`.

#include <string>

namespace qmini {

/// @param name the file's name, for the header lines
/// @return the unified difference that turns `before` into `after`; empty when they are the same. It is the
///   shortest one unless the texts differ much: all lines between the first and the last change then form one
///   hunk.
std::string UnifiedDifference(const std::string& name, const std::string& before, const std::string& after);

} // namespace qmini
