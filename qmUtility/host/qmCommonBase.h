// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The host application's process. The library calls it; a host provides its own or uses the default
/// (docs/host-modules.md).

#include "qmUtility/Export.h"

/// The host process.
class QMCOMMONBASE_API CQMProcess {
public:
    /// @return the handle (`HANDLE`) of the host process, valid for `GetProcessTimes`; callers do not close
    ///   it. The default returns `GetCurrentProcess()`. Any thread may call.
    static void* GetHandle();
};
