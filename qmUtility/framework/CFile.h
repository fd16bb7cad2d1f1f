#pragma once

/// @file
/// The framework's file status, as much as is used of it; see `CString.h` for when it is the
/// framework's own.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

#include <cstdint>

/// A point in time, to the nanosecond where the file system is as exact.
class CTime
{
public:
    /// The zero time: the beginning of 1970, which stands for "unknown".
    CTime() = default;

    /// @param seconds since the beginning of 1970, UTC.
    /// @param nanoseconds of the second, 0 to 999999999.
    explicit CTime(std::int64_t seconds, std::int32_t nanoseconds = 0)
        : m_seconds(seconds), m_nanoseconds(nanoseconds)
    {}

    /// @return whether both are the same point in time, to the nanosecond.
    friend bool operator==(CTime a, CTime b)
    {
        return a.m_seconds == b.m_seconds && a.m_nanoseconds == b.m_nanoseconds;
    }
    /// @return whether they are not.
    friend bool operator!=(CTime a, CTime b) { return !(a == b); }

private:
    std::int64_t m_seconds = 0;
    std::int32_t m_nanoseconds = 0;
};

/// What the file system says about a file. Of one that is made without an initialiser only the times are set,
/// to zero.
struct CFileStatus
{
    CTime m_ctime;             ///< creation; the zero time where the file system does not record it
    CTime m_mtime;             ///< last modification
    CTime m_atime;             ///< last access
    std::uint64_t m_size;      ///< in bytes
    std::uint8_t m_attribute;  ///< `CFile::Attribute` values, joined
    wchar_t m_szFullName[260]; ///< the path as it was given, cut to fit
};

/// Files of the system. Any thread may call.
class QMFRAMEWORK_API CFile
{
public:
    /// What `CFileStatus::m_attribute` is joined from.
    enum Attribute
    {
        normal = 0x00,    ///< none of the others
        readOnly = 0x01,  ///< nobody may write
        directory = 0x10, ///< a folder
    };

    /// Reads the status of a file, or of what a link leads to.
    /// @param path its backslashes separate folders on every platform. Elsewhere than on Windows it is passed
    ///   on as UTF-8, whatever the locale; one that is not valid Unicode names no file.
    /// @param status filled in.
    /// @return whether the status could be read; if not, `status` is left as it was.
    /// @throws std::bad_alloc
    static bool GetStatus(const wchar_t* path, CFileStatus& status);
};

#endif
