#pragma once

/// @file
/// The host application's processor tick counter. The library calls it; the host brings it. What is built
/// here is a stand-alone default. A host replaces it by linking a library of its own in its place; on Linux
/// an executable that defines the functions takes precedence.

#include "platform/Export.h"

#include <cstdint>

#if defined(qmSystemInfo_EXPORTS) // defined by the build of the library itself
#define QMSYSTEMINFO_API QM_EXPORT
#else
#define QMSYSTEMINFO_API QM_IMPORT
#endif

/// The default counts with the processor's own time stamp counter where that is invariant (it then runs at
/// one rate whatever the processor's clock does, and agrees between the processors of a machine), and with
/// the monotonic clock in nanoseconds elsewhere. Any thread may call.
namespace cpu {

/// @return the counter's value. The processor may read it a few instructions early or late.
QMSYSTEMINFO_API std::uint64_t GetTick();

/// @return ticks per second, the same on every call. A processor that does not tell its rate is measured at
///   the first call, which then takes about 5 milliseconds.
QMSYSTEMINFO_API std::uint64_t GetClockSpeed();

} // namespace cpu
