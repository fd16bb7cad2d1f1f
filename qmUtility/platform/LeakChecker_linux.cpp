// SPDX-License-Identifier: MIT
#include "qmUtility/platform/LeakChecker.h"

// Defined only in a process that runs with the leak checker.
extern "C" __attribute__((weak)) void __lsan_ignore_object(const void* allocation);

void platform::IgnoreLeak(const void* allocation)
{
    if (__lsan_ignore_object != nullptr)
        __lsan_ignore_object(allocation);
}
