#include "tests/timing/Script.h"
#include "timing/QMFPSCounter.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <random>
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

    /// @return the mean of the ring's positive entries, of which there is one at least; their sum is a Sum.
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
        return double(Sum(sum)) / count;
    }
};

struct Counter : CQMFPSCounter
{
    using CQMFPSCounter::CQMFPSCounter;
    using CQMFPSCounter::Initialize;
};

void ExpectSame(const Counter& counter, const Model& model)
{
    EXPECT_TRUE(Model::Queue.empty()) << "the counter read more ticks than it should";
    EXPECT_EQ(counter.GetFPS(), model.FPS);
    EXPECT_EQ(counter.GetFPSMinimum(), model.Minimum);
    EXPECT_EQ(counter.GetFPSMaximum(), model.Maximum);
    EXPECT_EQ(counter.GetFPSAverage(), model.Average);
    EXPECT_EQ(counter.GetFPSSampleIndex(), model.Index);
    EXPECT_EQ(counter.GetFPSSampleCount(), model.Rates->size());
    for (unsigned long i = 0; i != model.Rates->size(); ++i)
        EXPECT_EQ(counter.GetFPSSample(i), (*model.Rates)[i]) << i;
    EXPECT_EQ(counter.GetFPSType(), model.Type);
    EXPECT_EQ(counter.GetTotalFrame(), model.Total);
    EXPECT_EQ(counter.GetTickPeriod(), model.Period);
    EXPECT_EQ(counter.GetTickStart(), model.TickStart);
    EXPECT_EQ(counter.GetTickEnd(), model.TickEnd);
    EXPECT_EQ(counter.GetTickAccumulator(), model.Accumulator);
    EXPECT_EQ(counter.GetTickElapsed(), model.Elapsed);
    EXPECT_EQ(counter.GetTickTolerance(), model.Tolerance);
    EXPECT_EQ(counter.GetTickMinimum(), model.TickMinimum);
    EXPECT_EQ(counter.GetTickMaximum(), model.TickMaximum);
    EXPECT_EQ(counter.GetTickAverage(), model.TickAverage);
    EXPECT_EQ(counter.GetTickSampleIndex(), model.TickIndex);
    EXPECT_EQ(counter.GetTickSampleCount(), 10000);
}

/// Does the same to counters and their models, at random; they become copies of one another now and then.
void Walk(unsigned seed, std::uint64_t tickRate)
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
        const std::uint64_t choice = step == 100 ? 40 : below(40);
        if (choice == 0)
            both([](auto& counter) { counter.Reset(); });
        else if (choice == 1)
            both([](auto& counter) { counter.Initialize(); });
        else if (choice == 2)
            both([n = static_cast<unsigned long>(below(20))](auto& counter) {
                counter.SetFPSAverageSampleCount(n);
            });
        else if (choice == 3)
            for (const unsigned long n : {1'000'000UL, ULONG_MAX / 2 + 6}) // no memory; more than 32 bits
                EXPECT_THROW(pair.first.SetFPSAverageSampleCount(n), std::bad_alloc);
        else if (choice < 8)
            pair = std::pair(pairs[below(pairs.size())]);
        else if (choice < 12)
            both([choice](auto& counter) { counter.Hold(choice == 8); });
        else // once often enough for the duration ring to wrap
            for (std::uint64_t calls = choice == 40 ? 25'000 : below(20); calls != 0; --calls)
                both([start = below(2) == 0](auto& counter) { start ? counter.Start() : counter.End(); });
        for (const auto& [counter, model] : pairs)
            ExpectSame(counter, model);
    }
}

TEST_F(Scripted, TheFrameRateCounterDoesWhatItsModelDoes)
{
    for (unsigned seed = 1; seed != 5; ++seed)
        Walk(seed, seed == 1 ? 1'000'000'000'000'000 : 1'000'000); // the first with rates past 32 bits
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
