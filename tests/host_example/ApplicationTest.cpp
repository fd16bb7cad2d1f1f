#include "examples/host/Application.h"

#include "examples/host/CommandLine.h"
#include "examples/host/Pace.h"
#include "filecheck/QMFileCheckAPI.h"
#include "ini/INIParser.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"
#include "timing/QMFPSCounter.h"

#include <filesystem>
#include <numeric>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

Lines Split(const std::string& text, char separator)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line, separator);)
        lines.push_back(line);
    return lines;
}

class HostExample : public TemporaryFolder
{
protected:
    /// Writes the settings file, or deletes it, at a time of its own.
    void WriteSettings(const std::optional<std::string>& text)
    {
        if (!text) {
            std::filesystem::remove(m_file);
            return;
        }
        // A replacement: what is half written is a case of its own.
        std::filesystem::rename(Write(*text, "new.ini"), m_file);
        m_time += 1h;
        std::filesystem::last_write_time(m_file, m_time);
    }

    hostapp::Options Options() const { return {.settingsFile = m_file, .frameLog = {}, .checkEvery = 0ms}; }

    /// @return the lines about the settings file in what was written to standard output
    Lines Messages(Capture& output) const
    {
        const auto writes = output.Writes();
        Lines lines = Split(std::accumulate(writes.begin(), writes.end(), std::string()), '\n');
        std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(m_file); });
        for (std::string& line : lines)
            line.erase(0, m_file.size());
        return lines;
    }

    const std::string m_file = Path("host.ini");
    std::filesystem::file_time_type m_time = std::filesystem::file_time_type::clock::now();
};

TEST_F(HostExample, TakesChangesOfTheSettingsFileOver)
{
    const struct
    {
        std::optional<std::string> text; ///< of the file from now on; nothing deletes it
        std::string message;
    } steps[] = {
        {"[Frames]\nFrameLimit=0\nWorkload=2\n", " was written: Workload 1 -> 2"},
        {"[Frames]\nFrameLimit=0\nWorkload=2\n", " was written: no setting is different"},
        {std::nullopt, " does not exist, the settings stay as they are"},
        {"[Frames\nFrameLimit=0\nWorkload=3\n",
         " has a section header without \"]\", the settings stay as they are"},
        {"[Frames]\n#FrameLimit=10\nFrameLimit = 0\t\nWorkload=4\n[Window]\nTitle= \x1b = <\n",
         " was written: Title \"qmUtility example host\" -> \"? = <\", Workload 2 -> 4"},
        {"[Frames]\nFrameLimit=1001\nWorkload=5x\n[Window]\nTitle=\n[Log]\nSink=Console\n",
         " was written: Title \"? = <\" -> \"\", FrameLimit is \"1001\" and not a whole number from 0 to "
         "1000, "
         "0 is used, Workload is \"5x\" and not a whole number from 1 to 1000, 4 is used, "
         "Sink is \"Console\" and not \"console\" or \"debugger\", console is used"},
        {"[Frames]\nFrameLimit=1000\nWorkload=7",
         " was written: FrameLimit 0 -> 1000, "
         "the last line has no line end: it is not read, and lost when the host ends"},
    };
    Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\nWorkload=1\n");
    hostapp::Application application(Options());
    const auto* step = std::begin(steps);
    application.Run([&](const CQMFPSCounter& counter) {
        // A change is noticed in one frame and taken over in the next.
        if (counter.GetTotalFrame() % 2 != 0)
            return true;
        if (step == std::end(steps))
            return false;
        WriteSettings((step++)->text);
        return true;
    });
    Lines messages;
    for (const auto& [text, message] : steps)
        messages.push_back(message);
    EXPECT_EQ(Messages(output), messages);
}

TEST_F(HostExample, SavesFramesAndStatistics)
{
    Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\n; of the last run\n[Statistics]\nSeconds=9\n");
    auto options = Options();
    options.frameLog = Path("frames.csv");
    hostapp::Application application(options);
    application.Run([](const CQMFPSCounter& counter) { return counter.GetTotalFrame() != 3; });
    const hostapp::Statistics statistics = {30, 0.5, 0.0125, 0.25, 0.0166667};
    application.Finish(statistics);
    EXPECT_EQ(Read(m_file), " [Frames]\n FrameLimit=0\n; of the last run\n [Statistics]\n Frames=30\n"
                            " FramesPerSecond=60.000\n ShortestFrame=0.012500\n AverageFrame=0.016667\n"
                            " LongestFrame=0.250000\n Seconds=0.500\n");
    EXPECT_FALSE(CQMFileCheckAPI::Check()); // the file was written by the host itself
    EXPECT_EQ(Messages(output), Lines());

    const Lines rows = Split(Read(options.frameLog), '\n');
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0], "frame,tick_start,tick_end,tick_tolerance,tick_period,tick_elapsed,tick_minimum,"
                       "tick_maximum,tick_average,fps,fps_minimum,fps_maximum,fps_average");
    const Lines cells = Split(rows[3], ',');
    ASSERT_EQ(cells.size(), 13U);
    EXPECT_EQ(cells[0], "3");
    EXPECT_DOUBLE_EQ(std::stod(cells[9]), std::stod(cells[4]) / std::stod(cells[5]));

    WriteSettings(std::nullopt);
    EXPECT_THROW(application.Finish(statistics), std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(HostExample, EndsWithTheExitCodeAndOneLineThatSaysWhy)
{
    Write("[Frames]\nFrameLimit=0\nWorkload=1\n", "host.ini");
    const std::string bad = Write("[S\n", "bad.ini");
    const struct
    {
        Lines words;
        int code;
        std::string error; ///< how it begins; the number of frames when there is none
    } cases[] = {
        {{m_file, "--frames", "3"}, 0, "3"},
        {{m_file}, 0, "9"}, // interrupted
        {{Path("no.ini")}, 1, Path("no.ini") + " does not exist"},
        {{bad}, 1, bad + " has a section header without \"]\""},
        {{m_file, "--frame-log", Path("no/f.csv")}, 1, "cannot write " + Path("no/f.csv") + ": "},
        {{m_file, "--frame-log", m_file}, 2, "the frame log would overwrite the settings file"},
        {{"--fast"}, 2, "no option \"--fast\""},
        {{"--frames", "0"}, 2, "--frames takes a number from 1 "},
        {{"--seconds", "nan"}, 2, "--seconds takes a number from 0.001 "},
    };
    for (const auto& [words, code, error] : cases) {
        const Capture output(1);
        std::ostringstream out;
        std::ostringstream err;
        const auto isInterrupted = [frame = 0]() mutable { return ++frame == 9; };
        EXPECT_EQ(hostapp::Run(words, out, err, isInterrupted), code) << error;
        if (code == 0) {
            EXPECT_EQ(err.str(), "");
            EXPECT_EQ(INIParser::GetValue("Frames", "Statistics", m_file), error);
        } else {
            EXPECT_EQ(err.str().rfind("host: " + error, 0), 0U) << err.str();
            EXPECT_EQ(Split(err.str(), '\n').size(), 1U) << err.str();
        }
    }
    EXPECT_EQ(Read(bad), "[S\n");
}

TEST(Pace, DoesNotDrift)
{
    const struct
    {
        int now;
        int limit;
        int end; ///< all in milliseconds
    } frames[] = {
        {3, 100, 10},    {12, 100, 20},   // ended 2 ms late, which the next frame makes up for
        {75, 100, 30},   {76, 100, 40},   // so do several
        {140, 100, 50},  {200, 100, 200}, // but not for more than 100 ms
        {201, 100, 210}, {215, 0, 215},   {216, 50, 235}, // and the limit changes
    };
    hostapp::Pace pace(hostapp::Clock::time_point{});
    for (const auto& [now, limit, end] : frames)
        EXPECT_EQ(pace.End(hostapp::Clock::time_point{now * 1ms}, limit),
                  hostapp::Clock::time_point{end * 1ms});
}

} // namespace
