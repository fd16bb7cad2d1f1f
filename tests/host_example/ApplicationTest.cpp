#include "examples/host/Application.h"

#include "examples/host/CommandLine.h"
#include "examples/host/Pace.h"
#include "filecheck/QMFileCheckAPI.h"
#include "ini/INIParser.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"
#include "timing/QMFPSCounter.h"

#include <algorithm>
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

TEST_F(HostExample, ReadsSettings)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "qmUtility example host 60 12 console"},
        {"[Window]\nTitle=\n[Frames]\nFrameLimit=0\nWorkload=1000\n[Log]\nSink=debugger\n",
         " 0 1000 debugger"},
        {"[Frames]\n#FrameLimit=10\nFrameLimit = 20\t\n;Workload=1\n[Window]\nTitle= a = b\n",
         "a = b 20 12 console"},
        {"[Frames]\nFrameLimit=1001\nWorkload=5x\n[Window]\nTitle=t\n[Log]\nSink=Console\n",
         "t 60 12 console; FrameLimit is \"1001\" and not a whole number from 0 to 1000, 60 is used; "
         "Workload is \"5x\" and not a whole number from 1 to 1000, 12 is used; "
         "Sink is \"Console\" and not \"console\" or \"debugger\", console is used"},
        {"[Frames]\nWorkload=7\nFrameLimit=50", "qmUtility example host 60 7 console; the last line has no "
                                                "line end: it is not read, and lost when the host ends"},
    };
    for (const auto& [text, expected] : cases) {
        Lines problems;
        const auto settings = hostapp::LoadSettings(Write(text, "host.ini"), {}, problems);
        std::string found = settings.title + ' ' + std::to_string(settings.frameLimit) + ' ' +
                            std::to_string(settings.workload) +
                            (settings.sink == hostapp::Sink::Console ? " console" : " debugger");
        for (const std::string& problem : problems)
            found += "; " + problem;
        EXPECT_EQ(found, expected);
    }
}

TEST_F(HostExample, TakesChangesOfTheSettingsFileOver)
{
    const struct
    {
        std::optional<std::string> text; ///< of the file from now on; nothing deletes it
        int workload;                    ///< afterwards
        std::string message;
    } steps[] = {
        {"[Frames]\nFrameLimit=0\nWorkload=2\n", 2, " was written: Workload 1 -> 2"},
        {"[Frames]\nFrameLimit=0\nWorkload=2\n", 2, " was written: no setting is different"},
        {std::nullopt, 2, " does not exist, the settings stay as they are"},
        {"[Frames\nFrameLimit=0\nWorkload=3\n", 2,
         " has a section header without \"]\", the settings stay as they are"},
        {"[Frames]\nFrameLimit=0\nWorkload=4\n[Window]\nTitle=\x1b<\n", 4,
         " was written: Title \"qmUtility example host\" -> \"?<\", Workload 2 -> 4"},
        {"[Frames]\nFrameLimit=0\nWorkload=many\n[Window]\nTitle=x\n", 4,
         " was written: Title \"?<\" -> \"x\", Workload is \"many\" and not a whole number from 1 to 1000, "
         "4 is used"},
    };
    Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\nWorkload=1\n");
    hostapp::Application application(Options());
    Lines messages;
    const auto* step = std::begin(steps);
    application.Run([&](const CQMFPSCounter& counter) {
        // A change is noticed in one frame and taken over in the next.
        if (counter.GetTotalFrame() % 2 != 0)
            return true;
        if (counter.GetTotalFrame() != 2) {
            EXPECT_EQ(application.CurrentSettings().workload, step->workload) << step->message;
            messages.push_back(step->message);
            ++step;
        }
        if (step == std::end(steps))
            return false;
        WriteSettings(step->text);
        return true;
    });
    EXPECT_EQ(Messages(output), messages);
    EXPECT_EQ(messages.size(), std::size(steps));
}

TEST_F(HostExample, LogsFramesFromWhichTheFiguresFollow)
{
    const Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\nWorkload=1\n");
    auto options = Options();
    options.frameLog = Path("frames.csv");
    hostapp::Application application(options);
    const auto statistics =
        application.Run([](const CQMFPSCounter& counter) { return counter.GetTotalFrame() < 20; });
    application.Finish(statistics);

    const Lines rows = Split(Read(options.frameLog), '\n');
    ASSERT_EQ(rows.size(), 21U);
    EXPECT_EQ(rows[0], "frame,tick_start,tick_end,tick_tolerance,tick_period,tick_elapsed,tick_minimum,"
                       "tick_maximum,tick_average,fps,fps_minimum,fps_maximum,fps_average");
    std::vector<double> rates;
    double sum = 0;
    for (std::size_t frame = 1; frame != rows.size(); ++frame) {
        const Lines cells = Split(rows[frame], ',');
        ASSERT_EQ(cells.size(), 13U);
        std::vector<double> row;
        for (const std::string& cell : cells)
            row.push_back(std::stod(cell));
        EXPECT_EQ(row[0], static_cast<double>(frame));
        const auto ticks = std::stoull(cells[2]) - std::stoull(cells[3]) - std::stoull(cells[1]);
        EXPECT_EQ(std::stoull(cells[5]), std::max(ticks, 1ULL));
        EXPECT_DOUBLE_EQ(row[8], (sum += row[5]) / row[0]);
        rates.push_back(row[4] / row[5]);
        EXPECT_DOUBLE_EQ(row[9], rates.back());
        const auto last = rates.end() - std::min<std::ptrdiff_t>(16, std::ssize(rates));
        EXPECT_DOUBLE_EQ(row[12],
                         std::accumulate(last, rates.end(), 0.0) / static_cast<double>(rates.end() - last));
    }
    EXPECT_EQ(statistics.frames, 20U);
}

TEST_F(HostExample, SavesStatistics)
{
    Capture output(1);
    WriteSettings("[Frames]\nFrameLimit=0\n; of the last run\n[Statistics]\nSeconds=9\n");
    hostapp::Application application(Options());
    application.Run([](const CQMFPSCounter&) { return false; });
    const hostapp::Statistics statistics = {.frames = 30,
                                            .seconds = 0.5,
                                            .shortestFrame = 0.0125,
                                            .longestFrame = 0.25,
                                            .averageFrame = 0.0166667};
    application.Finish(statistics);
    EXPECT_EQ(Read(m_file), " [Frames]\n FrameLimit=0\n; of the last run\n [Statistics]\n Frames=30\n"
                            " FramesPerSecond=60.000\n ShortestFrame=0.012500\n AverageFrame=0.016667\n"
                            " LongestFrame=0.250000\n Seconds=0.500\n");
    EXPECT_FALSE(CQMFileCheckAPI::Check()); // the file was written by the host itself
    EXPECT_EQ(Messages(output), Lines());

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
