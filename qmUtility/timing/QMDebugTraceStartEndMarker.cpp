// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"

#include "qmUtility/host/qmCommonBase.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/LeakChecker.h"
#include "qmUtility/timing/QMTimer.h"

namespace {

std::uint64_t Units(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

/// Stores the host process's times, in 100-nanosecond units.
/// @return false, with nothing stored, when they are unavailable.
bool ReadProcessTimes(std::uint64_t& kernel, std::uint64_t& user) {
    FILETIME times[4];  // creation, exit, kernel, user
    if (!GetProcessTimes(CQMProcess::GetHandle(), &times[0], &times[1], &times[2], &times[3])) return false;
    kernel = Units(times[2]);
    user = Units(times[3]);
    return true;
}

}  // namespace

CQMDebugTraceStartEndMarker::CQMDebugTraceStartEndMarker(const CString& name, bool bUseTimer,
                                                         bool bUseLogConsole, bool bCPU)
    : m_strName(name),
      m_bUseLogConsole(bUseLogConsole),
      m_bUseTimer(bUseTimer),
      m_pTimer(bUseTimer && !bCPU ? new CQMTimer(nullptr) : nullptr),
      m_bCPU(bCPU) {
    platform::IgnoreLeak(m_pTimer);  // copies of a marker share it, so none of them may delete it
    if (m_bUseLogConsole)
        CQMConsoleAPI::Log(L"%s - Start\n", m_strName.GetString());
    else {
        CString line;
        line.Format(L">>> %s - Start", m_strName.GetString());
        OutputDebugStringW(line.GetString());
    }

    if (m_pTimer != nullptr)
        m_pTimer->Start(false, false);  // writing the line is not measured
    else if (m_bUseTimer)
        ReadProcessTimes(m_nKernelStart, m_nUserStart);
}

CQMDebugTraceStartEndMarker::CQMDebugTraceStartEndMarker(const CQMDebugTraceStartEndMarker&) = default;
CQMDebugTraceStartEndMarker& CQMDebugTraceStartEndMarker::operator=(const CQMDebugTraceStartEndMarker&) =
    default;

CQMDebugTraceStartEndMarker::~CQMDebugTraceStartEndMarker() {
    CString time;
    if (m_bUseTimer) {
        double seconds = 0;
        if (m_bCPU) {
            std::uint64_t kernel = 0;
            std::uint64_t user = 0;
            if (ReadProcessTimes(kernel, user)) {
                // Signed: in the child of a fork the process times start again at 0.
                const auto used = static_cast<std::int64_t>(kernel + user - m_nKernelStart - m_nUserStart);
                seconds = static_cast<double>(used) / 10'000'000;
            }
        } else if (m_pTimer != nullptr)
            seconds = m_pTimer->GetLapsedTime(true);

        time.Format(m_bCPU ? L" : %.2f sec (CPU)" : L" : %.2f sec", seconds);
    }
    CString line;
    line.Format(m_bUseLogConsole ? L"%s - End%s\n" : L">>> %s - End%s", m_strName.GetString(),
                time.GetString());
    if (m_bUseLogConsole)
        CQMConsoleAPI::Log(line.GetString());  // the line is the format, including its percent signs
    else
        OutputDebugStringW(line.GetString());
}

void CQMDebugTraceStartEndMarker::SetUseLogConsole(bool bUseLogConsole) { m_bUseLogConsole = bUseLogConsole; }

void CQMDebugTraceStartEndMarker::SetUseTimer(bool bUseTimer) { m_bUseTimer = bUseTimer; }
