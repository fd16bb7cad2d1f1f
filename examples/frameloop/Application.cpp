#include "examples/frameloop/Application.h"

#include "examples/frameloop/Pace.h"
#include "examples/frameloop/Scene.h"
#include "examples/frameloop/Text.h"
#include "qmUtility/filecheck/QMFileCheckAPI.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"

#include <iterator>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace hostapp {

namespace {

double Seconds(Clock::duration duration) { return std::chrono::duration<double>(duration).count(); }

std::wstring StatusLine(const CQMFPSCounter& counter, const Settings& settings, double seconds)
{
    CString line;
    line.Format(L"%5.1f s  frame %5u  %6.1f fps (%.1f over %u frames), limit %d, workload %d", seconds,
                static_cast<unsigned>(counter.GetTotalFrame()), counter.GetFPS(), counter.GetFPSAverage(),
                static_cast<unsigned>(counter.GetFPSSampleCount()), settings.frameLimit, settings.workload);
    return line.GetString();
}

Statistics Measured(const CQMFPSCounter& counter, double seconds)
{
    const auto period = static_cast<double>(counter.GetTickPeriod());
    return {counter.GetTotalFrame(), seconds, static_cast<double>(counter.GetTickMinimum()) / period,
            static_cast<double>(counter.GetTickMaximum()) / period, counter.GetTickAverage() / period};
}

std::string Joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

} // namespace

Application::Application(const Options& options) : m_options(options)
{
    CQMDebugTraceStartEndMarker phase(L"Load settings", true, UsesConsole(), false);
    Watch(); // from before the file is read, so that no change is missed
    std::vector<std::string> problems;
    m_settings = LoadSettings(options.settingsFile, Settings(), problems);
    phase.SetUseLogConsole(UsesConsole());
    for (const std::string& problem : problems)
        Log(m_settings.sink, Printable(options.settingsFile + ": " + problem));
    if (!options.frameLog.empty())
        m_frameLog = FrameLog(options.frameLog);
}

Statistics Application::Run(const std::function<bool(const CQMFPSCounter&)>& goOn)
{
    CQMDebugTraceStartEndMarker phase(L"Run", true, UsesConsole(), false);
    Screen screen;
    CQMFPSCounter counter(eQMFPSType_Instant);
    counter.Reset(); // forgets the empty frames that measured the counter's own cost
    CQMTimer stopwatch;
    const auto start = Clock::now();
    Every check(m_options.checkEvery, start);
    Every report(std::chrono::milliseconds(500), start);
    Pace pace(start);
    bool wasWritten = false;
    do {
        counter.Start();
        const auto now = Clock::now();
        if (check.IsDue(now)) {
            // The answer stays true until the list is made anew. The file is read when it is at rest again,
            // and not half written.
            const bool isWritten = CQMFileCheckAPI::Check();
            if (isWritten)
                Watch();
            else if (wasWritten)
                ReloadSettings(screen);
            wasWritten = isWritten;
        }
        DrawFrame(screen, Seconds(now - start));
        if (report.IsDue(now))
            screen.SetStatus(StatusLine(counter, m_settings, Seconds(now - start)));
        std::this_thread::sleep_until(pace.End(Clock::now(), m_settings.frameLimit));
        counter.End();
        m_frameLog.Write(counter);
    } while (goOn(counter));
    stopwatch.Stop(false);
    screen.Leave();

    phase.SetUseLogConsole(UsesConsole()); // which may have changed
    if (UsesConsole())
        stopwatch.LogLapsedTime(false, false, L"%u frames", static_cast<unsigned>(counter.GetTotalFrame()));
    else
        stopwatch.TraceLapsedTime(false, false, L"All frames");
    return Measured(counter, stopwatch.GetLapsedTime(false));
}

void Application::DrawFrame(Screen& screen, double seconds) const
{
    const auto size = screen.PictureSize();
    screen.Show(Printable(m_settings.title),
                DrawScene(seconds, m_settings.workload, size.Columns, size.Rows));
}

void Application::Watch() const
{
    CQMFileCheckAPI::Initialize();
    CQMFileCheckAPI::AddWatchDog(Wide(m_options.settingsFile));
    CQMFileCheckAPI::Enable(true);
}

void Application::ReloadSettings(Screen& screen)
{
    const std::string& file = m_options.settingsFile;
    std::string message;
    try {
        std::vector<std::string> problems;
        const Settings settings = LoadSettings(file, m_settings, problems);
        std::vector<std::string> news = Differences(m_settings, settings);
        news.insert(news.end(), problems.begin(), problems.end());
        message = file + " was written: " + (news.empty() ? "no setting is different" : Joined(news));
        m_settings = settings;
    } catch (const std::runtime_error& failure) {
        message = std::string(failure.what()) + ", the settings stay as they are";
    }
    screen.Say(m_settings.sink, Printable(message));
}

void Application::Finish(const Statistics& statistics)
{
    SaveStatistics(statistics);
    m_frameLog.Close();
}

void Application::SaveStatistics(const Statistics& statistics) const
try {
    const CQMDebugTraceStartEndMarker phase(L"Save statistics", true, UsesConsole(), false);
    CQMFileCheckAPI::Initialize(); // what we write ourselves is no news
    const std::pair<const char*, std::string> values[] = {
        {"Frames", std::to_string(statistics.frames)},
        {"Seconds", Fixed(statistics.seconds, 3)},
        {"FramesPerSecond", Fixed(static_cast<double>(statistics.frames) / statistics.seconds, 3)},
        {"ShortestFrame", Fixed(statistics.shortestFrame, 6)},
        {"AverageFrame", Fixed(statistics.averageFrame, 6)},
        {"LongestFrame", Fixed(statistics.longestFrame, 6)},
    };
    // From the last to the first, since each new key becomes the first of its section.
    for (auto value = std::rbegin(values); value != std::rend(values); ++value)
        if (!INIParser::SetValue(value->first, value->second, "Statistics", m_options.settingsFile))
            throw std::runtime_error("cannot write the statistics into " + m_options.settingsFile);
} catch (const std::out_of_range&) { // so the library reports it
    throw std::runtime_error("cannot write the statistics into " + m_options.settingsFile +
                             ", which has a section header without \"]\"");
}

} // namespace hostapp
