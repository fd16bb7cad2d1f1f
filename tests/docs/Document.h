// SPDX-License-Identifier: MIT
#pragma once

// Test fixture of the statements in the documents.

#include "tests/support/TemporaryFolder.h"

#include <iostream>
#include <string>

/// Runs the statements below one heading of a document in a temporary folder.
class Document : public TemporaryFolder {
protected:
    Document() { std::filesystem::current_path(Path("")); }
    ~Document() override { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    /// Statements begin: captures their output until `Ran`. GoogleTest has no public functions for it.
    static void Run() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    void Ran() {
        const std::string console = testing::internal::GetCapturedStdout();
        if (HasFailure()) std::cout << console;  // with the messages
        m_console = Figures(console);
        m_debugger = Figures(testing::internal::GetCapturedStderr());
    }

    /// @return the text with 0 for each digit, since numbers depend on the machine, and without their minus
    ///   signs: a duration that is less than the measured cost of a counter read is negative.
    static std::string Figures(const std::string& text) {
        std::string figures;
        for (const char c : text) {
            const bool isDigit = c >= '0' && c <= '9';
            if (isDigit && figures.ends_with('-')) figures.pop_back();
            figures += isDigit ? '0' : c;
        }
        return figures;
    }

    std::string m_console;
    std::string m_debugger;
};
