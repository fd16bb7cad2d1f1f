#pragma once

/// @file
/// What is left allocated on purpose, for programs that are checked for leaks.

#include "platform/Export.h"

namespace platform {

/// Tells the leak checker, if one runs in this process, that an allocation is never released on purpose.
QMPLATFORM_API void KeepForEver(const void* allocation);

} // namespace platform
