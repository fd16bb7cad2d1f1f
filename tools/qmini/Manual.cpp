// SPDX-License-Identifier: MIT
/// @file
/// Prints the manual page, from the texts of the help.

#include "qmini/Command.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>

namespace {

/// Prints a text of the help: paragraphs, and items that begin with two spaces and a "-" or a term.
void PrintText(std::string_view text)
{
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) {
            std::cout << ".PP\n";
            continue;
        }
        std::istringstream words(line);
        if (std::string term; line.starts_with("  ") && line[2] != ' ' && words >> term)
            std::cout << (term == "-" ? ".IP \\(bu 2" : ".TP 4\n" + term) << '\n';
        std::getline(words >> std::ws, line);
        std::cout << "\\&"; // or a "." or "'" at the start of a line is a request
        for (const char c : line)
            std::cout << (c == '\\' ? "\\e" : c == '-' ? "\\-" : c == '"' ? "\\(dq" : std::string(1, c));
        std::cout << '\n';
    }
}

} // namespace

int main()
{
    std::cout << ".TH QMINI 1\n.SH NAME\nqmini \\- read and edit INI files\n.SH SYNOPSIS\n"
                 ".B qmini\n.I COMMAND FILE\n[\\fIARGUMENT\\fR...]\n.SH COMMANDS\n";
    for (const qmini::Command& command : qmini::Commands) {
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
    for (const qmini::Topic& topic : qmini::Topics) {
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
