#pragma once

/// @file
/// The host application's console log. The library calls it; a host brings its own, or
/// has the default (docs/host-modules.md).

#include "qmUtility/Export.h"

/// The console log.
class QMCONSOLE_API CQMConsoleAPI
{
public:
    /// Writes a formatted text to the log, as it stands: a line carries its own line break. Any thread may
    /// call.
    ///
    /// @param format null writes nothing. Strings among the arguments need to live as long as the call.
    /// @throws std::bad_alloc for lack of memory; the text is then not written.
    ///
    /// The default writes to standard output as UTF-8, whatever the locale, with one write a call. It reads
    /// formats as `platform/WidePrint.h` says: "%s" is a wide string on every platform, and "%n" stores
    /// nothing.
    ///
    /// One format stands apart. The stopwatch announces its title with exactly "\n%s\n" and a *narrow*
    /// string, which nothing in the call tells from a wide one; so the default takes a text under that very
    /// format for narrow. A wide text between two line breaks is logged with "\n%ls\n".
    static void Log(const wchar_t* format, ...);
};
