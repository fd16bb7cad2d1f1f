// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The host application's console log. A host can replace the default (docs/host-modules.md).

#include "qmUtility/Export.h"

/// The console log.
class QMCONSOLE_API CQMConsoleAPI {
public:
    /// Writes a formatted text to the log and adds no newline. Any thread may call.
    /// @param format directives as for `CString::Format`; a host's own log formats with `CString::FormatV` of
    ///   `qmUtility/framework/CString.h`. Null writes nothing.
    /// @throws std::bad_alloc; nothing is then written.
    ///
    /// The default writes UTF-8 to standard output, whatever the locale, with one write per call. It drops
    /// the text when the output is a closed pipe; on Linux no SIGPIPE is sent and `errno` is preserved.
    ///
    /// One format is special: a stopwatch logs its title with exactly "\n%s\n" and a *narrow* string, so the
    /// default reads the argument of this format as one. For a wide string, use "\n%ls\n".
    static void Log(const wchar_t* format, ...);
};
