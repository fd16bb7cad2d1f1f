#pragma once

/// @file
/// Text from files and the command line, on its way to the user.

#include "qmUtility/framework/CString.h"

#include <string>

namespace hostapp {

/// @param text UTF-8
CString Wide(const std::string& text);

/// @param text UTF-8
/// @return the text for the console log or the debugger, with a "?" for each control character, which would
///   otherwise act on the terminal
std::wstring Printable(const std::string& text);

/// @return the number with so many digits after the point
std::string Fixed(double number, int digits);

} // namespace hostapp
