#include "tests/timing/Script.h"
#include "timing/QMFPSCounter.h"

#include <climits>
#include <new>
#include <tuple>

namespace {

struct Counter : CQMFPSCounter
{
    using CQMFPSCounter::CQMFPSCounter;
    using CQMFPSCounter::Initialize;
};

/// A second has 1000 ticks, and each read of the counter takes 10 of them.
struct FrameRate : Scripted
{
    FrameRate()
    {
        script.TickRate = 1000;
        script.Ticks = [this] { return m_tick += 10; };
    }

    /// Has a frame take some ticks besides those of the reads.
    void Frame(Counter& counter, std::uint64_t ticks)
    {
        counter.Start();
        m_tick += ticks;
        counter.End();
    }

    std::uint64_t m_tick = 1'000'000;
};

void ExpectRates(const Counter& counter, double minimum, double maximum, double average)
{
    EXPECT_EQ(std::tuple(counter.GetFPSMinimum(), counter.GetFPSMaximum(), counter.GetFPSAverage()),
              std::tuple(minimum, maximum, average));
}

void ExpectTicks(const Counter& counter, std::uint64_t minimum, std::uint64_t maximum, double average)
{
    EXPECT_EQ(std::tuple(counter.GetTickMinimum(), counter.GetTickMaximum(), counter.GetTickAverage()),
              std::tuple(minimum, maximum, average));
}

void ExpectNoFrame(const Counter& counter)
{
    ExpectRates(counter, 2147483647, -1, 0);
    ExpectTicks(counter, INT64_MAX, 0, 0);
    EXPECT_EQ(counter.GetFPS(), 0);
    EXPECT_EQ(counter.GetTotalFrame() + counter.GetFPSSampleIndex() + counter.GetTickSampleIndex(), 0);
    EXPECT_EQ(counter.GetTickStart() + counter.GetTickEnd() + counter.GetTickElapsed(), 0);
}

TEST_F(FrameRate, ACounterBeginsByMeasuringItself)
{
    int reads = 0;
    script.Ticks = [&] { return m_tick += ++reads == 2002 ? 7 : 10; };
    Counter counter;
    EXPECT_EQ(reads, 2002);
    EXPECT_EQ(counter.GetTickTolerance(), 7);
    EXPECT_EQ(counter.GetTickPeriod(), 1000);
    EXPECT_EQ(counter.GetFPSType(), eQMFPSType_Instant);
    ExpectNoFrame(counter);
    // What it measured stays in the rings: 999 times one tick, and at last 7 of which it took off 10.
    EXPECT_EQ(counter.GetFPSSample(0), 1000);
    Frame(counter, 50);
    EXPECT_EQ(counter.GetTickMinimum(), 1);
    EXPECT_EQ(counter.GetTickMaximum(), UINT64_MAX - 2);

    counter.Hold(true);
    counter.Reset(); // leaves nothing there
    EXPECT_EQ(counter.GetTickTolerance(), 10);
    EXPECT_EQ(counter.GetFPSSample(0), 0);
    ExpectNoFrame(counter);
    Frame(counter, 50);
    ExpectTicks(counter, 50, 50, 50);
}

TEST_F(FrameRate, AnInstantCounterTellsOfEachFrame)
{
    Counter counter;
    counter.Reset();
    for (const std::uint64_t ticks : {50, 20, 100})
        Frame(counter, ticks);
    EXPECT_EQ(counter.GetTickStart(), m_tick - 110);
    EXPECT_EQ(counter.GetTickEnd(), m_tick);
    EXPECT_EQ(counter.GetTickElapsed(), 100);
    EXPECT_EQ(counter.GetFPS(), 10);
    ExpectRates(counter, 10, 50, 80.0 / 3);
    ExpectTicks(counter, 20, 100, 170.0 / 3);

    counter.End(); // of nothing
    counter.Hold(true);
    Frame(counter, 0);
    EXPECT_EQ(counter.GetTickEnd(), m_tick) << "it was read";
    EXPECT_EQ(counter.GetTotalFrame(), 3);

    counter.Reset();
    Frame(counter, 0); // counts as one tick
    ExpectTicks(counter, 1, 1, 1);
    Frame(counter, 0 - std::uint64_t{101}); // the ticks may go back
    ExpectTicks(counter, 1, UINT64_MAX - 100, -50);
}

TEST_F(FrameRate, TheRingOfRatesBeginsAnew)
{
    const struct
    {
        std::uint64_t TickRate;
        double Minimum, Maximum, Average;    ///< when it is full
        double Minimum2, Maximum2, Average2; ///< one frame later
    } cases[] = {
        {1000, 1, 10, 151.0 / 16, 10, 20, 170.0 / 16},
        {1'000'000'000'000'000, 2147483647, 1e13, 151e12 / 16, 1e13, 2e13, 170e12 / 16},
        {0, 2147483647, -1, 0, 0x1p63, -0x1p63, 0},
    };
    for (const auto& rates : cases) {
        script.TickRate = rates.TickRate;
        Counter counter;
        counter.Reset();
        Frame(counter, 1000);
        for (int i = 0; i != 15; ++i)
            Frame(counter, 100);
        ExpectRates(counter, rates.Minimum, rates.Maximum, rates.Average);
        EXPECT_EQ(counter.GetFPSSampleIndex(), 16);
        Frame(counter, 50);
        ExpectRates(counter, rates.Minimum2, rates.Maximum2, rates.Average2);
        EXPECT_EQ(counter.GetFPSSampleIndex(), 1);
    }
}

TEST_F(FrameRate, TheRingOfDurationsForgetsTheOldest)
{
    Counter counter;
    counter.Reset();
    Frame(counter, 50);
    while (counter.GetTickSampleIndex() != counter.GetTickSampleCount())
        Frame(counter, 10);
    EXPECT_EQ(counter.GetTotalFrame(), 10'000);
    ExpectTicks(counter, 10, 50, 10.004);
    Frame(counter, 30);
    EXPECT_EQ(counter.GetTickSampleIndex(), 1);
    ExpectTicks(counter, 10, 50, 10.002);
}

TEST_F(FrameRate, AnAverageCounterAddsUpTheTimeFromThePeriodsStart)
{
    for (const int type : {1, 7}) {
        Counter counter(static_cast<eQMFPSType>(type));
        EXPECT_NE(counter.GetTickAccumulator(), 0); // from when it measured itself
        counter.Reset();
        EXPECT_EQ(counter.GetTickAccumulator(), 0);
        const std::uint64_t start = m_tick + 10;
        Frame(counter, 300);
        Frame(counter, 200);
        EXPECT_EQ(counter.GetTickAccumulator(), 300 + 510);
        EXPECT_EQ(counter.GetFPS(), 0);
        Frame(counter, 180);
        EXPECT_EQ(counter.GetTickStart(), start);
        EXPECT_EQ(counter.GetTickAccumulator(), 0);
        EXPECT_EQ(counter.GetFPS(), 3 / 1.51);
        EXPECT_EQ(counter.GetTotalFrame(), 3);
        Frame(counter, 1000);
        EXPECT_EQ(counter.GetFPS(), 1);
        EXPECT_EQ(counter.GetFPSSampleIndex(), 2);
    }
}

TEST_F(FrameRate, AnotherNumberOfRatesDropsTheDurations)
{
    Counter counter;
    counter.Reset();
    Frame(counter, 50);
    counter.SetFPSAverageSampleCount(2);
    EXPECT_EQ(counter.GetFPSSampleCount(), 2);
    EXPECT_EQ(counter.GetFPSSampleIndex(), 0);
    EXPECT_EQ(counter.GetFPSSample(1), 0);
    Frame(counter, 25);
    ExpectRates(counter, 20, 40, 40);
    ExpectTicks(counter, 50, 50, 50);
    counter.SetFPSAverageSampleCount(0);
    EXPECT_EQ(counter.GetFPSSampleCount(), 1);
    if constexpr (ULONG_MAX > UINT32_MAX) {
        EXPECT_THROW(counter.SetFPSAverageSampleCount(ULONG_MAX / 2 + 6), std::bad_array_new_length);
    }
    counter.Reset();
    Frame(counter, 20);
    EXPECT_EQ(counter.GetTickSampleIndex(), 0);
    counter.Initialize();
    Frame(counter, 20);
    EXPECT_EQ(counter.GetTickSampleIndex(), 1);
}

TEST_F(FrameRate, CopiesShareTheRings)
{
    Counter counter;
    counter.Reset();
    Counter copy(counter);
    Counter assigned;
    assigned = copy;
    Frame(copy, 20);
    Frame(assigned, 10); // in the place of the copy's
    Frame(counter, 50);  // and this one in theirs
    Frame(copy, 40);
    EXPECT_EQ(counter.GetFPSSample(1), 25);
    ExpectTicks(copy, 20, 50, 45);
}

} // namespace
