#pragma once

/// @file
/// What is used of the platform's C runtime and is not part of the standard library.

#include <cstdio>

#if !defined(_WIN32)

#include "platform/Export.h"

/// Opens a file by its wide path, which is read as `CFile::GetStatus` does. Never waits for the other end of
/// a pipe.
/// @param mode L"rb": reading, in binary mode. No other is known here.
/// @return to be closed with `std::fclose`; null when the file cannot be read, as a directory cannot. `errno`
///   is EINVAL after another mode; after a file that cannot be read it says nothing about why.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the runtime's name
QMPLATFORM_API std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode);

#endif
