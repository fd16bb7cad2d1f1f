#include "host/qmCommonBase.h"

#include "platform/Kernel.h"

void* CQMProcess::GetHandle() { return GetCurrentProcess(); }
