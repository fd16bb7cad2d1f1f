// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The Windows kernel services and C runtime functions in use. On Windows this header includes the system's
/// headers; elsewhere it declares the subset used here with the same names, widths and meaning, and states
/// each difference. No kernel service changes `errno`, and there is no last-error code. Any thread may call.
///
/// Include it in source files only, because the Windows header defines many macros.

// The framework (see CString.h) has to include the system's header itself.
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
#include <cstdio>

using BOOL = int;             ///< 0 for false and failure
using DWORD = std::uint32_t;  ///< 32-bit unsigned integer
using HANDLE = void*;         ///< reference to a system object
using HINSTANCE = void*;      ///< base address of a loaded library or program

/// 64-bit signed integer.
struct LARGE_INTEGER {
    long long QuadPart;  ///< value
};

/// 64-bit number of 100-nanosecond units.
struct FILETIME {
    DWORD dwLowDateTime;   ///< lower 32 bits
    DWORD dwHighDateTime;  ///< upper 32 bits
};

/// Reads the performance counter: the monotonic clock in nanoseconds since the machine started, which stands
/// still while the machine is suspended. Its rate is usually 100 times that of Windows: a `double` holds it
/// exactly for 104 days (2^53 ns), and to 2 ns for as long again.
/// @return nonzero: it always succeeds.
BOOL QueryPerformanceCounter(LARGE_INTEGER* count);

/// Gets the frequency of the performance counter.
/// @return nonzero: it always succeeds.
BOOL QueryPerformanceFrequency(LARGE_INTEGER* ticksPerSecond);

/// Gives up the rest of the calling thread's time slice, also to threads of lower priority.
/// @param milliseconds 0; longer sleeps are not supported and behave the same.
void Sleep(DWORD milliseconds);

/// @return a pseudo handle of the calling thread, the same constant in every thread; not to be closed.
HANDLE GetCurrentThread();

constexpr int THREAD_PRIORITY_NORMAL = 0;          ///< nice value 0
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;    ///< nice value -5
constexpr int THREAD_PRIORITY_TIME_CRITICAL = 15;  ///< nice value -20, the highest priority

/// Sets the priority of the calling thread through its nice value. That is a weight rather than a rank, and
/// not relative to the process: even a time-critical thread does not keep a processor from all others.
///
/// A raise sets `SCHED_RESET_ON_FORK`: new threads and processes begin at the normal priority, without any
/// real-time policy. Where a sandbox refuses the flag, they inherit the raised priority.
/// @param thread the result of `GetCurrentThread`; other threads are not supported.
/// @param level one of the three constants above.
/// @return nonzero on success; 0, with nothing changed, for another level or handle, and when the system
///   refuses. A raise, or a return from a positive nice value, needs the capability `CAP_SYS_NICE` or a
///   sufficient limit `RLIMIT_NICE`; Windows needs no privilege.
BOOL SetThreadPriority(HANDLE thread, int level);

/// @return a constant pseudo handle of this process; not to be closed.
HANDLE GetCurrentProcess();

/// Gets the processor time that all threads of this process have used, in 100-nanosecond units with a
/// resolution of one microsecond. In the child of a fork the times begin at 0.
/// @param process the result of `GetCurrentProcess`; other processes are not supported.
/// @param creation,exit set to zero: neither is known here.
/// @param kernel time spent in the kernel.
/// @param user time spent in user mode.
/// @return nonzero on success; 0, with nothing stored, for another handle.
BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user);

/// Writes an entry to standard error, the substitute for a debugger, as `StandardStream.h` says. Adds a
/// newline when the text does not end in one. The write blocks while a pipe is full.
/// @param text null writes nothing.
/// @throws std::bad_alloc
void OutputDebugStringW(const wchar_t* text);

/// Opens a file for reading. It does not wait for the other end of a pipe.
/// @param path is converted as `CFile::GetStatus` converts it.
/// @param mode L"rb"; other modes are not supported and behave the same.
/// @return the file, which the caller closes; null for a directory and for a file that cannot be opened for
///   reading. `errno` is unspecified then.
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode);

constexpr DWORD DLL_PROCESS_DETACH = 0;  ///< the library is being unloaded
constexpr DWORD DLL_PROCESS_ATTACH = 1;  ///< the library is being loaded
#define WINAPI  ///< empty: there is one calling convention

/// A library's entry point, called before its static objects are constructed and after they are destroyed.
/// @param library the library's base address.
/// @param reason `DLL_PROCESS_ATTACH` or `DLL_PROCESS_DETACH`; threads are not reported.
/// @param reserved null.
/// @return ignored: a library cannot refuse to be loaded.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* reserved);

#endif
