#pragma once

/// @file
/// The kernel services that the library is written against. On Windows they are the system's own;
/// elsewhere this header declares exactly those in use, with the same names, widths and meaning. Where
/// something differs, the declaration says so.
///
/// Include it from source files only: on Windows it brings the system's header, macros and all.

// With the framework (see CString.h), it is the framework that brings the system's header.
#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#elif defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else

#include <cstdint>

using BOOL = int;            ///< 0 for false and failure
using DWORD = std::uint32_t; ///< a number of 32 bits
using HANDLE = void*;        ///< what stands for an object of the system
using HINSTANCE = void*;     ///< where a library or the program was loaded

/// A number of 64 bits.
struct LARGE_INTEGER
{
    long long QuadPart; ///< the number
};

/// A number of 100-nanosecond units in two halves.
struct FILETIME
{
    DWORD dwLowDateTime;  ///< the lower half
    DWORD dwHighDateTime; ///< the upper half
};

/// Reads the performance counter: the monotonic clock in nanoseconds. It is not set with the time of day and
/// does not run while the machine is suspended.
/// @return nonzero: it always succeeds.
BOOL QueryPerformanceCounter(LARGE_INTEGER* count);

/// Tells how much the performance counter counts in a second.
/// @return nonzero: it always succeeds.
BOOL QueryPerformanceFrequency(LARGE_INTEGER* ticksPerSecond);

/// Suspends the calling thread; 0 only gives up the rest of its time slice.
void Sleep(DWORD milliseconds);

/// @return a constant that stands for the calling thread, whichever that is; nothing to be closed.
HANDLE GetCurrentThread();

constexpr int THREAD_PRIORITY_TIME_CRITICAL = 15; ///< the highest level

/// Sets the priority of the calling thread, as the thread's own nice value:
///
/// | level | -15 | -2 | -1 | 0 | 1  | 2   | 15  |
/// |-------|-----|----|----|---|----|-----|-----|
/// | nice  | 19  | 10 | 5  | 0 | -5 | -10 | -20 |
///
/// @param thread the result of `GetCurrentThread`; no other thread can be named.
/// @param level one of the table's.
/// @return nonzero on success; 0, and nothing is changed, for another level or handle and when the system
///   refuses, as it does when a thread without the privilege asks for a higher priority than it has.
BOOL SetThreadPriority(HANDLE thread, int level);

/// @return a constant that stands for this process; nothing to be closed.
HANDLE GetCurrentProcess();

/// The processor time that all threads of this process have used, in 100-nanosecond units (with the
/// microseconds' resolution of the system's own accounting).
/// @param process the result of `GetCurrentProcess`; no other process can be named.
/// @param creation,exit set to zero: neither is known here.
/// @param kernel time spent in the system on behalf of the process.
/// @param user time spent in the process itself.
/// @return nonzero on success; 0, and nothing is stored, for another handle.
BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user);

/// Writes an entry to standard error, which stands in for the debugger: as UTF-8 whatever the locale, with
/// one write, and with a line break added when the text does not end in one.
/// @param text null writes nothing.
void OutputDebugStringW(const wchar_t* text);

constexpr DWORD DLL_PROCESS_DETACH = 0; ///< the library is about to be unloaded
constexpr DWORD DLL_PROCESS_ATTACH = 1; ///< the library has been loaded
#define WINAPI ///< nothing: there is one calling convention

/// A library's own entry, which is called the first time before any other object of static storage is
/// constructed in the library, and the last time after all of them are destroyed.
/// @param library where it was loaded.
/// @param reason `DLL_PROCESS_ATTACH` or `DLL_PROCESS_DETACH`; threads are never announced.
/// @param reserved null.
/// @return does not keep a library from being loaded.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* reserved);

#endif
