// SPDX-License-Identifier: MIT
/// @file
/// Classes of the program that are named like the framework's and have other members. The library must not
/// call them.

#include <cstdarg>
#include <cstddef>
#include <cstdlib>

#define USED [[gnu::used]]  // although nothing here calls it

struct CFileStatus;
struct CObject {
    char* m_name = nullptr;
    USED virtual ~CObject() { std::abort(); }
};
struct CString {
    USED CString(const wchar_t*) { std::abort(); }
    USED void FormatV(const wchar_t*, std::va_list) { std::abort(); }
};
struct CFile {
    USED static bool GetStatus(const wchar_t*, CFileStatus&) { std::abort(); }
};
struct CArchive {
    USED void Write(const void*, std::size_t) { std::abort(); }
};
