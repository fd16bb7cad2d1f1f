// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// What an edit of an INI file, or reading it, does to the file that its owner may not expect.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qmini {

enum class Kind
{
    Note,      ///< nothing to do with this library, but with other readers
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
/// @param least kinds below this one are not looked for
/// @return the findings, in the order of their lines. Without any of the kinds `Loss` and `Malformed`, a file
///   that is loaded and saved keeps each line, apart from blank lines and white space: around lines, and
///   between the character that comments out a record and the record.
std::vector<Finding> Check(std::string_view text, Kind least);

} // namespace qmini
