// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Finds what is surprising about an INI file: lines that an edit loses or changes, and lines that are read
/// otherwise than meant.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qmini {

enum class Kind
{
    Note,      ///< concerns other readers only
    Oddity,    ///< read, but perhaps not as meant
    Loss,      ///< an edit loses or changes the line
    Malformed, ///< no operation can read the file
};

/// One remark on a line of a file.
struct Finding
{
    std::size_t Line; ///< counted from 1
    Kind What;
    std::string Text;
};

/// @param text the content of an INI file
/// @param least kinds below this one are left out; a text in UTF-16 is always one finding
/// @return the findings, in the order of their lines. Without any of the kinds `Loss` and `Malformed`, a file
///   that is loaded and saved keeps each line, apart from blank lines and white space: around lines, and
///   between the character that comments out a record and the record.
std::vector<Finding> Check(std::string_view text, Kind least);

} // namespace qmini
