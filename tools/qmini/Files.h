// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Reading and writing files whole.

#include <filesystem>
#include <istream>
#include <string>

namespace qmini {

/// @return the content of the file
/// @param mode std::ios::binary for the bytes of the file, none for its text
/// @throws Failure when the file cannot be read
std::string ReadFile(const std::string& file, std::ios::openmode mode = std::ios::binary);

/// @throws Failure when the safety copy of the file is there; see `Rewrite`
void RequireNoSafetyCopy(const std::string& file);

/// Replaces the content of a file by a text, so that the user has one whole version at every moment. The file
/// stays the same file, with its links, owner and permissions.
///
/// A safety copy of the file lies beside it meanwhile, named as the file with ".qmini-save" appended. It also
/// keeps a second qmini from editing the file. What was written is read back; if it differs, the former
/// content is put back.
/// @param before the bytes that the file holds
/// @throws Failure when the text is not written; the file then holds what it held before, or else the message
///   names the safety copy, which stays
void Rewrite(const std::string& file, const std::string& before, const std::string& text);

/// What a command reads, by a path that can be opened more than once: of the file itself, or of a copy of
/// standard input ("-"), a pipe or the like. The copy is in a folder that only its owner may enter, and is
/// removed with the object.
class Input
{
public:
    /// @throws Failure when the file cannot be read
    Input(const std::string& file, std::istream& standardInput);
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input();

    bool IsCopy() const { return !m_folder.empty(); }
    const std::string& Path() const { return m_path; }
    const std::string& Name() const { return m_name; } ///< for messages

private:
    explicit Input(const std::string& file) : m_name(file), m_path(file) {}

    std::string m_name;
    std::string m_path;
    std::filesystem::path m_folder; ///< of the copy
};

} // namespace qmini
