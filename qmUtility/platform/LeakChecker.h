// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Intentional leaks.

namespace platform {

/// Excludes an allocation that is never released on purpose from the reports of the leak checker, if there is
/// one.
void IgnoreLeak(const void* allocation);

} // namespace platform
