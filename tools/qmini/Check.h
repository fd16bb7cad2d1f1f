#pragma once

/// @file
/// What reading or rewriting an INI file does to it that its owner may not expect.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qmini {

/// One remark on a line of a file.
struct Finding
{
    std::size_t line; ///< counted from 1
    std::string text;
    bool malformed = false; ///< whether the line keeps every operation from reading the file
};

/// @param text an INI file's content
/// @return the findings, in the order of their lines
std::vector<Finding> Check(std::string_view text);

} // namespace qmini
