// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The subset used here of what the Windows C runtime adds to the standard library.

#include <cstdio>

#if !defined(_WIN32)

/// Opens a file for reading. It does not wait for the other end of a pipe.
/// @param path is converted as `CFile::GetStatus` converts it.
/// @param mode L"rb"; other modes are not supported and behave the same.
/// @return the file, which the caller closes; null for a directory and for a file that cannot be opened for
///   reading. `errno` is unspecified then.
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode);

#endif
