// SPDX-License-Identifier: MIT
/// @file
/// Classes of the program that are named like the framework's and have other members. The library must not call them.

#include <cstdarg>
#include <cstddef>
#include <cstdlib>

struct CFileStatus;

class CObject
{
public:
    virtual ~CObject();

private:
    char* m_name = nullptr;
};
CObject::~CObject() { std::abort(), std::free(m_name); }

class CString
{
public:
    CString(const wchar_t*);
    void FormatV(const wchar_t*, std::va_list);
};
CString::CString(const wchar_t*) { std::abort(); }
void CString::FormatV(const wchar_t*, std::va_list) { std::abort(); }

struct CFile
{
    static bool GetStatus(const wchar_t*, CFileStatus&);
};
bool CFile::GetStatus(const wchar_t*, CFileStatus&) { std::abort(); }

struct CArchive
{
    void Write(const void*, std::size_t);
};
void CArchive::Write(const void*, std::size_t) { std::abort(); }
