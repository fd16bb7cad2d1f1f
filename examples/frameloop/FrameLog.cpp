#include "examples/frameloop/FrameLog.h"

#include "qmUtility/timing/QMFPSCounter.h"

#include <cerrno>
#include <iomanip>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace hostapp {

const char* const FrameLog::Description =
    R"(The frame log has a row of column names and then one row for each frame:

  frame           number of the frame, from 1 on
  tick_start      processor tick at which the frame began
  tick_end        processor tick at which it ended
  tick_tolerance  ticks that the counter itself takes
  tick_period     ticks of one second
  tick_elapsed    tick_end - tick_tolerance - tick_start, at least 1
  tick_minimum    smallest tick_elapsed so far
  tick_maximum    largest tick_elapsed so far
  tick_average    mean tick_elapsed of the last 10000 frames
  fps             tick_period / tick_elapsed
  fps_minimum     smallest fps of the rows from number w - 15 on
  fps_maximum     largest fps of the same rows
  fps_average     mean fps of the last 16 frames

Here w is the last number of 1, 17, 33 and so on, up to this row's own: there the
smallest and largest fps start anew, from the 16 frames still remembered.
)";

FrameLog::FrameLog(const std::string& path) : m_path(path)
{
    m_file.open(path);
    if (!m_file)
        throw std::runtime_error("cannot write " + path + ": " + std::generic_category().message(errno));
    m_file << "frame,tick_start,tick_end,tick_tolerance,tick_period,tick_elapsed,tick_minimum,tick_maximum,"
              "tick_average,fps,fps_minimum,fps_maximum,fps_average\n"
           << std::setprecision(std::numeric_limits<double>::max_digits10);
}

void FrameLog::Write(const CQMFPSCounter& counter)
{
    if (!m_file.is_open())
        return;
    m_file << counter.GetTotalFrame() << ',' << counter.GetTickStart() << ',' << counter.GetTickEnd() << ','
           << counter.GetTickTolerance() << ',' << counter.GetTickPeriod() << ',' << counter.GetTickElapsed()
           << ',' << counter.GetTickMinimum() << ',' << counter.GetTickMaximum() << ','
           << counter.GetTickAverage() << ',' << counter.GetFPS() << ',' << counter.GetFPSMinimum() << ','
           << counter.GetFPSMaximum() << ',' << counter.GetFPSAverage() << '\n';
}

void FrameLog::Close()
{
    if (m_file.is_open() && (m_file.close(), m_file.fail()))
        throw std::runtime_error("cannot write all of " + m_path);
}

} // namespace hostapp
