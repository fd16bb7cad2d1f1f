#pragma once

/// @file
/// The picture: balls that float through one another, drawn in characters.

#include <string>
#include <vector>

namespace hostapp {

/// Draws the picture as it is at a time, so that it moves at one speed whatever the frame rate. The work is
/// that of each ball on each character.
/// @param seconds since the animation began
/// @return `rows` lines of `columns` characters
std::vector<std::wstring> DrawScene(double seconds, int balls, int columns, int rows);

} // namespace hostapp
