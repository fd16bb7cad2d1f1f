// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Handle.h"
#include "qmUtility/platform/Kernel.h"

#include <algorithm>

namespace platform {

static constexpr std::size_t MostAtOnce = std::size_t{1} << 30;  ///< bytes of one call

int LastError() { return static_cast<int>(::GetLastError()); }

void SetLastError(int error) { ::SetLastError(static_cast<DWORD>(error)); }

/// The system denies access to folders, like to files that may not be read.
std::error_code LastError(const SystemPath& path) {
    const std::error_code error(LastError(), std::system_category());
    const DWORD found = ::GetFileAttributesW(path.Get());
    const bool isFolder = found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return isFolder ? std::make_error_code(std::errc::is_a_directory) : error;
}

/// Others may read, write, rename and delete the file meanwhile.
Handle::Handle(const SystemPath& path, Access access)
    : Handle(::CreateFileW(path.Get(), access == Access::Read ? GENERIC_READ : GENERIC_WRITE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           access == Access::Create ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                           nullptr)) {}

bool Handle::Close() {
    const HANDLE handle = Release();
    return handle == None || ::CloseHandle(handle) != 0;
}

std::size_t Handle::Size() const {
    LARGE_INTEGER size;
    const bool isKnown = ::GetFileType(m_native) == FILE_TYPE_DISK && ::GetFileSizeEx(m_native, &size) != 0;
    return isKnown ? static_cast<std::size_t>(size.QuadPart) : 0;
}

std::ptrdiff_t Handle::Read(char* to, std::size_t size) const {
    DWORD count = 0;
    const bool isRead =
        ::ReadFile(m_native, to, static_cast<DWORD>(std::min(size, MostAtOnce)), &count, nullptr) != 0;
    if (!isRead && ::GetLastError() == ERROR_BROKEN_PIPE) return 0;  // the end of a pipe
    return isRead ? static_cast<std::ptrdiff_t>(count) : -1;
}

bool Handle::Write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min(bytes.size(), MostAtOnce));
        DWORD count = 0;
        if (::WriteFile(m_native, bytes.data(), size, &count, nullptr) == 0) return false;
        bytes.remove_prefix(count);
    }
    return true;
}

bool Handle::Truncate(std::size_t size) const { return Seek(size) && ::SetEndOfFile(m_native) != 0; }

bool Handle::Synchronise() const { return ::FlushFileBuffers(m_native) != 0; }

bool Handle::Seek(std::size_t offset) const {
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<long long>(offset);
    return ::SetFilePointerEx(m_native, distance, nullptr, FILE_BEGIN) != 0;
}

}  // namespace platform
