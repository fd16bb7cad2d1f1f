// SPDX-License-Identifier: MIT
#include "qmUtility/host/qmCommonBase.h"

#include "qmUtility/platform/Kernel.h"

void* CQMProcess::GetHandle() { return GetCurrentProcess(); }
