#pragma once

/// @file
/// How the commands of qmini end.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qmini {

enum ExitCode
{
    Done = 0,
    Failed = 1,  ///< failed, or not found
    Misused = 2, ///< a command line that is wrong
    Refused = 3, ///< an edit that would change more than it was asked to
};

/// Ends a command. `what` is the line for standard error, without the program's name.
class Failure : public std::runtime_error
{
public:
    /// @param details lines that follow the message
    Failure(ExitCode code, const std::string& message, std::vector<std::string> details = {})
        : std::runtime_error(message), m_code(code), m_details(std::move(details))
    {}

    ExitCode Code() const { return m_code; }
    const std::vector<std::string>& Details() const { return m_details; }

private:
    ExitCode m_code;
    std::vector<std::string> m_details;
};

} // namespace qmini
