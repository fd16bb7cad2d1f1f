// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMFPSCounter.h"
#include "tests/timing/Script.h"

#include <algorithm>
#include <climits>
#include <new>
#include <numeric>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

/// A counter whose own cost is 5 of 1000 ticks per second.
struct Counter : CQMFPSCounter
{
    using CQMFPSCounter::CQMFPSCounter;
    using CQMFPSCounter::Initialize;

    auto Figures() const
    {
        return std::tuple(GetTotalFrame(), GetTickStart(), GetTickEnd(), GetTickElapsed(), GetTickMinimum(),
                          GetTickMaximum(), GetTickAverage(), GetTickSampleIndex(), GetTickAccumulator(),
                          GetFPS(), GetFPSMinimum(), GetFPSMaximum(), GetFPSAverage(), GetFPSSampleIndex());
    }

    /// @return the figures after a frame from one tick to another.
    auto Frame(std::uint64_t start, std::uint64_t end)
    {
        script.Clock = start;
        Start();
        script.Clock = end;
        End();
        return Figures();
    }
};
using Figures = decltype(Counter().Figures());
const Figures Cleared(0, 0, 0, 0, INT64_MAX, 0, 0, 0, 0, 0, INT_MAX, -1, 0, 0);
static_assert(std::is_convertible_v<eQMFPSType, CQMFPSCounter>);

TEST_F(Scripted, InstantRates)
{
    Counter c;
    EXPECT_EQ(std::tuple(c.GetFPSType(), c.GetTickPeriod(), c.GetTickSampleCount()),
              std::tuple(eQMFPSType_Instant, 1000, 10'000));
    c.SetFPSAverageSampleCount(16);
    c.Initialize(); // brings the durations back
    EXPECT_EQ(c.Figures(), Cleared);
    // The first calibration frame took 5, as yet without a tolerance, the other 1000 took 1.
    EXPECT_EQ(c.Frame(100, 125),
              Figures(1, 100, 125, 20, 1, 20, 1020 / 1001., 1, 0, 50, 50, 1000, 940.625, 1));
    c.Start();
    c.Hold(true);
    c.Reset();
    c.End(); // not started
    EXPECT_EQ(c.Figures(), Cleared);
    EXPECT_EQ(c.Frame(100, 125), Figures(1, 100, 125, 20, 20, 20, 20, 1, 0, 50, 50, 50, 50, 1));
    EXPECT_EQ(c.Frame(300, 307), Figures(2, 300, 307, 2, 2, 20, 11, 2, 0, 500, 50, 500, 275, 2));
    // No time counts as 1.
    EXPECT_EQ(c.Frame(400, 405), Figures(3, 400, 405, 1, 1, 20, 23 / 3., 3, 0, 1000, 50, 1000, 1550 / 3., 3));
    c.Hold(true);
    c.Frame(450, 500); // neither starts nor ends
    c.Hold(false);
    c.Start();
    c.Hold(true);
    c.Frame(506, 508);
    c.Hold(false);
    // It started at 500. Less than the tolerance wraps, and is negative in the average.
    constexpr double rate = 1000 / 0x1p64;
    EXPECT_EQ(c.Frame(510, 470), Figures(4, 500, 470, -35, 1, -35, -3, 4, 0, rate, rate, 1000, 387.5, 4));

    // The last read ends the last calibration frame; one more would end another.
    for (const auto& [read, tolerance] : {std::pair(2000U, 2U), {2002U, 5U}}) {
        script.CheapRead = script.Reads + read;
        c.Reset();
        EXPECT_EQ(c.GetTickTolerance(), tolerance);
    }
}

TEST_F(Scripted, AverageRates)
{
    for (const int type : {1, 0, 3, -1}) {
        Counter c(static_cast<eQMFPSType>(type));
        EXPECT_EQ(c.GetFPSType(), type);
        // The calibration ended 47 periods of 21 frames, and left 14 frames of 1, 5, 10, ... 65.
        EXPECT_EQ(c.GetTickAccumulator(), 456);
        c.Frame(100, 649);
        EXPECT_EQ(c.GetFPS(), 1);
        c.Reset();
        EXPECT_EQ(c.Frame(100, 505), Figures(1, 100, 505, 400, 400, 400, 400, 1, 400, 0, INT_MAX, -1, 0, 0));
        EXPECT_EQ(c.Frame(600, 705), Figures(2, 100, 705, 600, 400, 600, 500, 2, 0, 2, 2, 2, 2, 1));
        EXPECT_EQ(c.Frame(800, 2805), Figures(3, 800, 2805, 2000, 400, 2000, 1000, 3, 0, .5, .5, 2, 1.25, 2));
    }
}

TEST_F(Scripted, AnotherNumberOfRatesDropsTheDurations)
{
    Counter c;
    c.Reset();
    c.Frame(100, 125);
    for (const unsigned long n : {1'000'000UL, ULONG_MAX / 2 + 6}) // no memory; more than 32 bits
        EXPECT_THROW(c.SetFPSAverageSampleCount(n), std::bad_alloc);
    EXPECT_EQ(std::tuple(c.GetFPSSampleCount(), c.GetFPSSample(0)), std::tuple(16, 50));
    c.SetFPSAverageSampleCount(2);
    EXPECT_EQ(c.Frame(100, 205), Figures(2, 100, 205, 100, 20, 20, 20, 1, 0, 10, 10, 50, 10, 1));
    EXPECT_EQ(c.Frame(100, 145), Figures(3, 100, 145, 40, 20, 20, 20, 1, 0, 25, 10, 50, 17.5, 2));
    // The ring wraps: 10 is forgotten, and 50, which is from before.
    EXPECT_EQ(c.Frame(100, 130), Figures(4, 100, 130, 25, 20, 20, 20, 1, 0, 40, 25, 40, 32.5, 1));
    c.Reset();
    EXPECT_EQ(c.Figures(), Cleared);

    script.TickRate = 0; // rates of 0 show where minimum and maximum start
    Counter zero;
    zero.SetFPSAverageSampleCount(0);
    EXPECT_EQ(zero.GetFPSSampleCount(), 1);
    EXPECT_EQ(zero.Frame(0, 15), Figures(1, 0, 15, 10, INT64_MAX, 0, 0, 0, 0, 0, INT_MAX, -1, 0, 1));
    EXPECT_EQ(zero.Frame(0, 15), Figures(2, 0, 15, 10, INT64_MAX, 0, 0, 0, 0, 0, 0x1p63, -0x1p63, 0, 1));
}

TEST_F(Scripted, CopiesShareTheRingsAndFindWhatAScanFinds)
{
    Counter fresh;
    fresh.Reset();
    Counter c(fresh);
    std::vector<std::uint64_t> ring(10'000);
    for (std::size_t frame = 0; frame != 25'000; ++frame) {
        std::uint64_t& duration = ring[frame % ring.size()];
        duration = frame < 2 ? 1 + frame * 1'000'000 : 2 + frame * frame * 7919 % 900'007;
        c.Frame(0, duration + 5);
        if (frame % 100 != 0)
            continue;
        Counter copy(fresh); // has no figures but the rings'
        copy.Frame(0, ring[0] + 5);
        EXPECT_EQ(c.GetFPSSample(0), copy.GetFPS());
        const auto entries = std::span(ring).first(std::min(frame + 1, ring.size()));
        const auto [minimum, maximum] = std::ranges::minmax(entries);
        const double average = std::accumulate(entries.begin(), entries.end(), 0.) / double(entries.size());
        EXPECT_EQ(std::tuple(copy.GetTickMinimum(), copy.GetTickMaximum(), copy.GetTickAverage()),
                  std::tuple(minimum, maximum, average));
    }
    EXPECT_EQ(std::tuple(c.GetTickSampleIndex(), c.GetTickMinimum(), c.GetTickMaximum()),
              std::tuple(5000, 1, 1'000'001)); // no longer in the ring
}

} // namespace
