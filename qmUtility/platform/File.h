// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Files of the operating system: read whole, written in place, or replaced.
///
/// Bytes are never changed. A file is not inherited by programs that the process starts, its descriptor is
/// never that of a standard stream, and interrupted calls are resumed. Only `std::bad_alloc` is thrown.

#include "qmUtility/platform/Handle.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace platform {

/// The newline of the system's text files.
#if defined(_WIN32)
inline constexpr std::string_view Newline = "\r\n";
#else
inline constexpr std::string_view Newline = "\n";
#endif

/// Tells the system that all of a block of new memory will be written: a large one then comes in large pages
/// where the system has them, which is faster.
void ExpectUse(void* memory, std::size_t size);

/// Characters in memory that are not initialised before they are filled.
template <class Char>
struct Buffer {
    explicit Buffer(std::size_t capacity) : Data(std::make_unique_for_overwrite<Char[]>(capacity)) {
        ExpectUse(Data.get(), capacity * sizeof(Char));
    }

    operator std::basic_string_view<Char>() const { return {Data.get(), Size}; }

    std::unique_ptr<Char[]> Data;
    std::size_t Size = 0;
};

/// A file that is open for writing.
class File {
public:
    /// Reads a file whole.
    /// @param error receives the reason of a failure; it is cleared otherwise.
    /// @return nothing when the file cannot be opened or read to its end (a directory, for example).
    static std::optional<Buffer<char>> Read(const SystemPath& path, std::error_code& error);

    /// Replaces the content of a file, or creates the file: at every moment the path names the old content
    /// whole or the new content whole, whatever fails and whoever is killed. Symbolic links are followed.
    ///
    /// The new content is written to a temporary file in the same folder, which then takes the place of the
    /// old file with its mode, owner and attributes. Where it could not, without losing something of the old
    /// file (other hard links, an owner or access list that cannot be given to it, a folder that cannot be
    /// written to), the file is written in place, and the old content is put back if that fails; a process
    /// that is killed then may leave a mixture. A pipe or a device is written to directly.
    ///
    /// On Windows the path names neither for an instant; a process that is killed then leaves the old file
    /// under the temporary file's name with ".old".
    /// @param error as for `Read`.
    /// @return whether the path names the new content. On false it names the old content.
    static bool Replace(const SystemPath& path, std::string_view bytes, std::error_code& error);

    /// Opens a file for writing in place: truncates it or creates it.
    explicit File(const SystemPath& path) : m_handle(path, Handle::Access::Create) {}

    /// @return whether the file could be opened, and no write has failed.
    bool IsOpen() const { return bool(m_handle); }

    /// Appends bytes, with one system call unless it is partial or interrupted. Allocates nothing.
    /// @return false when that fails; the file is then closed, so nothing more is written.
    bool Write(std::string_view bytes);

private:
    Handle m_handle;
};

}  // namespace platform
