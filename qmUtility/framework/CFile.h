// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's file status: the subset used here, or the framework's own classes (see `CString.h`).

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

#include <cstdint>
#include <utility>

inline namespace qmFramework {

/// A point in time, in nanoseconds as far as the file system records them.
class CTime {
public:
    /// The zero time, 1 January 1970, 00:00 UTC; it means "unknown".
    CTime() = default;

    /// @param seconds since the zero time.
    /// @param nanoseconds within the second, 0 to 999999999.
    explicit CTime(std::int64_t seconds, std::int32_t nanoseconds = 0)
        : m_seconds(seconds), m_nanoseconds(nanoseconds) {}

    std::int64_t GetTime() const { return m_seconds; }  ///< seconds since the zero time

    /// @return whether both times are equal to the nanosecond.
    friend bool operator==(CTime a, CTime b) { return a.Parts() == b.Parts(); }
    friend bool operator!=(CTime a, CTime b) { return a.Parts() != b.Parts(); }  ///< whether they differ
    friend bool operator<(CTime a, CTime b) { return a.Parts() < b.Parts(); }    ///< whether a is before b

private:
    std::pair<std::int64_t, std::int32_t> Parts() const { return {m_seconds, m_nanoseconds}; }

    std::int64_t m_seconds = 0;
    std::int32_t m_nanoseconds = 0;
};

/// Status of a file. Default initialization zeroes the times and leaves the other members indeterminate.
struct CFileStatus {
    CTime m_ctime;              ///< creation; the zero time where the system does not report it
    CTime m_mtime;              ///< last modification
    CTime m_atime;              ///< last access
    std::uint64_t m_size;       ///< in bytes
    std::uint8_t m_attribute;   ///< `CFile::Attribute` bits; on Windows also other system attributes
    wchar_t m_szFullName[260];  ///< the path as passed in, truncated to fit
};

/// Access to the file system. The functions may be called from any thread.
class QMFRAMEWORK_API CFile {
public:
    /// Bits of `CFileStatus::m_attribute`.
    enum Attribute {
        normal = 0x00,     ///< no attribute
        readOnly = 0x01,   ///< not writable
        directory = 0x10,  ///< a folder
    };

    /// Reads the status of a file or directory. Symbolic links are followed.
    /// @param path backslashes separate directories on every platform. Outside Windows the path is passed to
    ///   the system in UTF-8, whatever the locale; a path that is not valid Unicode names no file.
    /// @param status receives the status.
    /// @return whether the status could be read; otherwise `status` is unchanged.
    static bool GetStatus(const wchar_t* path, CFileStatus& status);
};

}  // namespace qmFramework

#endif
