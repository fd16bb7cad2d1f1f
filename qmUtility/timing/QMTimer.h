// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/Export.h"

#include <cstdint>

/// Measures wall-clock time on the performance counter, starting at construction.
///
///     CQMTimer stopwatch;
///     const int count = ReadRecords();
///     stopwatch.LogLapsedTime(true, false, L"%d records", count);  // ">>> 1200 records : 0.00312 sec"
///     const double seconds = stopwatch.GetLapsedTime(false);
///
/// The cost of one counter read is subtracted from every interval. The stopwatch is **running** while its end
/// mark equals the start mark plus that cost exactly, and stopped otherwise; there is no other state. The
/// elapsed time is therefore 0, up to rounding, until an operation moves the end mark.
///
/// **Short intervals.** A stop leaves the stopwatch running if the interval took exactly the calibrated cost:
/// with nothing between start and stop, 0.3 to 7 % of the stops, depending on the process (measured). A
/// shorter interval has a negative elapsed time.
///
/// **Flags.** `bStop` ends the interval first, `bRestart` begins a new one afterwards.
///
/// **Priority.** Restoring the priority after a raise (`Start`) does not return to the previous level: it
/// sets level 1 (above normal) if the raise succeeded, and 0 (normal) if it was refused. Hosts rely on that.
///
/// **Threads.** An instance belongs to one thread at a time. `Start`, `Stop` and the destructor change the
/// priority of the thread that calls them, whichever thread was raised.
///
/// **Failure.** Failures of the system's services are not reported. A report may throw std::bad_alloc.
class QMUTILITY_API CQMTimer {
public:
    /// Gives up the rest of the time slice, measures the cost of a counter read, and starts the stopwatch.
    CQMTimer();

    /// @param title written to the console log, between two newlines, before the interval begins; null writes
    ///   nothing. It is passed on as a narrow string, with the format "\n%s\n".
    explicit CQMTimer(const char* title);

    /// Copies the marks, the calibration and the saved priority, which both stopwatches then restore.
    CQMTimer(const CQMTimer&) = default;
    CQMTimer& operator=(const CQMTimer& other);  ///< copies the same

    /// Restores the priority, if one is saved.
    ~CQMTimer();

    /// Begins a new interval.
    /// @param bSleepFirst gives up the rest of the time slice, so that the interval begins with a new one.
    /// @param bRaisePriority raises the thread to the highest priority (time-critical), unless one is saved.
    void Start(bool bSleepFirst, bool bRaisePriority);

    /// Ends the interval. A stopped interval is not extended.
    /// @param bRestorePriority restores the priority, if one is saved and the stopwatch was running.
    void Stop(bool bRestorePriority);

    /// Moves the end mark to now, which extends a stopped interval.
    void Pause();

    /// Moves the start mark of a stopped stopwatch back by the time since the last stop or `Pause`. The
    /// stopwatch stays stopped; its elapsed time is then the time from the start to this call, the pause
    /// included. Does nothing on a running stopwatch.
    void Resume();

    /// @return the elapsed seconds.
    double GetLapsedTime(bool bStop);

    /// Reports to the console log: ">>> ", the message, " : ", the seconds with five decimals, " sec" and a
    /// newline. The directives are those of `CString::Format`.
    ///
    /// The message is formatted twice, the second time with the seconds as the only argument: to print a
    /// percent sign, write "%%%%" in the format or "%%" in a string argument. The first formatting truncates
    /// the message to 1019 and the line to 1023 characters.
    void LogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...);

    /// Reports the same line to the debugger, up to 1023 characters, with the label verbatim as the message.
    void TraceLapsedTime(bool bStop, bool bRestart, const wchar_t* label);

    /// Disabled report: the same arguments and flags as `LogLapsedTime`, no output.
    void DogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...);

private:
    enum : std::int32_t { NothingSaved = 0x7FFFFFFF };

    QMUTILITY_PRIVATE bool _IsRunning() const;
    QMUTILITY_PRIVATE void _RestartStep();
    QMUTILITY_PRIVATE void _StopStep();
    QMUTILITY_PRIVATE double _Elapsed() const;
    QMUTILITY_PRIVATE void _RestorePriority();
    QMUTILITY_PRIVATE void _Log(const wchar_t* text, double seconds) const;
    QMUTILITY_PRIVATE void _Trace(const wchar_t* text) const;

    std::int64_t m_liStartRaw = 0;                 ///< counter value of the last restart or `Resume`
    std::int64_t m_liStopRaw = 0;                  ///< counter value of the last stop or `Pause`
    double m_dStart = 0;                           ///< start mark, in counter ticks
    double m_dEnd = 0;                             ///< end mark, in counter ticks
    double m_dFrequency = 0;                       ///< counter ticks per second
    double m_dOverhead = 0;                        ///< cost of one counter read, in counter ticks
    std::int32_t m_nSavedPriority = NothingSaved;  ///< the level to restore
};
