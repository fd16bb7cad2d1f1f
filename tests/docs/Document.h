// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Test fixture of the statements in the documents.

#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <iostream>
#include <optional>
#include <string>
#include <vector>

/// Runs the statements below one heading of a document in a temporary folder.
class Document : public TemporaryFolder {
protected:
    Document() : m_former(std::filesystem::current_path()) { std::filesystem::current_path(Path(".")); }
    ~Document() override { std::filesystem::current_path(m_former); }

    /// Statements begin: captures their output until `Ran`.
    void Run() {
        m_output.emplace(STDOUT_FILENO);
        m_error.emplace(STDERR_FILENO);
    }
    void Ran() {
        std::cout.flush();
        m_console = Figures(m_output->Writes());
        m_debugger = Figures(m_error->Writes());
        m_output.reset();
        m_error.reset();
    }

    /// Joins texts, with 0 for each digit, since numbers depend on the machine. A minus sign is dropped: a
    /// duration that is less than the measured cost of a counter read is negative.
    static std::string Figures(const std::vector<std::string>& texts) {
        std::string figures;
        for (const std::string& text : texts)
            for (const char c : text) {
                const bool isDigit = c >= '0' && c <= '9';
                if (isDigit && figures.ends_with('-')) figures.pop_back();
                figures += isDigit ? '0' : c;
            }
        return figures;
    }

    std::string m_console;
    std::string m_debugger;

private:
    std::filesystem::path m_former;
    std::optional<Capture> m_output;
    std::optional<Capture> m_error;
};
