// SPDX-License-Identifier: MIT
#include "qmUtility/platform/File.h"

#include <algorithm>

namespace platform {
namespace {

bool ReadAll(const Handle& file, Buffer<char>& bytes) {
    // The size is only a hint: pipes and system files report none, and a file may grow. With one byte more,
    // the read that finds the end needs no larger buffer.
    const std::size_t size = file.Size();
    std::size_t capacity = size != 0 ? size + 1 : 4096;
    for (bytes = Buffer<char>(capacity);;) {
        const std::ptrdiff_t count = file.Read(bytes.Data.get() + bytes.Size, capacity - bytes.Size);
        if (count <= 0) return count == 0;
        bytes.Size += static_cast<std::size_t>(count);
        if (bytes.Size == capacity) {
            Buffer<char> larger(capacity *= 2);
            std::copy_n(bytes.Data.get(), bytes.Size, larger.Data.get());
            bytes.Data = std::move(larger.Data);
        }
    }
}

/// Writes a file in place, so that its links, owner and attributes stay. Restores the old content on failure.
bool Overwrite(const SystemPath& path, const Handle& file, std::string_view bytes) {
    const Handle reader(path, Handle::Access::Read);
    Buffer<char> content(0);
    if (!reader || !ReadAll(reader, content)) return false;
    const std::string_view old = content;
    // What is longer than the old content comes first: without room for it nothing has been overwritten yet.
    const std::size_t common = std::min(old.size(), bytes.size());
    if (file.WriteAt(common, bytes.substr(common)) && file.WriteAt(0, bytes.substr(0, common)) &&
        file.Truncate(bytes.size()) && file.Synchronise())
        return true;
    const LastErrorPreserver preserver;
    file.WriteAt(0, old);
    file.Truncate(old.size());
    file.Synchronise();
    return false;
}

}  // namespace

std::optional<Buffer<char>> File::Read(const SystemPath& path, std::error_code& error) {
    const Handle file(path, Handle::Access::Read);
    std::optional<Buffer<char>> bytes(0);
    const bool isRead = file && ReadAll(file, *bytes);
    error = isRead ? std::error_code() : LastError(path);
    return isRead ? std::move(bytes) : std::nullopt;
}

bool File::Replace(const SystemPath& path, std::string_view bytes, std::error_code& error) {
    const Handle old(path, Handle::Access::Write);  // what may not be written in place may not be replaced
    const Replacement result = ReplaceWhole(path, old, bytes);
    const bool isReplaced =
        result == Replacement::Done || (result == Replacement::Refused && Overwrite(path, old, bytes));
    error = isReplaced ? std::error_code() : LastError(path);
    return isReplaced;
}

bool File::Write(std::string_view bytes) {
    if (m_handle && !m_handle.Write(bytes)) {
        const LastErrorPreserver preserver;
        m_handle.Close();
    }
    return IsOpen();
}

}  // namespace platform
