// SPDX-License-Identifier: MIT
/// @file
/// Prints the manual page, from the texts of the help.

#include "qmini/Command.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>

namespace {

/// Prints a text of the help: paragraphs, and items that begin with "  - " or with a term and two spaces.
void PrintText(std::string_view text)
{
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        const std::size_t gap = line.find("  ", begin);
        if (line.starts_with("  - "))
            std::cout << ".IP \\(bu 2\n";
        else if (begin == 2 && gap != std::string::npos)
            std::cout << ".TP 4\n" << line.substr(2, gap - 2) << '\n';
        else if (line.empty()) {
            std::cout << ".PP\n";
            continue;
        }
        const std::size_t at =
            line.starts_with("  - ") ? 4 : line.find_first_not_of(' ', begin == 2 ? gap : begin);
        std::cout << "\\&"; // or a "." or "'" at the start of a line is a request
        for (const char c : line.substr(at))
            std::cout << (c == '\\' ? "\\e" : c == '-' ? "\\-" : c == '"' ? "\\(dq" : std::string(1, c));
        std::cout << '\n';
    }
}

} // namespace

int main()
{
    std::cout << ".TH QMINI 1\n.SH NAME\nqmini \\- read and edit INI files\n.SH SYNOPSIS\n"
                 ".B qmini\n.I COMMAND FILE\n[\\fIARGUMENT\\fR...]\n.SH COMMANDS\n";
    for (const qmini::Command& command : qmini::Commands()) {
        std::cout << ".SS ";
        PrintText(qmini::Usage(command).substr(6));
        PrintText(command.Summary);
        std::cout << ".PP\n";
        PrintText(command.Details);
        for (const qmini::Option* option : command.Options) {
            std::cout << ".TP 4\n.B ";
            PrintText(qmini::Pattern(*option));
            PrintText(option->Help);
        }
    }
    for (const qmini::Topic& topic : qmini::Topics()) {
        std::string title(topic.Title);
        std::ranges::transform(title, title.begin(), [](unsigned char c) { return std::toupper(c); });
        std::cout << ".SH " << title << '\n';
        PrintText(topic.Text);
    }
    std::cout << ".SH EXAMPLES\n.nf\n"
                 "qmini get settings.ini Window width\n"
                 "qmini set settings.ini Window width 1280 \\-\\-dry\\-run\n"
                 "qmini set \\- Window width 1280 <settings.ini >new.ini\n"
                 "printf 'add Net\\enset Net port 80\\en' | qmini edit settings.ini\n"
                 ".fi\n";
}
