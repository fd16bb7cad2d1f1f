#pragma once

/// @file
/// The host application's process. The library calls it; the host brings it. What is built here is a
/// stand-alone default. A host replaces it by linking a library of its own in its place; on Linux an
/// executable that defines the function takes precedence.

#include "platform/Export.h"

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
