#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMTimer.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// Receives debugger lines in place of a debugger. The names and the layout of the shared buffer are the system's.
class DebugBuffer
{
public:
    /// @return the line that the call sends.
    template <class Call>
    std::string Line(Call call)
    {
        SetEvent(m_isFree);
        call();
        return WaitForSingleObject(m_isFilled, 0) == WAIT_OBJECT_0 ? m_text : "(none)";
    }

private:
    // Open until the process ends.
    HANDLE m_isFree = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
    HANDLE m_isFilled = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
    HANDLE m_memory =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, L"DBWIN_BUFFER");
    /// After the process identifier.
    const char* m_text =
        static_cast<const char*>(MapViewOfFile(m_memory, FILE_MAP_READ, 0, 0, 4096)) + sizeof(DWORD);
};

TEST(WindowsDebugger, ReceivesEachLine)
{
    DebugBuffer buffer;
    std::unique_ptr<CQMDebugTraceStartEndMarker> marker;
    EXPECT_EQ(buffer.Line([&] {
        marker = std::make_unique<CQMDebugTraceStartEndMarker>(L"50%", false, false, false);
    }),
              ">>> 50% - Start");
    EXPECT_EQ(buffer.Line([&] { marker.reset(); }), ">>> 50% - End");
    CQMTimer timer;
    const std::string line = buffer.Line([&] { timer.TraceLapsedTime(true, false, L"x"); });
    EXPECT_TRUE(line.starts_with(">>> x : ") && line.ends_with(" sec\n")) << line;
}

} // namespace
