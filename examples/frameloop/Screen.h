#pragma once

/// @file
/// What the user sees while the host runs.

#include "examples/frameloop/Settings.h"
#include "qmUtility/platform/Terminal.h"

#include <string>
#include <utility>
#include <vector>

namespace hostapp {

/// Writes a line to the console log or to the debugger.
void Log(Sink sink, const std::wstring& line);

/// A terminal shows title, picture, status and last message, on a page of its own that is gone afterwards.
/// When standard output is no terminal the status is a line each time it changes, and there is no picture.
class Screen
{
public:
    Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen();

    /// @return the size that the picture is to have; that of an imagined terminal when there is none
    platform::TerminalSize PictureSize() const;

    void SetStatus(const std::wstring& status);

    /// Shows the message, and writes it to the sink: at once, or from a terminal when that is left.
    void Say(Sink sink, const std::wstring& message);

    /// Shows a frame.
    /// @param picture of the size that `PictureSize` gave
    void Show(const std::wstring& title, const std::vector<std::wstring>& picture);

    /// Gives the terminal back. The destructor does so as well.
    void Leave();

private:
    bool m_isTerminal;
    std::wstring m_status;
    std::vector<std::pair<Sink, std::wstring>> m_messages; ///< to be written when the terminal is left
};

} // namespace hostapp
