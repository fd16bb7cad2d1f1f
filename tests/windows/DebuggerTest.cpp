#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMTimer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WindowsDebugger, ReceivesALine)
{
    // This takes the place of a debugger. The names and the layout of the shared buffer are the system's; all of it
    // stays open until the process ends.
    CreateEventW(nullptr, FALSE, TRUE, L"DBWIN_BUFFER_READY");
    void* const isFilled = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
    void* const memory =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, L"DBWIN_BUFFER");
    const auto* const buffer = static_cast<const char*>(MapViewOfFile(memory, FILE_MAP_READ, 0, 0, 4096));
    CQMTimer().TraceLapsedTime(true, false, L"50%");
    EXPECT_EQ(WaitForSingleObject(isFilled, 0), WAIT_OBJECT_0);
    const std::string line = buffer + sizeof(DWORD); // after the process identifier
    EXPECT_TRUE(line.starts_with(">>> 50% : ") && line.ends_with(" sec\n")) << line;
}

} // namespace
