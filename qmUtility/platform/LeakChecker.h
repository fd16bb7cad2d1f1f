// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Intentional leaks.

#if !defined(_WIN32)
// Defined only in a process that runs with the leak checker.
extern "C" __attribute__((weak)) void __lsan_ignore_object(const void* allocation);
#endif

namespace platform {

/// Excludes an allocation that is never released on purpose from the reports of the leak checker.
inline void IgnoreLeak([[maybe_unused]] const void* allocation) {
#if !defined(_WIN32)
    if (__lsan_ignore_object != nullptr) __lsan_ignore_object(allocation);
#endif
}

}  // namespace platform
