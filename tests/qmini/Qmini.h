// SPDX-License-Identifier: MIT
#pragma once

#include "qmini/Qmini.h"
#include "tests/support/TemporaryFolder.h"

#include <sstream>

/// Runs qmini in a folder of its own.
class Qmini : public TemporaryFolder {
protected:
    Qmini() { std::filesystem::current_path(Path("")); }
    ~Qmini() override { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    /// @param call its words, each followed by a bar, which is optional after a last word that is not empty;
    ///   then, after a "<", the standard input
    /// @return the exit code, and what was printed on standard output and standard error
    static std::pair<int, std::string> Run(const std::string& call) {
        std::istringstream in(call);
        std::string line;
        std::getline(in, line, '<');
        std::istringstream words(line);
        std::vector<std::string> arguments;
        for (std::string word; std::getline(words, word, '|');) arguments.push_back(word);
        std::ostringstream out;
        const int code = qmini::Run(arguments, {in, out, out});
        return {code, out.str()};
    }
};
