#pragma once

/// @file
/// What the statements that stand in the documents are run in.

#include "filecheck/QMFileCheckAPI.h"
#include "ini/INIParser.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"
#include "timing/QMDebugTraceStartEndMarker.h"
#include "timing/QMFPSCounter.h"
#include "timing/QMTimer.h"

#include <iostream>
#include <optional>
#include <regex>

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
    /// Joins texts, with zeros for the digits that depend on the machine: all but the number of decimals.
    static std::string Figures(const std::vector<std::string>& texts)
    {
        std::string joined;
        for (const std::string& text : texts)
            joined += text;
        const std::string units = std::regex_replace(joined, std::regex("[0-9]+\\."), "0.");
        return std::regex_replace(units, std::regex("[0-9]"), "0");
    }

    std::filesystem::path m_former;
    std::optional<Capture> m_output;
    std::optional<Capture> m_error;
    std::string m_console;
    std::string m_debugger;
};
