#pragma once

/// @file
/// The frame rate of a render or update loop.

#include "qmUtility/Export.h"

#include <cstdint>
#include <memory>

/// How `CQMFPSCounter::End` turns durations into frames per second. Every value other than 2 means the first.
enum eQMFPSType : int
{
    /// Frames are counted until their durations add up to a second; the rate is frames per second of that
    /// sum.
    eQMFPSType_Average = 1,
    /// Every frame gives a rate of its own: one second divided by its duration.
    eQMFPSType_Instant = 2,
};

/// Counts frames per second on the host's processor tick counter. The loop calls `Start` at the beginning of
/// a frame and `End` at its end. Durations are in ticks; `GetTickPeriod` is the ticks of one second. The last
/// durations (10000) and the last rates (16, see `SetFPSAverageSampleCount`) are kept in two rings.
///
/// **The counter's own cost** is measured at construction and by `Reset`, with 1001 empty frames, and is
/// taken off every duration (`GetTickTolerance`). A frame shorter than that wraps around to a huge duration;
/// 0 counts as 1.
///
/// **The average kind** leaves a frame started until its period is full, so that all frames of a period
/// measure from the period's first `Start`, and it is those growing durations that are added up. This is
/// deliberate.
///
/// **Statistics.** Minimum and maximum of the durations take in every entry that stands in the ring when a
/// frame ends, and keep what they have seen until `Reset`; the empty frames of the construction stand in the
/// ring, and count, until 10000 real ones have taken their places. Minimum and maximum of the rates start
/// anew when their ring wraps, with 2^63 and -2^63, and at construction and `Reset` with 2147483647 and -1.
/// Averages are those of the entries in the rings.
///
/// **Copies** share both rings with their source and write into them at places of their own; the last owner
/// releases them.
///
/// **Failure.** Nothing is reported but running out of memory, as std::bad_alloc, which leaves a counter as
/// it was.
///
/// **Threads.** A counter and its copies belong to one thread.
class QMUTILITY_API CQMFPSCounter
{
public:
    /// A counter of the instant kind.
    CQMFPSCounter();

    /// Reads the host's ticks per second and measures the counter's own cost.
    /// @param type the kind, which never changes.
    explicit CQMFPSCounter(eQMFPSType type);

    /// Copies all figures and shares the rings.
    CQMFPSCounter(const CQMFPSCounter& other);

    /// Copies all figures and shares the rings; its own are released unless a copy has them.
    CQMFPSCounter& operator=(const CQMFPSCounter& other);

    virtual ~CQMFPSCounter();

    /// Begins a frame, unless one is begun or the counter is on hold.
    void Start();

    /// Ends a frame and brings all figures up to date. Does nothing when none is begun or the counter is on
    /// hold. Allocates nothing; its cost does not grow with the duration ring, but does with the rate ring.
    void End();

    /// Suspends `Start` and `End`, or lets them go on.
    /// @param bHold true to suspend.
    void Hold(bool bHold);

    /// Measures the counter's own cost anew, clears all statistics and empties both rings, also for the
    /// copies that share them. The counter is then neither started nor on hold.
    void Reset();

    /// Replaces the rate ring with an empty one and drops the duration ring. From then on the statistics of
    /// durations (`GetTickMinimum`, `GetTickMaximum`, `GetTickAverage`, `GetTickSampleIndex`) are those of
    /// the frames before, until `Reset` clears them; the duration ring does not come back. All other figures,
    /// minimum and maximum of the rates included, go on from where they are.
    /// @param n the new length; 0 counts as 1.
    /// @throws std::bad_alloc when there is no memory for as many, or they are more than 32 bits can count;
    ///   the counter is then as it was.
    void SetFPSAverageSampleCount(unsigned long n);

    double GetFPS() const;        ///< the last rate, in frames per second
    double GetFPSAverage() const; ///< mean of the positive rates in the ring; 0 when there is none
    double GetFPSMaximum() const; ///< largest positive rate, as the class comment says
    double GetFPSMinimum() const; ///< smallest positive rate, as the class comment says
    double GetFPSSample(unsigned long i) const; ///< an entry of the rate ring; `i` is not checked
    unsigned long GetFPSSampleCount() const;    ///< length of the rate ring
    unsigned long GetFPSSampleIndex() const;    ///< where the next rate goes; the length stands for 0
    eQMFPSType GetFPSType() const;              ///< the kind, as it was given

    std::uint64_t GetTickAccumulator() const; ///< sum of the durations in the current period (average kind)
    double GetTickAverage() const;            ///< mean of the durations in the ring, in ticks
    std::uint64_t GetTickElapsed() const;     ///< duration of the last frame, in ticks
    std::uint64_t GetTickEnd() const;         ///< the tick at which the last frame ended
    std::uint64_t GetTickMaximum() const;     ///< longest duration, in ticks
    std::uint64_t GetTickMinimum() const;     ///< shortest duration, in ticks
    std::uint64_t GetTickPeriod() const;      ///< ticks per second
    unsigned long GetTickSampleCount() const; ///< length of the duration ring, also when it is dropped
    unsigned long GetTickSampleIndex() const; ///< where the next duration goes; the length stands for 0
    std::uint64_t GetTickStart() const;       ///< the tick at the last `Start` that took effect
    std::uint64_t GetTickTolerance() const;   ///< ticks that the counter itself takes, per frame

    unsigned long GetTotalFrame() const; ///< frames ended since construction or `Reset`

protected:
    /// Replaces both rings with new ones, measures the counter's own cost and clears the statistics. The
    /// empty frames of the measurement stay in the rings, and the accumulator as they left it.
    void Initialize();

    /// Measures the counter's own cost, with empty frames that are counted like real ones.
    void CalibrateTolerance();

private:
    struct TickRing;

    QMUTILITY_PRIVATE void Clear();

    double m_dFPS = 0;
    double m_dFPSMinimum = 2147483647.0;
    double m_dFPSMaximum = -1.0;
    double m_dFPSAverage = 0;
    std::uint32_t m_nFrameCount = 0;
    std::uint32_t m_nFPSSampleIndex = 0;
    std::uint32_t m_nFPSSampleCount = 16;
    std::shared_ptr<double[]> m_pFPSSamples;
    eQMFPSType m_eFPSType;
    std::uint32_t m_nTotalFrame = 0;
    bool m_bStarted = false;
    bool m_bHold = false;
    std::uint64_t m_nTickPeriod = 1000;
    std::uint64_t m_nTickStart = 0;
    std::uint64_t m_nTickEnd = 0;
    std::uint64_t m_nTickAccumulator = 0;
    std::uint64_t m_nTickElapsed = 0;
    std::uint64_t m_nTickTolerance = INT64_MAX;
    std::shared_ptr<TickRing> m_pTickSamples; ///< null once dropped
    std::uint64_t m_nTickMaximum = 0;
    std::uint64_t m_nTickMinimum = INT64_MAX;
    std::uint32_t m_nTickSampleIndex = 0;
    std::uint32_t m_nTickSampleCount = 10000;
    double m_dTickAverage = 0;
};
