// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The frame rate of a render or update loop.

#include "qmUtility/Export.h"

#include <cstdint>
#include <memory>

/// How `CQMFPSCounter::End` computes frames per second. Every value but 2 selects the average mode.
enum eQMFPSType : int {
    /// Frames are counted until the sum of their durations reaches a second, and then divided by that sum.
    eQMFPSType_Average = 1,
    /// Every frame has a rate of its own: one second divided by its duration.
    eQMFPSType_Instant = 2,
};

/// Counts frames per second on the host's processor tick counter.
///
///     CQMFPSCounter counter(eQMFPSType_Instant);
///     counter.Start();
///     Draw();           // a frame
///     counter.End();    // now GetFPS() returns its rate, GetFPSAverage() that of the last 16 frames
///
/// Durations are in ticks; `GetTickPeriod` returns the ticks per second. Two rings keep the last 10000
/// durations and the last 16 rates (see `SetFPSAverageSampleCount`).
///
/// **Tolerance.** Construction and `Reset` measure the counter's own cost with 1001 empty frames. It is
/// subtracted from every duration (`GetTickTolerance`); shorter ones wrap to huge numbers, and 0 counts as 1.
///
/// **Average mode** leaves a frame started until its period is full; docs/frame-rate.md explains its figures.
///
/// **Statistics** cover the whole ring, also the empty frames of construction until real ones replace them.
/// - Minimum and maximum of the durations are kept until `Reset`.
/// - Minimum and maximum of the rates start from 2147483647 and -1 at construction and `Reset`, and again
///   from 2^63 and -2^63 whenever their ring wraps.
///
/// **Copies** share both rings with their source but have write positions of their own; the last owner
/// deletes the rings.
///
/// **Failure.** Running out of memory throws std::bad_alloc and leaves an existing counter unchanged.
///
/// **Threads.** A counter and its copies belong to one thread.
class QMUTILITY_API CQMFPSCounter {
public:
    /// A counter in instant mode.
    CQMFPSCounter();

    /// Reads the host's ticks per second and measures the counter's own cost. Converts implicitly, because
    /// hosts rely on it.
    /// @param type the mode, which never changes.
    CQMFPSCounter(eQMFPSType type);

    /// Copies all figures and shares the rings.
    CQMFPSCounter(const CQMFPSCounter& other);
    /// Copies all figures and shares the rings; deletes its own unless a copy shares them.
    CQMFPSCounter& operator=(const CQMFPSCounter& other);

    virtual ~CQMFPSCounter();

    /// Starts a frame, unless one is started or the counter is on hold.
    void Start();

    /// Ends a frame and updates all figures. Does nothing when no frame is started or the counter is on hold.
    /// Allocates nothing. Scans the rate ring, and the duration ring, too, in the first frame after
    /// construction, `Reset` or a frame of a copy.
    void End();

    /// Suspends or resumes counting.
    /// @param bHold true makes `Start` and `End` do nothing.
    void Hold(bool bHold);

    /// Measures the counter's own cost again, clears all statistics and empties both rings, also for the
    /// copies that share them. The counter is then neither started nor on hold.
    void Reset();

    /// Replaces the rate ring with an empty one and drops the duration ring. The statistics of the durations
    /// and `GetTickSampleIndex` then keep their values until `Reset`; only `Initialize`, for derived classes,
    /// brings the ring back. All other figures, the minimum and maximum of the rates included, continue.
    /// @param n the new length; 0 counts as 1.
    /// @throws std::bad_alloc, with the counter unchanged, also when `n` exceeds 32 bits.
    void SetFPSAverageSampleCount(unsigned long n);

    double GetFPS() const;         ///< the last rate, in frames per second
    double GetFPSAverage() const;  ///< mean of the positive rates in the ring; 0 when there is none
    double GetFPSMaximum() const;  ///< largest positive rate, as the class comment says
    double GetFPSMinimum() const;  ///< smallest positive rate, as the class comment says
    double GetFPSSample(unsigned long i) const;  ///< an entry of the rate ring; `i` is not checked
    unsigned long GetFPSSampleCount() const;     ///< length of the rate ring
    unsigned long GetFPSSampleIndex() const;     ///< index of the next rate; the length means 0
    eQMFPSType GetFPSType() const;               ///< the mode, as given

    std::uint64_t GetTickAccumulator() const;  ///< sum of the durations in the current period (average mode)
    double GetTickAverage() const;             ///< mean of the durations in the ring, in ticks
    std::uint64_t GetTickElapsed() const;      ///< duration of the last frame, in ticks
    std::uint64_t GetTickEnd() const;          ///< the tick at which the last frame ended
    std::uint64_t GetTickMaximum() const;      ///< longest duration, in ticks
    std::uint64_t GetTickMinimum() const;      ///< shortest duration, in ticks
    std::uint64_t GetTickPeriod() const;       ///< ticks per second
    unsigned long GetTickSampleCount() const;  ///< length of the duration ring, even when dropped
    unsigned long GetTickSampleIndex() const;  ///< index of the next duration; the length means 0
    std::uint64_t GetTickStart() const;        ///< the tick at the last `Start` that took effect
    std::uint64_t GetTickTolerance() const;    ///< the counter's own cost, in ticks per frame

    unsigned long GetTotalFrame() const;  ///< frames ended since construction or `Reset`

protected:
    /// Replaces both rings with new ones, measures the counter's own cost and clears the statistics. The
    /// empty frames of the measurement stay in the rings and in the accumulator.
    void Initialize();

    /// Measures the counter's own cost with empty frames, which count like real ones.
    void CalibrateTolerance();

private:
    struct TickRing;

    /// What `Initialize` and `Reset` clear.
    struct State {
        double FPS = 0;
        double FPSMinimum = 2147483647.0;
        double FPSMaximum = -1.0;
        double FPSAverage = 0;
        std::uint32_t FrameCount = 0;  ///< frames in the current period (average mode)
        std::uint32_t FPSSampleIndex = 0;
        std::uint32_t TotalFrame = 0;
        bool IsStarted = false;
        bool IsOnHold = false;
        std::uint64_t TickStart = 0;
        std::uint64_t TickEnd = 0;
        std::uint64_t TickElapsed = 0;
        std::uint64_t TickMaximum = 0;
        std::uint64_t TickMinimum = INT64_MAX;
        std::uint32_t TickSampleIndex = 0;
        std::uint64_t TickWrites = 0;  ///< writes to the duration ring up to the last `End`
        double TickAverage = 0;
    };

    State m_state;
    eQMFPSType m_eFPSType;
    std::uint32_t m_nFPSSampleCount = 16;
    std::shared_ptr<double[]> m_pFPSSamples;
    std::uint32_t m_nTickSampleCount = 10000;
    std::shared_ptr<TickRing> m_pTickSamples;  ///< null once dropped
    std::uint64_t m_nTickPeriod;
    std::uint64_t m_nTickTolerance = 0;
    std::uint64_t m_nTickAccumulator = 0;  ///< `Initialize` keeps it
};
