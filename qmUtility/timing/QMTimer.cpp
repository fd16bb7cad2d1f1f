#include "qmUtility/timing/QMTimer.h"

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/WidePrint.h"

#include <cstdarg>
#include <cstddef>
#include <limits>

namespace {

constexpr std::int32_t NothingSaved = std::numeric_limits<std::int32_t>::max();

/// Size of the buffers that reports are composed in, in characters, the terminating zero included.
constexpr std::size_t Capacity = 1024;

std::int64_t ReadCounter()
{
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

double ReadFrequency()
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(frequency.QuadPart);
}

} // namespace

CQMTimer::CQMTimer() : CQMTimer(nullptr) {}

CQMTimer::CQMTimer(const char* title) : m_dFrequency(ReadFrequency()), m_nSavedPriority(NothingSaved)
{
    Sleep(0);
    RestartStep();
    StopStep();
    m_dOverhead = static_cast<double>(m_liStopRaw - m_liStartRaw);
    if (title != nullptr)
        CQMConsoleAPI::Log(L"\n%s\n", title);
    RestartStep();
}

CQMTimer& CQMTimer::operator=(const CQMTimer& other) = default;

CQMTimer::~CQMTimer() { RestorePriority(); }

void CQMTimer::Start(bool bSleepFirst, bool bRaisePriority)
{
    // The result, not the priority from before, is what is handed back later; the class comment says so.
    if (bRaisePriority && m_nSavedPriority == NothingSaved)
        m_nSavedPriority = SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    if (bSleepFirst)
        Sleep(0);
    RestartStep();
}

void CQMTimer::Stop(bool bRestorePriority)
{
    const bool wasRunning = IsRunning();
    StopStep();
    if (wasRunning && bRestorePriority)
        RestorePriority();
}

void CQMTimer::Pause()
{
    m_liStopRaw = ReadCounter();
    m_dEnd = static_cast<double>(m_liStopRaw);
}

void CQMTimer::Resume()
{
    if (IsRunning())
        return;
    m_liStartRaw = ReadCounter();
    // Negative, and the end mark stays: the pause counts, and the stopwatch does not run on.
    m_dStart += static_cast<double>(m_liStopRaw - m_liStartRaw);
}

double CQMTimer::GetLapsedTime(bool bStop)
{
    if (bStop)
        StopStep();
    return Elapsed();
}

// NOLINTNEXTLINE(cert-dcl50-cpp): a printing function as the hosts know them
void CQMTimer::LogLapsedTime(bool bStop, bool bRestart, const wchar_t* format, ...)
{
    if (bStop)
        StopStep();
    constexpr std::size_t lead = 4;
    wchar_t text[Capacity] = L">>> ";
    std::va_list arguments;
    va_start(arguments, format);
    platform::VPrint(text + lead, Capacity - lead, format, arguments);
    va_end(arguments);
    platform::Append(text, Capacity, L" : %.5lf sec\n");
    _Log(text, Elapsed());
    if (bRestart)
        RestartStep();
}

void CQMTimer::TraceLapsedTime(bool bStop, bool bRestart, const wchar_t* label)
{
    if (bStop)
        StopStep();
    wchar_t text[Capacity];
    platform::Print(text, Capacity, L">>> %s : %.5lf sec\n", label, Elapsed());
    _Trace(text);
    if (bRestart)
        RestartStep();
}

// NOLINTNEXTLINE(cert-dcl50-cpp): called like LogLapsedTime
void CQMTimer::DogLapsedTime(bool bStop, bool bRestart, const wchar_t* /*format*/, ...)
{
    if (bStop)
        StopStep();
    if (bRestart)
        RestartStep();
}

bool CQMTimer::IsRunning() const { return m_dEnd == m_dStart + m_dOverhead; }

void CQMTimer::RestartStep()
{
    m_liStartRaw = ReadCounter();
    m_dStart = static_cast<double>(m_liStartRaw);
    m_dEnd = m_dStart + m_dOverhead;
}

void CQMTimer::StopStep()
{
    m_liStopRaw = ReadCounter();
    if (IsRunning())
        m_dEnd = static_cast<double>(m_liStopRaw);
}

double CQMTimer::Elapsed() const { return (m_dEnd - m_dStart - m_dOverhead) / m_dFrequency; }

void CQMTimer::RestorePriority()
{
    if (m_nSavedPriority == NothingSaved)
        return;
    SetThreadPriority(GetCurrentThread(), m_nSavedPriority);
    m_nSavedPriority = NothingSaved;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): a report is an instance's
void CQMTimer::_Log(const wchar_t* text, double seconds) const { CQMConsoleAPI::Log(text, seconds); }

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): a report is an instance's
void CQMTimer::_Trace(const wchar_t* text) const { OutputDebugStringW(text); }
