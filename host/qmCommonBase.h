#pragma once

/// @file
/// The host application's process. The library calls it; a host brings its own, or
/// has the default (docs/host-modules.md).

#include "platform/Export.h"

/// @def QMCOMMONBASE_API
/// Marks what the module shows.
#if defined(qmCommonBase_EXPORTS) // defined by the build of the library itself
#define QMCOMMONBASE_API QM_EXPORT
#else
#define QMCOMMONBASE_API QM_IMPORT
#endif

/// The host process.
class QMCOMMONBASE_API CQMProcess
{
public:
    /// @return the handle (`HANDLE`) of the host process, fit for `GetProcessTimes`; not to be closed. The
    ///   default gives `GetCurrentProcess()`, the one handle that `platform/Kernel.h` knows outside Windows.
    ///   Any thread may call.
    static void* GetHandle();
};
