// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Descriptor_linux.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

namespace platform {
namespace {

/// While one exists, descriptors 0 to 2 are taken. A placeholder takes the place of each that the host has
/// closed. It refers to a folder in a way that allows neither reading nor writing, so that both fail as
/// before.
class StandardStreamsTaken
{
public:
    StandardStreamsTaken()
    {
        const std::lock_guard lock(m_mutex);
        ++m_users;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if (fcntl(stream, F_GETFD) == -1)
                m_placeholders.at(static_cast<std::size_t>(stream)) = open("/", O_PATH | O_CLOEXEC);
    }
    ~StandardStreamsTaken()
    {
        const int error = errno;
        const std::lock_guard lock(m_mutex);
        if (--m_users == 0)
            for (int& placeholder : m_placeholders) {
                const int stream = std::exchange(placeholder, -1);
                const bool isOurs =
                    (fcntl(stream, F_GETFL) & O_PATH) != 0; // the host may have reopened the stream
                if (stream != -1 && isOurs)
                    close(stream);
            }
        errno = error;
    }
    StandardStreamsTaken(const StandardStreamsTaken&) = delete;

private:
    static inline std::mutex m_mutex;
    static inline int m_users = 0; ///< the placeholders stay until every thread has opened its file
    static inline std::array<int, 3> m_placeholders{-1, -1, -1};
};

} // namespace

int OpenDescriptor(const char* path, int flags, mode_t mode, int folder)
{
    const StandardStreamsTaken guard;
    return Resumed([=] { return openat(folder, path, flags | O_CLOEXEC, mode); });
}

} // namespace platform
