#pragma once

/// @file
/// Files as qmini needs them, and how its commands fail.

#include <filesystem>
#include <stdexcept>
#include <string>

namespace qmini {

enum ExitCode
{
    Done = 0,   ///< done, or found
    Failed = 1, ///< not found, or not done
    Misused = 2 ///< wrong usage, or a file that is no INI file
};

/// Ends a command: `what` is the line for standard error.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), m_code(code) {}

    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

/// @return the file's text
/// @throws Failure when the file cannot be read
std::string ReadFile(const std::string& file);

/// Makes sure that an existing file can be written, and leaves it as it is.
/// @throws Failure when it cannot
void RequireWritable(const std::string& file);

/// A file of its own with a given content, in a folder that only its owner may enter. Both live as long as
/// the object.
class TemporaryCopy
{
public:
    explicit TemporaryCopy(const std::string& content);
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    ~TemporaryCopy();

    std::string Path() const { return (m_folder / "copy.ini").string(); }

private:
    std::filesystem::path m_folder;
};

} // namespace qmini
