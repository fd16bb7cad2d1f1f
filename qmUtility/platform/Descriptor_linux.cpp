// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Descriptor_linux.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

namespace platform {
namespace {

/// While one exists, descriptors 0 to 2 are taken. A placeholder takes the place of each that the host has closed. It
/// refers to a folder in a way that allows neither reading nor writing, so that both fail as before.
class StandardStreamsTaken
{
public:
    StandardStreamsTaken()
    {
        const std::lock_guard lock(mutex);
        ++users;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if (fcntl(stream, F_GETFD) == -1)
                placeholders.at(static_cast<std::size_t>(stream)) = open("/", O_PATH | O_CLOEXEC);
    }
    ~StandardStreamsTaken()
    {
        const std::lock_guard lock(mutex);
        if (--users == 0)
            for (int& placeholder : placeholders)
                if (placeholder != -1)
                    close(std::exchange(placeholder, -1));
    }
    StandardStreamsTaken(const StandardStreamsTaken&) = delete;

private:
    static inline std::mutex mutex;
    static inline int users =
        0; ///< a thread's placeholders must last until the others have opened their files
    static inline std::array<int, 3> placeholders{-1, -1, -1};
};

} // namespace

int OpenDescriptor(const char* path, int flags, mode_t mode, int folder)
{
    const StandardStreamsTaken guard;
    return Resumed([=] { return openat(folder, path, flags | O_CLOEXEC, mode); });
}

} // namespace platform
