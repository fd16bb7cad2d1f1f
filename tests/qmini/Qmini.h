#pragma once

#include "qmini/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <sstream>

/// Runs qmini in a folder of its own.
class Qmini : public TemporaryFolder
{
protected:
    Qmini() { std::filesystem::current_path(Path("")); }
    ~Qmini() override { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    /// @param call its words, each followed by a bar, which is optional after a last word that is not empty;
    ///   then, after a "<", the standard input
    int Run(const std::string& call)
    {
        const std::size_t end = std::min(call.find('<'), call.size());
        std::istringstream words(call.substr(0, end));
        std::vector<std::string> arguments;
        for (std::string word; std::getline(words, word, '|');)
            arguments.push_back(word);
        std::istringstream in(call.substr(std::min(end + 1, call.size())));
        std::ostringstream out;
        const int code = qmini::Run(arguments, {in, out, out});
        m_said = out.str();
        return code;
    }

    std::string m_said;
};
