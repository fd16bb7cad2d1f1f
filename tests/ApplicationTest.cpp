#include "examples/frameloop/Application.h"

#include "examples/frameloop/CommandLine.h"
#include "examples/frameloop/Pace.h"
#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

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
        Lines lines;
        for (const std::string& text : output.Writes())
            if (text.starts_with(m_file))
                lines.push_back(text.substr(m_file.size(), text.size() - m_file.size() - 1));
        return lines;
    }

    const std::string m_file = Path("host.ini");
    std::filesystem::file_time_type m_time = std::filesystem::file_time_type::clock::now();
};

TEST_F(HostExample, TakesChangesOfTheSettingsFileOver)
{
    // The text of the file from now on, which nothing deletes, and the message.
    const std::vector<std::pair<std::optional<std::string>, std::string>> steps = {
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
    std::size_t step = 0;
    Lines messages;
    application.Run([&](const CQMFPSCounter& counter) {
        // A change is noticed in one frame and taken over in the next.
        if (counter.GetTotalFrame() % 2 != 0)
            return true;
        if (step == steps.size())
            return false;
        WriteSettings(steps[step].first);
        messages.push_back(steps[step++].second);
        return true;
    });
    EXPECT_EQ(Messages(output), messages);
}

TEST_F(HostExample, SavesItsStatistics)
{
    const Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\n; of the last run\n[Statistics]\nSeconds=9\n");
    hostapp::Application application(Options());
    application.Run([](const CQMFPSCounter&) { return false; });
    const hostapp::Statistics statistics = {30, 0.5, 0.0125, 0.25, 0.0166667};
    application.Finish(statistics);
    EXPECT_EQ(Read(m_file), " [Frames]\n FrameLimit=0\n; of the last run\n [Statistics]\n Frames=30\n"
                            " FramesPerSecond=60.000\n ShortestFrame=0.012500\n AverageFrame=0.016667\n"
                            " LongestFrame=0.250000\n Seconds=0.500\n");
    EXPECT_FALSE(CQMFileCheckAPI::Check()); // the file was written by the host itself
    WriteSettings(std::nullopt);
    EXPECT_THROW(application.Finish(statistics), std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(HostExample, EndsWithTheExitCodeAndOneLineThatSaysWhy)
{
    Write("[Frames]\nFrameLimit=0\nWorkload=1\n", "host.ini");
    const std::string bad = Write("[S\n", "bad.ini");
    // The exit code, and how the error begins; the number of frames when there is none.
    const std::tuple<Lines, int, std::string> cases[] = {
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
            EXPECT_EQ(err.str().find('\n'), err.str().size() - 1) << err.str();
        }
    }
    EXPECT_EQ(Read(bad), "[S\n");
}

TEST(Pace, DoesNotDrift)
{
    // The time, the limit, and when the frame is to end, in milliseconds.
    const std::tuple<int, int, int> frames[] = {
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
