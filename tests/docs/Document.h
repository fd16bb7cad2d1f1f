#pragma once

/// @file
/// What the statements that stand in the documents are run in.

#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <iostream>
#include <optional>
#include <string>
#include <vector>

/// Runs the statements below one heading of a document, in a folder of their own.
class Document : public TemporaryFolder
{
protected:
    Document() : m_former(std::filesystem::current_path()) { std::filesystem::current_path(Path(".")); }
    ~Document() override { std::filesystem::current_path(m_former); }

    static void Before(const std::string& text) { std::ofstream("settings.ini") << text; }
    static void After(int line, const std::string& text)
    {
        EXPECT_EQ(Read("settings.ini"), text) << "line " << line;
    }

    /// Statements begin: what they write is kept.
    void Run()
    {
        m_output.emplace(STDOUT_FILENO);
        m_error.emplace(STDERR_FILENO);
    }
    void Ran()
    {
        std::cout.flush();
        m_console = Figures(m_output->Writes());
        m_debugger = Figures(m_error->Writes());
        m_output.reset();
        m_error.reset();
    }

    void Console(int line, const std::string& text) const
    {
        EXPECT_EQ(m_console, Figures({text})) << "line " << line;
    }
    void Debugger(int line, const std::string& text) const
    {
        EXPECT_EQ(m_debugger, Figures({text})) << "line " << line;
    }

private:
    /// Joins texts, with a zero for each number, since they depend on the machine, and for each of its
    /// decimals. What takes less than a counter read cost when that was measured has a negative duration.
    static std::string Figures(const std::vector<std::string>& texts)
    {
        std::string figures;
        bool isDecimal = false;
        for (const std::string& text : texts)
            for (const char c : text) {
                const bool isDigit = c >= '0' && c <= '9';
                if (isDigit && figures.ends_with('-'))
                    figures.pop_back();
                if (!isDigit || isDecimal || !figures.ends_with('0'))
                    figures += isDigit ? '0' : c;
                isDecimal = c == '.' || (isDecimal && isDigit);
            }
        return figures;
    }

    std::filesystem::path m_former;
    std::optional<Capture> m_output;
    std::optional<Capture> m_error;
    std::string m_console;
    std::string m_debugger;
};
