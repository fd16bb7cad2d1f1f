#include "qmUtility/host/qmConsole.h"

#include "qmUtility/framework/CString.h"
#include "qmUtility/platform/StandardStream.h"

#include <cstdarg>
#include <string_view>

void CQMConsoleAPI::Log(const wchar_t* format, ...) // NOLINT(cert-dcl50-cpp): as the hosts have it
{
    // Looking at the bytes would not do instead: those of the narrow "T" and the first of the wide "Title"
    // are the same, and telling them apart would mean to read past the end of the narrow one.
    const bool isTitle = format != nullptr && std::wstring_view(format) == L"\n%s\n";

    std::va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(isTitle ? L"\n%hs\n" : format, arguments);
    va_end(arguments);
    platform::Write(platform::Stream::Output, text.GetString());
}
