#pragma once

/// @file
/// Marks what the library shows to its hosts: `QMUTILITY_API` on an exported class or function,
/// `QMUTILITY_PRIVATE` on a member of an exported class that stays inside the library.

#include "platform/Export.h"

/// @def QMUTILITY_API
/// Marks what the library shows.
#if defined(qmUtility_EXPORTS) // defined by the build of the library itself
#define QMUTILITY_API QM_EXPORT
#else
#define QMUTILITY_API QM_IMPORT
#endif
/// Hides a member of a class that is shown.
#define QMUTILITY_PRIVATE QM_PRIVATE
