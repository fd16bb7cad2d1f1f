// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Wide formatted printing that is the same on every platform. `CString::Format` documents the directives.
/// May be called from any thread.

#include <cstdarg>
#include <string>

namespace platform {

/// Prints into a string.
/// @param format null prints nothing.
/// @param arguments indeterminate afterwards.
/// @return the text, never truncated.
/// @throws std::bad_alloc
std::wstring VFormat(const wchar_t* format, std::va_list arguments);

}  // namespace platform
