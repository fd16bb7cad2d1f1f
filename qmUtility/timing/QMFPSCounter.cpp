#include "qmUtility/timing/QMFPSCounter.h"

#include "qmUtility/host/qmSystemInfo.h"

#include <algorithm>
#include <new>
#include <vector>

/// The duration ring, with what a scan of all its entries would find: the sum and the number of the nonzero
/// ones, and the smallest and the largest of them.
///
/// These are kept with the ring because copies of a counter write into it too. Sum and number follow from the
/// entry replaced and the new one (sums wrap, as those of a scan would). For the extremes the entries are the
/// leaves of a binary tree of which every node knows the extremes below it; a new entry climbs only as far as
/// it changes something, which is seldom far.
struct QMUTILITY_PRIVATE CQMFPSCounter::TickRing
{
    explicit TickRing(std::uint32_t length) : Nodes(length), Entries(length) {}

    std::uint64_t Sum = 0;
    std::uint64_t Number = 0;

    std::uint64_t Maximum() const { return Node(1).Largest; }
    /// Only of a ring that is not all zeros.
    std::uint64_t Minimum() const { return 0 - Node(1).SmallestNegated; }

    void Store(std::size_t index, std::uint64_t entry)
    {
        std::uint64_t& place = Entries[index];
        Sum += entry - place;
        Number += std::uint64_t{entry != 0} - std::uint64_t{place != 0};
        place = entry;
        for (std::size_t node = (Entries.size() + index) / 2; node != 0; node /= 2) {
            const Extremes left = Node(2 * node);
            const Extremes right = Node(2 * node + 1);
            const Extremes now = {std::max(left.Largest, right.Largest),
                                  std::max(left.SmallestNegated, right.SmallestNegated)};
            Extremes& known = Nodes[node];
            if (now.Largest == known.Largest && now.SmallestNegated == known.SmallestNegated)
                return;
            known = now;
        }
    }

    void Zero()
    {
        Sum = 0;
        Number = 0;
        std::fill(Nodes.begin(), Nodes.end(), Extremes{});
        std::fill(Entries.begin(), Entries.end(), 0);
    }

private:
    /// Negated (modulo 2^64), the smallest nonzero number becomes the largest, and zero stays the least of
    /// all.
    struct Extremes
    {
        std::uint64_t Largest = 0;
        std::uint64_t SmallestNegated = 0;
    };

    /// Node 1 is the root, 2n and 2n + 1 are the children of n, and from the number of entries on nodes are
    /// the entries themselves.
    Extremes Node(std::size_t node) const
    {
        if (node < Nodes.size())
            return Nodes[node];
        const std::uint64_t entry = Entries[node - Nodes.size()];
        return {entry, 0 - entry};
    }

    std::vector<Extremes> Nodes;
    std::vector<std::uint64_t> Entries;
};

CQMFPSCounter::CQMFPSCounter() : CQMFPSCounter(eQMFPSType_Instant) {}

CQMFPSCounter::CQMFPSCounter(eQMFPSType type) : m_eFPSType(type), m_nTickPeriod(cpu::GetClockSpeed())
{
    Initialize();
}

CQMFPSCounter::CQMFPSCounter(const CQMFPSCounter&) = default;
CQMFPSCounter& CQMFPSCounter::operator=(const CQMFPSCounter&) = default;
CQMFPSCounter::~CQMFPSCounter() = default;

void CQMFPSCounter::Start()
{
    if (m_bHold || m_bStarted)
        return;
    m_bStarted = true;
    m_nTickStart = cpu::GetTick();
}

void CQMFPSCounter::End()
{
    if (m_bHold || !m_bStarted)
        return;
    m_nTickEnd = cpu::GetTick();
    ++m_nTotalFrame;
    m_nTickElapsed = std::max<std::uint64_t>(m_nTickEnd - m_nTickTolerance - m_nTickStart, 1);

    if (m_pTickSamples) {
        TickRing& ring = *m_pTickSamples;
        if (m_nTickSampleIndex >= m_nTickSampleCount)
            m_nTickSampleIndex = 0;
        ring.Store(m_nTickSampleIndex++, m_nTickElapsed); // never zero, so the ring is not all zeros
        m_nTickMinimum = std::min(m_nTickMinimum, ring.Minimum());
        m_nTickMaximum = std::max(m_nTickMaximum, ring.Maximum());
        m_dTickAverage =
            static_cast<double>(static_cast<std::int64_t>(ring.Sum)) / static_cast<double>(ring.Number);
    }

    if (m_eFPSType == eQMFPSType_Instant)
        m_dFPS = static_cast<double>(m_nTickPeriod) / static_cast<double>(m_nTickElapsed);
    else {
        m_nTickAccumulator += m_nTickElapsed;
        ++m_nFrameCount;
        if (m_nTickAccumulator < m_nTickPeriod)
            return; // still started, on purpose: the period's frames all measure from its first Start
        m_dFPS = static_cast<double>(m_nFrameCount) /
                 (static_cast<double>(m_nTickAccumulator) / static_cast<double>(m_nTickPeriod));
        m_nFrameCount = 0;
        m_nTickAccumulator = 0;
    }

    if (m_nFPSSampleIndex >= m_nFPSSampleCount) {
        // Not the values that Clear sets.
        m_nFPSSampleIndex = 0;
        m_dFPSMinimum = 0x1p63;
        m_dFPSMaximum = -0x1p63;
    }
    m_pFPSSamples[m_nFPSSampleIndex++] = m_dFPS;
    double sum = 0;
    std::uint32_t number = 0;
    for (std::uint32_t i = 0; i != m_nFPSSampleCount; ++i) {
        const double rate = m_pFPSSamples[i];
        if (!(rate > 0))
            continue;
        m_dFPSMinimum = std::min(m_dFPSMinimum, rate);
        m_dFPSMaximum = std::max(m_dFPSMaximum, rate);
        sum += rate;
        ++number;
    }
    m_dFPSAverage = number != 0 ? sum / number : 0;
    m_bStarted = false;
}

void CQMFPSCounter::Hold(bool bHold) { m_bHold = bHold; }

void CQMFPSCounter::Reset()
{
    CalibrateTolerance();
    std::fill_n(m_pFPSSamples.get(), m_nFPSSampleCount, 0.0);
    if (m_pTickSamples)
        m_pTickSamples->Zero();
    Clear();
    m_nTickAccumulator = 0; // which Initialize keeps
}

void CQMFPSCounter::SetFPSAverageSampleCount(unsigned long n)
{
    const auto count = static_cast<std::uint32_t>(std::max(n, 1UL));
    if (count < n)
        throw std::bad_array_new_length();
    m_pFPSSamples.reset(new double[count]());
    m_nFPSSampleCount = count;
    m_nFPSSampleIndex = 0;
    m_pTickSamples.reset();
}

void CQMFPSCounter::Initialize()
{
    std::shared_ptr<double[]> rates(new double[m_nFPSSampleCount]());
    m_pTickSamples = std::make_shared<TickRing>(m_nTickSampleCount);
    m_pFPSSamples = std::move(rates);
    CalibrateTolerance();
    Clear();
}

void CQMFPSCounter::CalibrateTolerance()
{
    m_bStarted = true;
    m_bHold = false;
    m_nTickTolerance = 0;
    m_nTickStart = cpu::GetTick();
    End();
    m_nTickTolerance = m_nTickEnd - m_nTickStart;
    for (int i = 0; i != 1000; ++i) {
        Start();
        End();
        m_nTickTolerance = std::min(m_nTickTolerance, m_nTickEnd - m_nTickStart);
    }
}

void CQMFPSCounter::Clear()
{
    m_dFPS = 0;
    m_dFPSMinimum = 2147483647.0;
    m_dFPSMaximum = -1.0;
    m_nFrameCount = 0;
    m_nFPSSampleIndex = 0;
    m_nTotalFrame = 0;
    m_dFPSAverage = 0;
    m_nTickStart = 0;
    m_nTickEnd = 0;
    m_nTickElapsed = 0;
    m_dTickAverage = 0;
    m_nTickSampleIndex = 0;
    m_nTickMaximum = 0;
    m_bStarted = false;
    m_bHold = false;
    m_nTickMinimum = INT64_MAX;
}

double CQMFPSCounter::GetFPS() const { return m_dFPS; }
double CQMFPSCounter::GetFPSAverage() const { return m_dFPSAverage; }
double CQMFPSCounter::GetFPSMaximum() const { return m_dFPSMaximum; }
double CQMFPSCounter::GetFPSMinimum() const { return m_dFPSMinimum; }
double CQMFPSCounter::GetFPSSample(unsigned long i) const { return m_pFPSSamples.get()[i]; }
unsigned long CQMFPSCounter::GetFPSSampleCount() const { return m_nFPSSampleCount; }
unsigned long CQMFPSCounter::GetFPSSampleIndex() const { return m_nFPSSampleIndex; }
eQMFPSType CQMFPSCounter::GetFPSType() const { return m_eFPSType; }
std::uint64_t CQMFPSCounter::GetTickAccumulator() const { return m_nTickAccumulator; }
double CQMFPSCounter::GetTickAverage() const { return m_dTickAverage; }
std::uint64_t CQMFPSCounter::GetTickElapsed() const { return m_nTickElapsed; }
std::uint64_t CQMFPSCounter::GetTickEnd() const { return m_nTickEnd; }
std::uint64_t CQMFPSCounter::GetTickMaximum() const { return m_nTickMaximum; }
std::uint64_t CQMFPSCounter::GetTickMinimum() const { return m_nTickMinimum; }
std::uint64_t CQMFPSCounter::GetTickPeriod() const { return m_nTickPeriod; }
unsigned long CQMFPSCounter::GetTickSampleCount() const { return m_nTickSampleCount; }
unsigned long CQMFPSCounter::GetTickSampleIndex() const { return m_nTickSampleIndex; }
std::uint64_t CQMFPSCounter::GetTickStart() const { return m_nTickStart; }
std::uint64_t CQMFPSCounter::GetTickTolerance() const { return m_nTickTolerance; }
unsigned long CQMFPSCounter::GetTotalFrame() const { return m_nTotalFrame; }
