// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// File descriptors.

#include <fcntl.h>

#include <cerrno>
#include <string_view>

namespace platform {

/// Makes a system call, and makes it again whenever a signal interrupts it.
template <class Call>
auto Resumed(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Opens a file; the library opens none in another way. The descriptor is closed on exec. It is never that of
/// a standard stream, even if the host has closed that stream: what another thread logs would end up in the
/// file.
/// @param mode of a file that is created, before the process's mask.
/// @param folder what a relative path is relative to.
/// @return the descriptor, which the caller closes; -1 on failure, with the reason in `errno`.
int OpenDescriptor(const char* path, int flags, mode_t mode = 0, int folder = AT_FDCWD);

/// Writes all of the bytes.
/// @return false on failure, with the reason in `errno`.
bool WriteAll(int descriptor, std::string_view bytes);

} // namespace platform
