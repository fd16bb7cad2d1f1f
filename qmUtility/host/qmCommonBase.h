#pragma once

/// @file
/// The host application's process. The library calls it; a host brings its own, or
/// has the default (docs/host-modules.md).

#include "qmUtility/Export.h"

/// The host process.
class QMCOMMONBASE_API CQMProcess
{
public:
    /// @return the handle (`HANDLE`) of the host process, fit for `GetProcessTimes`; not to be closed. The
    ///   default gives `GetCurrentProcess()`, the one handle that `platform/Kernel.h` knows outside Windows.
    ///   Any thread may call.
    static void* GetHandle();
};
