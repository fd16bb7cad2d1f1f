#pragma once

/// @file
/// A scope marker that traces the start and the end of a stretch of work.

#include "qmUtility/Export.h"
#include "qmUtility/framework/CString.h"

#include <cstdint>

class CQMTimer;

/// Writes a line when it is constructed and another when it is destroyed, the second with the time in between
/// if wanted:
///
/// | to                 | first line           | second line                                    |
/// |--------------------|----------------------|------------------------------------------------|
/// | the console log    | "name - Start\n"     | "name - End\n", "name - End : time\n"          |
/// | the debugger       | ">>> name - Start"   | ">>> name - End", ">>> name - End : time"      |
///
/// The time is the wall-clock time, "1.23 sec", or the processor time of the whole process, all its threads
/// included, "1.23 sec (CPU)".
///
/// In the console log a percent sign in the name is printed as it stands in the first line, but reads as a
/// directive in the second, which is handed to the log as a format without arguments: leave percent signs out
/// of names.
///
/// **Ownership.** The stopwatch of a marker that measures wall-clock time is never released, and copies share
/// it.
///
/// **Threads.** A marker belongs to the thread that creates it.
///
/// **Failure.** Nothing is reported; process times that cannot be had count as 0 seconds. Composing a line
/// may run out of memory, which in the destructor ends the program.
class QMUTILITY_API CQMDebugTraceStartEndMarker
{
public:
    /// Writes the first line and then begins to measure.
    /// @param name copied.
    /// @param bUseTimer whether the second line carries the time.
    /// @param bUseLogConsole true for the console log, false for the debugger.
    /// @param bCPU true for processor time, false for wall-clock time.
    CQMDebugTraceStartEndMarker(const CString& name, bool bUseTimer, bool bUseLogConsole, bool bCPU);

    /// Copies member by member: both markers will write a second line, on the same measurement.
    CQMDebugTraceStartEndMarker(const CQMDebugTraceStartEndMarker& other);
    /// Copies member by member; the line of the former measurement is never written.
    CQMDebugTraceStartEndMarker& operator=(const CQMDebugTraceStartEndMarker& other);

    /// Ends the measurement and writes the second line.
    ~CQMDebugTraceStartEndMarker();

    /// Chooses where the second line goes.
    void SetUseLogConsole(bool bUseLogConsole);

    /// Chooses whether the second line carries the time. It does not begin to measure: turned on for a marker
    /// that was made without, it gives a wall-clock time of 0, or all the processor time of the process so
    /// far.
    void SetUseTimer(bool bUseTimer);

private:
    CString m_strName;
    bool m_bUseLogConsole;
    bool m_bUseTimer;
    CQMTimer* m_pTimer; ///< null unless the marker was made to measure wall-clock time; never released
    bool m_bCPU;
    std::uint64_t m_nKernelStart = 0; ///< in 100-nanosecond units
    std::uint64_t m_nUserStart = 0;   ///< in 100-nanosecond units
};
