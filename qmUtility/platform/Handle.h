// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Open files of the operating system, and its last error: `errno` on Linux, the last-error code on Windows.

#include "qmUtility/platform/SystemPath.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

#if !defined(_WIN32)
#include <fcntl.h>
#endif

namespace platform {

int LastError();
void SetLastError(int error);

/// @return the last error, of a call on the file that the path names.
std::error_code LastError(const SystemPath& path);

/// Preserves the last error during its scope.
class LastErrorPreserver {
public:
    LastErrorPreserver() = default;
    LastErrorPreserver(const LastErrorPreserver&) = delete;
    ~LastErrorPreserver() { SetLastError(m_error); }

private:
    int m_error = LastError();
};

/// Owns an open file. Failures of the operations set the last error; the destructor preserves it.
class Handle {
public:
#if defined(_WIN32)
    using Native = void*;  ///< `HANDLE`
#else
    using Native = int;  ///< file descriptor
#endif

    enum class Access {
        Read,
        Write,
        Create,  ///< for writing; truncates a file that exists
    };

    explicit Handle(Native native = None) : m_native(native) {}
    Handle(const SystemPath& path, Access access);
    Handle(Handle&& other) noexcept : m_native(other.Release()) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(m_native, other.m_native);
        return *this;
    }
    ~Handle() {
        const LastErrorPreserver preserver;
        Close();
    }

    explicit operator bool() const { return m_native != None; }
    operator Native() const { return m_native; }
    Native Release() { return std::exchange(m_native, None); }
    bool Close();

    /// @return the size of a regular file; 0 if it is unknown.
    std::size_t Size() const;

    /// @return the number of bytes read; 0 at the end, -1 on failure.
    std::ptrdiff_t Read(char* to, std::size_t size) const;

    /// Writes all of the bytes at the current position, or from an offset on.
    bool Write(std::string_view bytes) const;
    bool WriteAt(std::size_t offset, std::string_view bytes) const { return Seek(offset) && Write(bytes); }

    bool Truncate(std::size_t size) const;
    bool Synchronise() const;

private:
    bool Seek(std::size_t offset) const;

    static inline const Native None = Native(std::intptr_t{-1});
    Native m_native;
};

/// What became of a file that another one was to replace.
enum class Replacement {
    Done,
    Failed,
    Refused,  ///< not possible without losing something of the old file
};

/// Replaces or creates a file as `File::Replace` does, but does not write a regular file in place.
/// @param old the file, open for writing; otherwise the last error is the reason why it is not.
Replacement ReplaceWhole(const SystemPath& path, const Handle& old, std::string_view bytes);

#if !defined(_WIN32)
/// Opens a file; the library opens none in another way. The descriptor is closed on exec. It is never that of
/// a standard stream, even one that the host has closed: logs of other threads would end up in the file.
/// @param mode of a file that is created, before the process's mask.
/// @param folder what a relative path is relative to.
/// @return the descriptor, which the caller closes; -1 on failure.
int OpenDescriptor(const char* path, int flags, mode_t mode = 0, int folder = AT_FDCWD);

/// Writes all of the bytes to a descriptor that is not owned.
bool WriteAll(int descriptor, std::string_view bytes);
#endif

}  // namespace platform
