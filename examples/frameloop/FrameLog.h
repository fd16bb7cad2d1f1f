#pragma once

/// @file
/// A file with the frame-rate counter's figures for every frame.

#include <fstream>
#include <string>

class CQMFPSCounter;

namespace hostapp {

/// Comma-separated values: a row with the names of the columns, then one row a frame, its figures as they are
/// after the frame. Numbers have all their digits, so that each figure can be computed from those before it.
class FrameLog
{
public:
    /// What the columns are, and how the figures follow from one another.
    static const char* const Description;

    /// A log that writes nothing.
    FrameLog() = default;

    /// @param path the file to make or to overwrite
    /// @throws std::runtime_error when the file cannot be written
    explicit FrameLog(const std::string& path);

    void Write(const CQMFPSCounter& counter);

    /// @throws std::runtime_error when not all could be written
    void Close();

private:
    std::string m_path;
    std::ofstream m_file;
};

} // namespace hostapp
