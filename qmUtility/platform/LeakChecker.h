#pragma once

/// @file
/// Intentional leaks.

namespace platform {

/// Tells the leak checker, if this process runs with one, that an allocation is intentionally never released.
void IgnoreLeak(const void* allocation);

} // namespace platform
