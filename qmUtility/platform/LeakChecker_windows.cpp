// SPDX-License-Identifier: MIT
#include "qmUtility/platform/LeakChecker.h"

void platform::IgnoreLeak(const void* /*allocation*/) {}
