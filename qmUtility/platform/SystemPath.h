// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Paths in the form that system calls take.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// A null-terminated path for system calls, which must not outlive the text that it is made from. It is
/// empty, which names no file, for a path that holds a NUL and, where paths are bytes, for a wide one that is
/// not valid Unicode. A conversion allocates nothing.
class SystemPath {
public:
    using Char = std::filesystem::path::value_type;  ///< of the system's paths

    /// A narrow path: bytes as they are; on Windows, in the ANSI code page.
    explicit SystemPath(const std::string& path);
    /// A wide path: in UTF-8 where paths are bytes, whatever the locale.
    explicit SystemPath(const std::wstring& path);
    explicit SystemPath(const std::filesystem::path& path) : SystemPath(path.native()) {}  ///< @overload
    SystemPath(const SystemPath&) = delete;

#if !defined(_WIN32)
    /// Converts a wide path with backslashes in place of slashes.
    static SystemPath FromWindows(std::wstring_view path) { return SystemPath(path, L'\\'); }
#endif

    const Char* Get() const { return m_path; }

private:
    SystemPath(std::wstring_view path, wchar_t separator);

    static constexpr std::size_t Capacity = 32'768;  ///< more than the longest path of any system
    Char m_converted[Capacity];
    const Char* m_path;  ///< the caller's text or `m_converted`
};

}  // namespace platform
