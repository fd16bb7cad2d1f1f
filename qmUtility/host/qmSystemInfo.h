// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The host application's processor tick counter. A host can replace the default (docs/host-modules.md).

#include "qmUtility/Export.h"

#include <cstdint>

/// The default reads the processor's time stamp counter where it is invariant (of constant rate, the same on
/// all processors), and the monotonic clock in nanoseconds elsewhere. Any thread may call.
namespace cpu {

/// @return the counter's value; the processor may execute the read a few instructions early or late.
QMSYSTEMINFO_API std::uint64_t GetTick();

/// @return ticks per second, the same on every call. The first call measures the rate of a processor that
///   does not report it, which takes about 5 milliseconds.
QMSYSTEMINFO_API std::uint64_t GetClockSpeed();

}  // namespace cpu
