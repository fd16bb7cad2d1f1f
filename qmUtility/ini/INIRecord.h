// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Types shared by `INIParser` and `INIDocument`: records, comment characters, syntaxes, malformed files.

#include "qmUtility/Export.h"

#include <cstddef>
#include <stdexcept>
#include <string>

/// The characters that comment out a record in a file; the values are the characters' codes.
enum class INICommentChar : int {
    Hash = '#',       ///< as in "#Width=800"
    Semicolon = ';',  ///< as in ";Width=800"
};

/// One record of a file: a section header line, or a key line. It is a section record when `Key` is empty.
template <class Char>
struct BasicINIRecord {
    /// The comment lines above the record, each with its "#" or ";", trimmed and followed by one "\n".
    std::basic_string<Char> Comments;
    /// A space when the record is active, else the character that comments it out.
    Char Commented = Char(' ');
    /// The section's name; of a key, that of the section that it belongs to, empty above the first header.
    std::basic_string<Char> Section;
    /// The text before the first "="; empty for a section record.
    std::basic_string<Char> Key;
    /// The text after the first "="; empty for a section record.
    std::basic_string<Char> Value;
};

/// Syntax of an INI text; docs/ini-format.md specifies both.
enum class INISyntax {
    Common,  ///< as most programs read it
    Parser,  ///< as `INIParser` reads it
};

/// Thrown for a header line without a "]" after its first character; `what()` is "invalid string position".
class QMUTILITY_API INIFormatError : public std::out_of_range {
public:
    explicit INIFormatError(std::size_t line);                   ///< @param line its number, from 1.
    INIFormatError(const INIFormatError&) = default;             ///< copies the number
    INIFormatError& operator=(const INIFormatError&) = default;  ///< copies the number
    ~INIFormatError() override;

    /// @return the number of the line, from 1.
    std::size_t Line() const { return m_line; }

private:
    std::size_t m_line;
};
