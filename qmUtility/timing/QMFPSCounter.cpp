// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMFPSCounter.h"

#include "qmUtility/host/qmSystemInfo.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

/// The duration ring, with the results of a scan of its entries: the sum and the number of the nonzero ones, the
/// smallest and the largest of them. They belong to the ring because copies of a counter write into it too.
///
/// A new entry updates the sum and the number by what it replaces. For the extremes, the entries are the leaves of
/// a binary tree whose nodes hold the extremes below them; an update climbs only as far as it changes a node,
/// usually a few levels. A counter's ring takes 240 KB, 160 KB of them for the tree, which saves `End` from
/// reading 10,000 entries in every frame.
struct QMUTILITY_PRIVATE CQMFPSCounter::TickRing
{
    explicit TickRing(std::uint32_t length) : m_nodes(length), m_entries(length) {}

    std::uint64_t Sum = 0;
    std::uint64_t Number = 0;

    std::uint64_t Maximum() const { return Node(1).Largest; }
    /// Requires a nonzero entry.
    std::uint64_t Minimum() const { return 0 - Node(1).SmallestNegated; }

    void Store(std::size_t index, std::uint64_t entry)
    {
        std::uint64_t& place = m_entries[index];
        Sum += entry - place;
        Number += std::uint64_t{entry != 0} - std::uint64_t{place != 0};
        place = entry;
        for (std::size_t node = (m_entries.size() + index) / 2; node != 0; node /= 2) {
            const Extremes left = Node(2 * node);
            const Extremes right = Node(2 * node + 1);
            const Extremes now = {std::max(left.Largest, right.Largest),
                                  std::max(left.SmallestNegated, right.SmallestNegated)};
            if (now == m_nodes[node])
                return;
            m_nodes[node] = now;
        }
    }

    void Zero()
    {
        Sum = 0;
        Number = 0;
        std::fill(m_nodes.begin(), m_nodes.end(), Extremes{});
        std::fill(m_entries.begin(), m_entries.end(), 0);
    }

private:
    /// Negation modulo 2^64 makes the smallest nonzero number the largest, and keeps zero the smallest of all.
    struct Extremes
    {
        std::uint64_t Largest = 0;
        std::uint64_t SmallestNegated = 0;
        bool operator==(const Extremes&) const = default;
    };

    /// Returns a node of the tree: 1 is the root, 2n and 2n + 1 are the children of n, and the indices from the
    /// number of entries on denote the entries themselves.
    Extremes Node(std::size_t node) const
    {
        if (node < m_nodes.size())
            return m_nodes[node];
        const std::uint64_t entry = m_entries[node - m_nodes.size()];
        return {entry, 0 - entry};
    }

    std::vector<Extremes> m_nodes;
    std::vector<std::uint64_t> m_entries;
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
    if (m_state.IsOnHold || m_state.IsStarted)
        return;
    m_state.IsStarted = true;
    m_state.TickStart = cpu::GetTick();
}

void CQMFPSCounter::End()
{
    if (m_state.IsOnHold || !m_state.IsStarted)
        return;
    m_state.TickEnd = cpu::GetTick();
    ++m_state.TotalFrame;
    m_state.TickElapsed = std::max<std::uint64_t>(m_state.TickEnd - m_nTickTolerance - m_state.TickStart, 1);

    if (m_pTickSamples) {
        TickRing& ring = *m_pTickSamples;
        if (m_state.TickSampleIndex >= m_nTickSampleCount)
            m_state.TickSampleIndex = 0;
        ring.Store(m_state.TickSampleIndex++, m_state.TickElapsed); // nonzero, as Minimum requires
        m_state.TickMinimum = std::min(m_state.TickMinimum, ring.Minimum());
        m_state.TickMaximum = std::max(m_state.TickMaximum, ring.Maximum());
        // Signed: the duration of a frame shorter than the tolerance has wrapped, and is then the small negative
        // number that keeps the average right.
        const auto sum = static_cast<std::int64_t>(ring.Sum);
        m_state.TickAverage = static_cast<double>(sum) / static_cast<double>(ring.Number);
    }

    if (m_eFPSType == eQMFPSType_Instant)
        m_state.FPS = static_cast<double>(m_nTickPeriod) / static_cast<double>(m_state.TickElapsed);
    else {
        m_nTickAccumulator += m_state.TickElapsed;
        ++m_state.FrameCount;
        if (m_nTickAccumulator < m_nTickPeriod)
            return; // still started, on purpose: all frames of a period measure from its first Start
        m_state.FPS = static_cast<double>(m_state.FrameCount) /
                      (static_cast<double>(m_nTickAccumulator) / static_cast<double>(m_nTickPeriod));
        m_state.FrameCount = 0;
        m_nTickAccumulator = 0;
    }

    if (m_state.FPSSampleIndex >= m_nFPSSampleCount) {
        // Deliberately not the initial values.
        m_state.FPSSampleIndex = 0;
        m_state.FPSMinimum = 0x1p63;
        m_state.FPSMaximum = -0x1p63;
    }
    m_pFPSSamples[m_state.FPSSampleIndex++] = m_state.FPS;
    double sum = 0;
    std::uint32_t number = 0;
    for (std::uint32_t i = 0; i != m_nFPSSampleCount; ++i) {
        const double rate = m_pFPSSamples[i];
        if (!(rate > 0))
            continue;
        m_state.FPSMinimum = std::min(m_state.FPSMinimum, rate);
        m_state.FPSMaximum = std::max(m_state.FPSMaximum, rate);
        sum += rate;
        ++number;
    }
    m_state.FPSAverage = number != 0 ? sum / number : 0;
    m_state.IsStarted = false;
}

void CQMFPSCounter::Hold(bool bHold) { m_state.IsOnHold = bHold; }

void CQMFPSCounter::Reset()
{
    CalibrateTolerance();
    std::fill_n(m_pFPSSamples.get(), m_nFPSSampleCount, 0.0);
    if (m_pTickSamples)
        m_pTickSamples->Zero();
    m_state = {};
    m_nTickAccumulator = 0;
}

void CQMFPSCounter::SetFPSAverageSampleCount(unsigned long n)
{
    const auto count = static_cast<std::uint32_t>(std::max(n, 1UL));
    if (count < n)
        throw std::bad_array_new_length();
    m_pFPSSamples = std::make_shared<double[]>(count);
    m_nFPSSampleCount = count;
    m_state.FPSSampleIndex = 0;
    m_pTickSamples.reset();
}

void CQMFPSCounter::Initialize()
{
    auto rates = std::make_shared<double[]>(m_nFPSSampleCount); // replaces nothing until both are allocated
    m_pTickSamples = std::make_shared<TickRing>(m_nTickSampleCount);
    m_pFPSSamples = std::move(rates);
    CalibrateTolerance();
    m_state = {};
}

void CQMFPSCounter::CalibrateTolerance()
{
    m_state.IsStarted = true;
    m_state.IsOnHold = false;
    m_nTickTolerance = 0;
    m_state.TickStart = cpu::GetTick();
    End();
    m_nTickTolerance = m_state.TickEnd - m_state.TickStart;
    for (int i = 0; i != 1000; ++i) {
        Start();
        End();
        m_nTickTolerance = std::min(m_nTickTolerance, m_state.TickEnd - m_state.TickStart);
    }
}

double CQMFPSCounter::GetFPS() const { return m_state.FPS; }
double CQMFPSCounter::GetFPSAverage() const { return m_state.FPSAverage; }
double CQMFPSCounter::GetFPSMaximum() const { return m_state.FPSMaximum; }
double CQMFPSCounter::GetFPSMinimum() const { return m_state.FPSMinimum; }
double CQMFPSCounter::GetFPSSample(unsigned long i) const { return m_pFPSSamples.get()[i]; }
unsigned long CQMFPSCounter::GetFPSSampleCount() const { return m_nFPSSampleCount; }
unsigned long CQMFPSCounter::GetFPSSampleIndex() const { return m_state.FPSSampleIndex; }
eQMFPSType CQMFPSCounter::GetFPSType() const { return m_eFPSType; }
std::uint64_t CQMFPSCounter::GetTickAccumulator() const { return m_nTickAccumulator; }
double CQMFPSCounter::GetTickAverage() const { return m_state.TickAverage; }
std::uint64_t CQMFPSCounter::GetTickElapsed() const { return m_state.TickElapsed; }
std::uint64_t CQMFPSCounter::GetTickEnd() const { return m_state.TickEnd; }
std::uint64_t CQMFPSCounter::GetTickMaximum() const { return m_state.TickMaximum; }
std::uint64_t CQMFPSCounter::GetTickMinimum() const { return m_state.TickMinimum; }
std::uint64_t CQMFPSCounter::GetTickPeriod() const { return m_nTickPeriod; }
unsigned long CQMFPSCounter::GetTickSampleCount() const { return m_nTickSampleCount; }
unsigned long CQMFPSCounter::GetTickSampleIndex() const { return m_state.TickSampleIndex; }
std::uint64_t CQMFPSCounter::GetTickStart() const { return m_state.TickStart; }
std::uint64_t CQMFPSCounter::GetTickTolerance() const { return m_nTickTolerance; }
unsigned long CQMFPSCounter::GetTotalFrame() const { return m_state.TotalFrame; }
