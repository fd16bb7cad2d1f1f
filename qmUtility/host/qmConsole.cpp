// SPDX-License-Identifier: MIT
#include "qmUtility/host/qmConsole.h"

#include "qmUtility/framework/CString.h"
#include "qmUtility/platform/StandardStream.h"

#include <cstdarg>
#include <string_view>

void CQMConsoleAPI::Log(const wchar_t* format, ...) {
    // The argument's bytes cannot tell: a narrow "T" and a wide "Title" begin with the same ones, and looking
    // further would read past the end of the narrow string.
    const bool isTitle = format != nullptr && std::wstring_view(format) == L"\n%s\n";

    std::va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(isTitle ? L"\n%hs\n" : format, arguments);
    va_end(arguments);
    platform::Write(platform::Stream::Output, text.GetString());
}
