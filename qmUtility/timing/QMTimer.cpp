// SPDX-License-Identifier: MIT
#include "qmUtility/timing/QMTimer.h"

#include "qmUtility/framework/CString.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/platform/Kernel.h"

#include <algorithm>
#include <cfloat>
#include <cstdarg>
#include <cstddef>
#include <string>

// A stopwatch runs while its end mark equals a sum, exactly. `FLT_EVAL_METHOD` is negative where it varies.
#if FLT_EVAL_METHOD < 0 || FLT_EVAL_METHOD == 2
#error "CQMTimer needs arithmetic in the precision of double: on 32-bit x86, -msse2 -mfpmath=sse"
#endif

namespace {

/// @return the first 1023 characters of a report: no more are written.
std::wstring Truncated(std::wstring text) {
    text.resize(std::min<std::size_t>(text.size(), 1023));
    return text;
}

std::int64_t ReadCounter() {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

}  // namespace

CQMTimer::CQMTimer() : CQMTimer(nullptr) {}

CQMTimer::CQMTimer(const char* title) {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    m_dFrequency = static_cast<double>(frequency.QuadPart);
    Sleep(0);
    _RestartStep();
    _StopStep();
    m_dOverhead = static_cast<double>(m_liStopRaw - m_liStartRaw);
    if (title != nullptr) CQMConsoleAPI::Log(L"\n%s\n", title);
    _RestartStep();
}

CQMTimer& CQMTimer::operator=(const CQMTimer& other) = default;

CQMTimer::~CQMTimer() { _RestorePriority(); }

void CQMTimer::Start(bool bSleepFirst, bool bRaisePriority) {
    // Saves the result, not the previous priority, on purpose: see the class comment.
    if (bRaisePriority && m_nSavedPriority == NothingSaved)
        m_nSavedPriority = SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    if (bSleepFirst) Sleep(0);
    _RestartStep();
}

void CQMTimer::Stop(bool bRestorePriority) {
    const bool wasRunning = _IsRunning();
    _StopStep();
    if (wasRunning && bRestorePriority) _RestorePriority();
}

void CQMTimer::Pause() {
    m_liStopRaw = ReadCounter();
    m_dEnd = static_cast<double>(m_liStopRaw);
}

void CQMTimer::Resume() {
    if (_IsRunning()) return;
    m_liStartRaw = ReadCounter();
    // Adds a negative number and leaves the end mark alone: the pause counts, the stopwatch stays stopped.
    m_dStart += static_cast<double>(m_liStopRaw - m_liStartRaw);
}

double CQMTimer::GetLapsedTime(bool bStop) {
    if (bStop) _StopStep();
    return _Elapsed();
}

void CQMTimer::LogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...) {
    if (bStop) _StopStep();
    std::va_list arguments;
    va_start(arguments, format);
    CString message;
    message.FormatV(format, arguments);
    va_end(arguments);
    _Log(Truncated(std::wstring(L">>> ") + message.GetString() + L" : %.5lf sec\n").c_str(), _Elapsed());
    if (bRestart) _RestartStep();
}

void CQMTimer::TraceLapsedTime(bool bStop, bool bRestart, const wchar_t* label) {
    if (bStop) _StopStep();
    CString line;
    line.Format(L">>> %s : %.5lf sec\n", label, _Elapsed());
    _Trace(Truncated(line.GetString()).c_str());
    if (bRestart) _RestartStep();
}

void CQMTimer::DogLapsedTime(bool bStop, bool bRestart, const wchar_t* /*format*/, ...) {
    if (bStop) _StopStep();
    if (bRestart) _RestartStep();
}

bool CQMTimer::_IsRunning() const { return m_dEnd == m_dStart + m_dOverhead; }

void CQMTimer::_RestartStep() {
    m_liStartRaw = ReadCounter();
    m_dStart = static_cast<double>(m_liStartRaw);
    m_dEnd = m_dStart + m_dOverhead;
}

void CQMTimer::_StopStep() {
    m_liStopRaw = ReadCounter();
    if (_IsRunning()) m_dEnd = static_cast<double>(m_liStopRaw);
}

double CQMTimer::_Elapsed() const { return (m_dEnd - m_dStart - m_dOverhead) / m_dFrequency; }

void CQMTimer::_RestorePriority() {
    if (m_nSavedPriority == NothingSaved) return;
    SetThreadPriority(GetCurrentThread(), m_nSavedPriority);
    m_nSavedPriority = NothingSaved;
}

void CQMTimer::_Log(const wchar_t* text, double seconds) const { CQMConsoleAPI::Log(text, seconds); }

void CQMTimer::_Trace(const wchar_t* text) const { OutputDebugStringW(text); }
