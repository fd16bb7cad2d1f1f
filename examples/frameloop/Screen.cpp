#include "examples/frameloop/Screen.h"

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/platform/Kernel.h"

#include <algorithm>
#include <cstddef>

namespace hostapp {

namespace {

constexpr int LinesAroundPicture = 3;

std::optional<platform::TerminalSize> Terminal() { return GetTerminalSize(platform::Stream::Output); }

} // namespace

void Log(Sink sink, const std::wstring& line)
{
    if (sink == Sink::Console)
        CQMConsoleAPI::Log(L"%s\n", line.c_str());
    else
        OutputDebugStringW(line.c_str());
}

Screen::Screen() : m_isTerminal(Terminal().has_value())
{
    if (m_isTerminal) // a page of its own, no cursor, and nothing wraps at the end of a line
        CQMConsoleAPI::Log(L"\033[?1049h\033[?25l\033[?7l");
}

Screen::~Screen() { Leave(); }

void Screen::Leave()
{
    if (!m_isTerminal)
        return;
    m_isTerminal = false;
    CQMConsoleAPI::Log(L"\033[?7h\033[?25h\033[?1049l");
    for (const auto& [sink, message] : m_messages)
        Log(sink, message);
}

platform::TerminalSize Screen::PictureSize() const
{
    platform::TerminalSize size =
        m_isTerminal ? Terminal().value_or(platform::TerminalSize{}) : platform::TerminalSize{};
    size.Rows = std::max(size.Rows - LinesAroundPicture, 0);
    return size;
}

void Screen::SetStatus(const std::wstring& status)
{
    m_status = status;
    if (!m_isTerminal)
        CQMConsoleAPI::Log(L"%s\n", status.c_str());
}

void Screen::Say(Sink sink, const std::wstring& message)
{
    if (m_isTerminal)
        m_messages.emplace_back(sink, message);
    else
        Log(sink, message);
}

void Screen::Show(const std::wstring& title, const std::vector<std::wstring>& picture)
{
    if (!m_isTerminal)
        return;
    const auto size = PictureSize();
    const auto line = [width = static_cast<std::size_t>(size.Columns)](std::wstring text) {
        text.resize(width, L' '); // covers what stood there
        return text;
    };
    std::wstring page = L"\033[H\033[7m" + line(L' ' + title) + L"\033[0m";
    for (const std::wstring& row : picture)
        page += L"\r\n" + line(row);
    page += L"\r\n" + line(m_status);
    page += L"\r\n" + line(m_messages.empty() ? L"Ctrl-C ends." : m_messages.back().second);
    CQMConsoleAPI::Log(L"%s", page.c_str()); // one write, so that nothing flickers
}

} // namespace hostapp
