#pragma once

/// @file
/// A stopwatch that reports to the host's console log or to the debugger.

#include "qmUtility/Export.h"

#include <cstdint>

/// Measures wall-clock time on the performance counter, from the moment of its construction on, and takes the
/// cost of one counter read off every interval.
///
/// The stopwatch is **running** while its end mark stands at the start mark plus that cost, exactly, and
/// stopped otherwise; there is no other state. The elapsed time is therefore 0, up to rounding, until
/// something moves the end mark.
///
/// **Reports** take two flags: `bStop` ends the interval first, `bRestart` begins a new one afterwards.
///
/// **Priority.** A raise (`Start`) is undone by handing back what the raise itself returned, 1 for success
/// and 0 for failure, and not the priority from before: after a raised measurement the thread is at level 1
/// (above normal), after a refused raise at level 0 (normal). Hosts count on that.
///
/// **Threads.** An instance belongs to one thread at a time. Priorities are those of the thread that calls
/// `Start`, `Stop` or the destructor, whichever thread raised its own.
///
/// **Failure.** Nothing is reported; the system's services are used as far as they work. Composing a report
/// may throw std::bad_alloc.
class QMUTILITY_API CQMTimer
{
public:
    /// Measures the cost of a counter read, giving up the rest of the time slice first, and starts running.
    CQMTimer();

    /// @param title written to the console log, between two line breaks, before the interval begins; null
    ///   writes nothing. It is handed to the log as the narrow string it is, under the format "\n%s\n".
    explicit CQMTimer(const char* title);

    /// Copies as assignment does.
    CQMTimer(const CQMTimer&) = default;

    /// Copies the marks, the calibration, and the priority that is to be handed back: both stopwatches then
    /// do so.
    CQMTimer& operator=(const CQMTimer& other);

    /// Hands back the priority, if that is still to be done.
    ~CQMTimer();

    /// Begins a new interval.
    /// @param bSleepFirst gives up the rest of the time slice first, so that the interval begins with a new
    /// one.
    /// @param bRaisePriority raises the thread to the highest priority (time-critical), unless a raise is
    ///   already to be undone.
    void Start(bool bSleepFirst, bool bRaisePriority);

    /// Ends the interval. A stopped interval is not extended.
    /// @param bRestorePriority hands back the priority, if that is to be done and the stopwatch was running.
    void Stop(bool bRestorePriority);

    /// Moves the end mark to now, also that of a stopped interval, which grows.
    void Pause();

    /// On a stopped stopwatch, moves the start mark back by the time since the last counter read of `Stop` or
    /// `Pause`. The stopwatch stays stopped, and its elapsed time reads from then on as the time from the
    /// start to this call, the pause included. On a running stopwatch does nothing.
    void Resume();

    /// @param bStop ends the interval first.
    /// @return the elapsed seconds.
    double GetLapsedTime(bool bStop);

    /// Reports to the console log: ">>> ", the message, " : ", the seconds with five decimals, " sec" and a
    /// line break.
    ///
    /// The message goes through formatting twice, with the seconds as the only argument the second time: a
    /// percent sign that is to be printed is written "%%%%" in the format, or "%%" in a string argument. The
    /// line is cut at 1023 characters, before that second time; the message alone at 1019.
    void LogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...);

    /// Reports to the debugger: ">>> ", the label, " : ", the seconds with five decimals, " sec" and a line
    /// break, cut at 1023 characters.
    /// @param bStop ends the interval first.
    /// @param bRestart begins a new one afterwards.
    /// @param label printed as it stands.
    void TraceLapsedTime(bool bStop, bool bRestart, const wchar_t* label);

    /// Reports nowhere: a report that is turned off, of which the two flags still count.
    void DogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...);

private:
    QMUTILITY_PRIVATE bool IsRunning() const;
    QMUTILITY_PRIVATE void RestartStep();
    QMUTILITY_PRIVATE void StopStep();
    QMUTILITY_PRIVATE double Elapsed() const;
    QMUTILITY_PRIVATE void RestorePriority();
    // NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): how the class marks its helpers
    QMUTILITY_PRIVATE void _Log(const wchar_t* text, double seconds) const;
    QMUTILITY_PRIVATE void _Trace(const wchar_t* text) const;
    // NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

    std::int64_t m_liStartRaw = 0;     ///< counter value of the last restart or `Resume`
    std::int64_t m_liStopRaw = 0;      ///< counter value of the last stop or `Pause`
    double m_dStart = 0;               ///< start mark, in counter ticks
    double m_dEnd = 0;                 ///< end mark, in counter ticks
    double m_dFrequency = 0;           ///< counter ticks per second
    double m_dOverhead = 0;            ///< cost of one counter read, in counter ticks
    std::int32_t m_nSavedPriority = 0; ///< to be handed back; 0x7FFFFFFF when there is nothing
};
