#include "qmUtility/timing/QMFPSCounter.h"
#include "tests/timing/Script.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <random>
#include <tuple>
#include <vector>

namespace {

/// What a counter clears when it begins anew.
struct Figures
{
    double FPS = 0, Minimum = 2147483647.0, Maximum = -1, Average = 0, TickAverage = 0;
    std::uint32_t Frames = 0, Index = 0, Total = 0, TickIndex = 0;
    std::uint64_t TickStart = 0, TickEnd = 0, Elapsed = 0, TickMaximum = 0, TickMinimum = INT64_MAX;
    bool Started = false, Held = false;
};

/// What the counter is to do, step by step and with full scans, on ticks taken from a queue.
struct Model : Figures
{
    explicit Model(eQMFPSType type) : Type(type) { Initialize(); }

    static inline std::deque<std::uint64_t> Queue;

    eQMFPSType Type;
    std::uint64_t Period = script.TickRate, Accumulator = 0, Tolerance = 0;
    std::shared_ptr<std::vector<double>> Rates = std::make_shared<std::vector<double>>(16);
    std::shared_ptr<std::vector<std::uint64_t>> Durations; ///< without the zeros at its end

    void Hold(bool held) { Held = held; }

    void Start()
    {
        if (Held || Started)
            return;
        Started = true;
        TickStart = Take(Queue);
    }

    void End()
    {
        if (Held || !Started)
            return;
        TickEnd = Take(Queue);
        ++Total;
        Elapsed = std::max<std::uint64_t>(TickEnd - Tolerance - TickStart, 1);
        if (Durations) {
            TickIndex %= 10000;
            Durations->resize(std::max<std::size_t>(Durations->size(), TickIndex + 1));
            (*Durations)[TickIndex++] = Elapsed;
            TickAverage = Scan<std::int64_t>(*Durations, TickMinimum, TickMaximum);
        }

        if (Type == 2)
            FPS = double(Period) / double(Elapsed);
        else {
            Accumulator += Elapsed;
            ++Frames;
            if (Accumulator < Period)
                return;
            FPS = Frames / (double(Accumulator) / double(Period));
            Accumulator = Frames = 0;
        }

        if (Index >= Rates->size()) {
            Index = 0;
            Minimum = 0x1p63;
            Maximum = -0x1p63;
        }
        (*Rates)[Index++] = FPS;
        Average = Scan<double>(*Rates, Minimum, Maximum);
        Started = false;
    }

    void Initialize()
    {
        Rates = std::make_shared<std::vector<double>>(Rates->size());
        Durations = std::make_shared<std::vector<std::uint64_t>>();
        Calibrate();
    }

    void Reset()
    {
        Calibrate();
        std::fill(Rates->begin(), Rates->end(), 0);
        if (Durations)
            Durations->clear();
        Accumulator = 0;
    }

    void SetFPSAverageSampleCount(unsigned long n)
    {
        Rates = std::make_shared<std::vector<double>>(n == 0 ? 1 : n);
        Index = 0;
        Durations = nullptr;
    }

private:
    void Calibrate()
    {
        Started = Held = false;
        Tolerance = 0;
        for (int i = 0; i != 1001; ++i) {
            Start();
            End();
            Tolerance = std::min(i != 0 ? Tolerance : UINT64_MAX, TickEnd - TickStart);
        }
        static_cast<Figures&>(*this) = {};
    }

    /// @return the mean of the ring's positive entries, 0 without any; their sum is a Sum.
    template <class Sum, class Entry>
    static double Scan(const std::vector<Entry>& ring, Entry& minimum, Entry& maximum)
    {
        Entry sum = 0;
        int count = 0;
        for (const Entry entry : ring)
            if (entry > 0) {
                minimum = std::min(minimum, entry);
                maximum = std::max(maximum, entry);
                sum += entry;
                ++count;
            }
        return count != 0 ? double(Sum(sum)) / count : 0;
    }
};

struct Counter : CQMFPSCounter
{
    using CQMFPSCounter::CQMFPSCounter;
    using CQMFPSCounter::Initialize;
};

/// All that a counter tells of itself but its rates.
auto Told(const Counter& c)
{
    return std::tuple(c.GetFPS(), c.GetFPSMinimum(), c.GetFPSMaximum(), c.GetFPSAverage(),
                      c.GetFPSSampleIndex(), c.GetFPSSampleCount(), c.GetFPSType(), c.GetTotalFrame(),
                      c.GetTickPeriod(), c.GetTickStart(), c.GetTickEnd(), c.GetTickAccumulator(),
                      c.GetTickElapsed(), c.GetTickTolerance(), c.GetTickMinimum(), c.GetTickMaximum(),
                      c.GetTickAverage(), c.GetTickSampleIndex(), c.GetTickSampleCount());
}
auto Told(const Model& m)
{
    return std::tuple(m.FPS, m.Minimum, m.Maximum, m.Average, m.Index, m.Rates->size(), m.Type, m.Total,
                      m.Period, m.TickStart, m.TickEnd, m.Accumulator, m.Elapsed, m.Tolerance, m.TickMinimum,
                      m.TickMaximum, m.TickAverage, m.TickIndex, 10'000U);
}

void ExpectSame(const Counter& counter, const Model& model)
{
    EXPECT_TRUE(Model::Queue.empty()) << "the counter read more ticks than it should";
    EXPECT_EQ(Told(counter), Told(model));
    std::vector<double> rates;
    while (rates.size() != model.Rates->size())
        rates.push_back(counter.GetFPSSample(static_cast<unsigned long>(rates.size())));
    EXPECT_EQ(rates, *model.Rates);
}

/// Does the same to counters and their models, at random; they become copies of one another now and then.
/// @param longStep the step at which the duration ring wraps
void Walk(unsigned seed, std::uint64_t tickRate, int longStep)
{
    std::mt19937_64 random(seed);
    const auto below = [&random](std::uint64_t limit) { return random() % limit; };
    script.TickRate = tickRate;
    script.Ticks = [&, tick = random()]() mutable {
        const std::uint64_t kind = below(64);
        tick += kind == 0 ? random() : kind == 1 ? below(3) : 500 + below(100'000); // may go back
        Model::Queue.push_back(tick);
        return tick;
    };

    std::vector<std::pair<Counter, Model>> pairs;
    for (const int type : {2, 1, 7})
        pairs.emplace_back(static_cast<eQMFPSType>(type), static_cast<eQMFPSType>(type));
    for (int step = 0; step != 200 && !testing::Test::HasFailure(); ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
        auto& pair = pairs[below(pairs.size())];
        const auto both = [&pair](auto operation) {
            operation(pair.first);
            operation(pair.second);
        };
        const std::uint64_t choice = step == longStep ? 40 : below(40);
        if (choice == 0)
            both([](auto& counter) { counter.Reset(); });
        else if (choice == 1)
            both([](auto& counter) { counter.Initialize(); });
        else if (choice == 2)
            both([n = static_cast<unsigned long>(below(20))](auto& c) { c.SetFPSAverageSampleCount(n); });
        else if (choice == 3)
            for (const unsigned long n : {1'000'000UL, ULONG_MAX / 2 + 6}) // no memory; more than 32 bits
                EXPECT_THROW(pair.first.SetFPSAverageSampleCount(n), std::bad_alloc);
        else if (choice < 8)
            pair = std::pair(pairs[below(pairs.size())]);
        else if (choice < 12)
            both([choice](auto& counter) { counter.Hold(choice == 8); });
        else
            for (std::uint64_t calls = choice == 40 ? 25'000 : below(20); calls != 0; --calls)
                both([start = below(2) == 0](auto& counter) { start ? counter.Start() : counter.End(); });
        for (const auto& [counter, model] : pairs)
            ExpectSame(counter, model);
    }
}

TEST_F(Scripted, TheFrameRateCounterDoesWhatItsModelDoes)
{
    Walk(1, 1'000'000'000'000'000, 100); // with rates past 32 bits
    Walk(2, 1'000'000, 100);
    Walk(3, 1'000'000, -1);
    Walk(4, 1, -1); // any frame is a whole period
    Walk(5, 0, -1); // and none has a rate
}

} // namespace

// There is memory for short rings only.
void* operator new[](std::size_t size)
{
    if (size > 1'000'000)
        throw std::bad_alloc();
    return operator new(size);
}
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }
