// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/StandardStream.h"
#include "qmUtility/platform/Utf8.h"

#include <fcntl.h>
#include <io.h>

#include <string>

// Bypasses the C runtime, which would split the text at its newlines.
void platform::Write(Stream stream, std::wstring_view text) {
    if (text.empty()) return;  // the reader of a pipe could take an empty write for the end of the file
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(static_cast<int>(stream)));
    DWORD ignored = 0;
    if (::GetConsoleMode(handle, &ignored) != 0) {  // a console, which takes wide text whatever its code page
        ::WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &ignored, nullptr);
        return;
    }
    std::string bytes;
    for (const char c : EncodeUtf8(text)) {
        if (c == '\n') bytes += '\r';
        bytes += c;
    }
    ::WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &ignored, nullptr);
}

void platform::UseBinaryStreams() {
    for (const int stream : {0, static_cast<int>(Stream::Output)}) ::_setmode(stream, _O_BINARY);
}
