#pragma once

/// @file
/// When a frame is to end, and when something is due that does not happen every frame.

#include <chrono>

namespace hostapp {

using Clock = std::chrono::steady_clock;

/// Keeps frames to a rate. Each one is to end a period after the one before was to end, whenever that really
/// did, so that the rate does not drift.
class Pace
{
public:
    explicit Pace(Clock::time_point start) : m_end(start) {}

    /// @param limit frames per second; 0 for no limit
    /// @return when the present frame is to end; a time not after `now` means at once
    Clock::time_point End(Clock::time_point now, int limit)
    {
        constexpr std::chrono::milliseconds madeUpFor{100};
        if (limit != 0)
            m_end += Clock::duration(std::chrono::seconds(1)) / limit;
        if (limit == 0 || m_end < now - madeUpFor) // shorter frames make up for a late one, but not for hours
            m_end = now;
        return m_end;
    }

private:
    Clock::time_point m_end;
};

/// Something that is due whenever an interval has passed.
class Every
{
public:
    Every(Clock::duration interval, Clock::time_point start) : m_interval(interval), m_due(start + interval)
    {}

    bool IsDue(Clock::time_point now)
    {
        if (now < m_due)
            return false;
        m_due = now + m_interval;
        return true;
    }

private:
    Clock::duration m_interval;
    Clock::time_point m_due;
};

} // namespace hostapp
