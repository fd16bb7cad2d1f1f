#pragma once

/// @file
/// The host application's processor tick counter. The library calls it; a host brings its own, or
/// has the default (docs/host-modules.md).

#include "qmUtility/Export.h"

#include <cstdint>

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
