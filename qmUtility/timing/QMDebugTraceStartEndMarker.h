// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/Export.h"
#include "qmUtility/framework/CString.h"

#include <cstdint>

class CQMTimer;

/// Writes a line when it is constructed and another, optionally with the time taken, when it is destroyed.
///
///     {
///         CQMDebugTraceStartEndMarker trace(L"Loading", true, true, false);  // "Loading - Start"
///         Load();
///     }                                                                      // "Loading - End : 0.27 sec"
///
/// | to                 | first line           | second line                                    |
/// |--------------------|----------------------|------------------------------------------------|
/// | the console log    | "name - Start\n"     | "name - End\n", "name - End : time\n"          |
/// | the debugger       | ">>> name - Start"   | ">>> name - End", ">>> name - End : time"      |
///
/// The time is wall-clock time, "1.23 sec", or processor time of the whole process, "1.23 sec (CPU)".
///
/// Names must not contain percent signs: the console log gets the second line as a format without arguments,
/// in which they start directives. The first line prints them verbatim.
///
/// **Ownership.** The stopwatch that measures wall-clock time is never deleted, and copies share it.
///
/// **Threads.** A marker belongs to the thread that creates it.
///
/// **Failure.** Process times that are unavailable count as 0 seconds. Composing a line may throw
/// std::bad_alloc, which in the destructor terminates the program.
class QMUTILITY_API CQMDebugTraceStartEndMarker {
public:
    /// Writes the first line, then starts to measure.
    /// @param name copied.
    /// @param bUseTimer whether the second line carries the time.
    /// @param bUseLogConsole true for the console log, false for the debugger.
    /// @param bCPU true for processor time, false for wall-clock time.
    CQMDebugTraceStartEndMarker(const CString& name, bool bUseTimer, bool bUseLogConsole, bool bCPU);

    /// Copies member by member: both markers will write a second line, from the same measurement.
    CQMDebugTraceStartEndMarker(const CQMDebugTraceStartEndMarker& other);
    /// Copies member by member; the second line of the previous measurement is never written.
    CQMDebugTraceStartEndMarker& operator=(const CQMDebugTraceStartEndMarker& other);

    /// Ends the measurement and writes the second line.
    ~CQMDebugTraceStartEndMarker();

    /// Chooses where the second line goes.
    void SetUseLogConsole(bool bUseLogConsole);

    /// Chooses whether the second line carries the time. Does not start to measure: a marker constructed
    /// without the timer reports 0, or all the processor time of the process so far.
    void SetUseTimer(bool bUseTimer);

private:
    CString m_strName;
    bool m_bUseLogConsole;
    bool m_bUseTimer;
    CQMTimer* m_pTimer;  ///< null unless constructed to measure wall-clock time
    bool m_bCPU;
    std::uint64_t m_nKernelStart = 0;  ///< in 100-nanosecond units
    std::uint64_t m_nUserStart = 0;    ///< in 100-nanosecond units
};
