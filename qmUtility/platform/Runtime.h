#pragma once

/// @file
/// The functions of the platform's C runtime in use that are not part of the standard library.

#include <cstdio>

#if !defined(_WIN32)

/// Opens a file by its wide path, which is converted as `CFile::GetStatus` does. Never waits for the other
/// end of a pipe.
/// @param mode L"rb": reading, in binary mode. No other mode is supported.
/// @return closed by the caller with `std::fclose`; null when the file cannot be read, as a directory cannot.
///   `errno` is EINVAL after another mode and unspecified after a file that cannot be read.
std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode);

#endif
