// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The host application's process. A host can replace the default (docs/host-modules.md).

#include "qmUtility/Export.h"

/// The host process.
class QMCOMMONBASE_API CQMProcess {
public:
    /// @return the handle (`HANDLE`) of the host process, valid for `GetProcessTimes`, not to be closed. The
    ///   default returns `GetCurrentProcess()`. Any thread may call.
    static void* GetHandle();
};
