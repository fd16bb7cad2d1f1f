#include "qmUtility/platform/Kernel.h"
#include "qmUtility/timing/QMDebugTraceStartEndMarker.h"
#include "qmUtility/timing/QMTimer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace {

/// Receives debugger lines in the place of a debugger: the system hands them over in a buffer, whose names
/// and layout are its own.
class DebugBuffer
{
public:
    DebugBuffer()
    {
        m_text = static_cast<const char*>(MapViewOfFile(m_memory, FILE_MAP_READ, 0, 0, 4096)) + sizeof(DWORD);
    }
    ~DebugBuffer()
    {
        UnmapViewOfFile(m_text - sizeof(DWORD));
        for (HANDLE handle : {m_memory, m_isFilled, m_isFree})
            CloseHandle(handle);
    }
    DebugBuffer(const DebugBuffer&) = delete;
    DebugBuffer& operator=(const DebugBuffer&) = delete;

    /// @return the line that the call sent
    template <class Call>
    std::string Line(Call call)
    {
        SetEvent(m_isFree);
        call();
        return WaitForSingleObject(m_isFilled, 0) == WAIT_OBJECT_0 ? m_text : "(none)";
    }

private:
    HANDLE m_isFree = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
    HANDLE m_isFilled = CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY");
    HANDLE m_memory =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, L"DBWIN_BUFFER");
    const char* m_text; ///< behind the number of the process
};

TEST(WindowsDebugger, ReceivesEachLine)
{
    DebugBuffer buffer;
    CQMDebugTraceStartEndMarker* marker = nullptr;
    EXPECT_EQ(buffer.Line([&] { marker = new CQMDebugTraceStartEndMarker(L"50%", false, false, false); }),
              ">>> 50% - Start");
    EXPECT_EQ(buffer.Line([&] { delete marker; }), ">>> 50% - End");
    CQMTimer timer;
    const std::string line = buffer.Line([&] { timer.TraceLapsedTime(true, false, L"x"); });
    EXPECT_EQ(line.rfind(">>> x : ", 0), 0) << line;
    EXPECT_EQ(line.substr(line.size() - 5), " sec\n");
}

} // namespace
