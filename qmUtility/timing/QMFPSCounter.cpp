// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMFPSCounter.h"

#include "qmUtility/host/qmSystemInfo.h"

#include <algorithm>
#include <new>
#include <span>
#include <utility>
#include <vector>

/// The duration ring, and the sum and number of its nonzero entries, to which copies of a counter add too.
struct QMUTILITY_PRIVATE CQMFPSCounter::TickRing {
    explicit TickRing(std::uint32_t length) : Entries(length) {}

    /// @param entry nonzero.
    void Store(std::size_t index, std::uint64_t entry) {
        std::uint64_t& place = Entries[index];
        Sum += entry - place;
        Number += place == 0 ? 1 : 0;
        place = entry;
        ++Writes;
    }

    void Zero() {
        Sum = 0;
        Number = 0;
        std::fill(Entries.begin(), Entries.end(), 0);
    }

    std::vector<std::uint64_t> Entries;
    std::uint64_t Sum = 0;
    std::uint64_t Number = 0;
    std::uint64_t Writes = 0;  ///< number of calls of `Store`; `Zero` keeps it, so that no count occurs twice
};

CQMFPSCounter::CQMFPSCounter() : CQMFPSCounter(eQMFPSType_Instant) {}

CQMFPSCounter::CQMFPSCounter(eQMFPSType type) : m_eFPSType(type), m_nTickPeriod(cpu::GetClockSpeed()) {
    Initialize();
}

CQMFPSCounter::CQMFPSCounter(const CQMFPSCounter&) = default;
CQMFPSCounter& CQMFPSCounter::operator=(const CQMFPSCounter&) = default;
CQMFPSCounter::~CQMFPSCounter() = default;

void CQMFPSCounter::Start() {
    if (m_state.IsOnHold || m_state.IsStarted) return;
    m_state.IsStarted = true;
    m_state.TickStart = cpu::GetTick();
}

void CQMFPSCounter::End() {
    if (m_state.IsOnHold || !m_state.IsStarted) return;
    m_state.TickEnd = cpu::GetTick();
    ++m_state.TotalFrame;
    m_state.TickElapsed = std::max<std::uint64_t>(m_state.TickEnd - m_nTickTolerance - m_state.TickStart, 1);

    if (m_pTickSamples) {
        TickRing& ring = *m_pTickSamples;
        if (m_state.TickSampleIndex >= m_nTickSampleCount) m_state.TickSampleIndex = 0;
        // All other entries count already, unless the calibration or a copy stored some since the last frame.
        const bool isOnlyNew = m_state.TickWrites == ring.Writes;
        ring.Store(m_state.TickSampleIndex++, m_state.TickElapsed);
        m_state.TickWrites = ring.Writes;
        for (const std::uint64_t entry :
             isOnlyNew ? std::span(&m_state.TickElapsed, 1) : std::span(ring.Entries)) {
            if (entry == 0) continue;
            m_state.TickMinimum = std::min(m_state.TickMinimum, entry);
            m_state.TickMaximum = std::max(m_state.TickMaximum, entry);
        }
        // Signed: the duration of a frame shorter than the tolerance has wrapped, and is then the small
        // negative number that keeps the average right.
        const auto sum = static_cast<std::int64_t>(ring.Sum);
        m_state.TickAverage = static_cast<double>(sum) / static_cast<double>(ring.Number);
    }

    if (m_eFPSType == eQMFPSType_Instant)
        m_state.FPS = static_cast<double>(m_nTickPeriod) / static_cast<double>(m_state.TickElapsed);
    else {
        m_nTickAccumulator += m_state.TickElapsed;
        ++m_state.FrameCount;
        if (m_nTickAccumulator < m_nTickPeriod)
            return;  // still started, on purpose: all frames of a period measure from its first Start
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
    double minimum = m_state.FPSMinimum;
    double maximum = m_state.FPSMaximum;
    double sum = 0;
    std::uint32_t number = 0;
    for (const double rate : std::span(m_pFPSSamples.get(), m_nFPSSampleCount)) {
        if (!(rate > 0)) continue;
        minimum = std::min(minimum, rate);
        maximum = std::max(maximum, rate);
        sum += rate;
        ++number;
    }
    m_state.FPSMinimum = minimum;
    m_state.FPSMaximum = maximum;
    m_state.FPSAverage = number != 0 ? sum / number : 0;
    m_state.IsStarted = false;
}

void CQMFPSCounter::Hold(bool bHold) { m_state.IsOnHold = bHold; }

void CQMFPSCounter::Reset() {
    CalibrateTolerance();
    std::fill_n(m_pFPSSamples.get(), m_nFPSSampleCount, 0.0);
    if (m_pTickSamples) m_pTickSamples->Zero();
    m_state = {};
    m_nTickAccumulator = 0;
}

void CQMFPSCounter::SetFPSAverageSampleCount(unsigned long n) {
    const auto count = static_cast<std::uint32_t>(std::max(n, 1UL));
    if (count < n) throw std::bad_array_new_length();
    m_pFPSSamples = std::make_shared<double[]>(count);
    m_nFPSSampleCount = count;
    m_state.FPSSampleIndex = 0;
    m_pTickSamples.reset();
}

void CQMFPSCounter::Initialize() {
    auto rates = std::make_shared<double[]>(m_nFPSSampleCount);  // replaces nothing until both are allocated
    m_pTickSamples = std::make_shared<TickRing>(m_nTickSampleCount);
    m_pFPSSamples = std::move(rates);
    CalibrateTolerance();
    m_state = {};
}

void CQMFPSCounter::CalibrateTolerance() {
    m_state.IsStarted = m_state.IsOnHold = false;
    m_nTickTolerance = 0;
    for (int i = 0; i != 1001; ++i) {
        Start();
        End();
        const std::uint64_t cost = m_state.TickEnd - m_state.TickStart;
        m_nTickTolerance = i == 0 ? cost : std::min(m_nTickTolerance, cost);
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
