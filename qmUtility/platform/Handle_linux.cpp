// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Handle.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

namespace platform {
namespace {

/// Makes a system call, and makes it again whenever a signal interrupts it.
template <class Call>
auto Resumed(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

int Flags(Handle::Access access) {
    if (access == Handle::Access::Create) return O_WRONLY | O_CREAT | O_TRUNC;
    return access == Handle::Access::Write ? O_WRONLY : O_RDONLY;
}

/// While one exists, descriptors 0 to 2 are taken. A placeholder takes the place of each that the host has
/// closed: a folder, opened so that reading and writing fail as before.
class StandardStreamsTaken {
public:
    StandardStreamsTaken() {
        const std::lock_guard lock(m_mutex);
        ++m_users;
        for (int stream = 0; stream != 3; ++stream)
            if (fcntl(stream, F_GETFD) == -1) m_placeholders[stream] = open("/", O_PATH | O_CLOEXEC);
    }
    ~StandardStreamsTaken() {
        const LastErrorPreserver preserver;
        const std::lock_guard lock(m_mutex);
        if (--m_users == 0)
            for (int& placeholder : m_placeholders) {
                const int stream = std::exchange(placeholder, -1);
                if (stream != -1 && (fcntl(stream, F_GETFL) & O_PATH) != 0)  // the host may have reopened it
                    close(stream);
            }
    }
    StandardStreamsTaken(const StandardStreamsTaken&) = delete;

private:
    static inline std::mutex m_mutex;
    static inline int m_users = 0;  ///< the placeholders stay until every thread has opened its file
    static inline int m_placeholders[] = {-1, -1, -1};
};

}  // namespace

int OpenDescriptor(const char* path, int flags, mode_t mode, int folder) {
    const StandardStreamsTaken guard;
    return Resumed([=] { return openat(folder, path, flags | O_CLOEXEC, mode); });
}

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = Resumed([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (count == 0) errno = EIO;  // some device that takes nothing
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

int LastError() { return errno; }

void SetLastError(int error) { errno = error; }

std::error_code LastError(const SystemPath& /*path*/) { return {errno, std::system_category()}; }

Handle::Handle(const SystemPath& path, Access access)
    : Handle(OpenDescriptor(path.Get(), Flags(access), 0666)) {}

bool Handle::Close() {
    // An interrupted call has closed the descriptor all the same, and loses no bytes that are synchronised.
    const int descriptor = Release();
    return descriptor == None || close(descriptor) == 0 || errno == EINTR;
}

std::size_t Handle::Size() const {
    struct stat status;
    const bool isKnown = fstat(m_native, &status) == 0 && S_ISREG(status.st_mode);
    return isKnown ? static_cast<std::size_t>(status.st_size) : 0;
}

std::ptrdiff_t Handle::Read(char* to, std::size_t size) const {
    return Resumed([=, this] { return read(m_native, to, size); });
}

bool Handle::Write(std::string_view bytes) const { return WriteAll(m_native, bytes); }

bool Handle::Truncate(std::size_t size) const {
    return Resumed([=, this] { return ftruncate(m_native, static_cast<off_t>(size)); }) == 0;
}

/// Some file systems cannot synchronise a file, and say so: then there is nothing to wait for.
bool Handle::Synchronise() const {
    return Resumed([this] { return fsync(m_native); }) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
}

bool Handle::Seek(std::size_t offset) const {
    return lseek(m_native, static_cast<off_t>(offset), SEEK_SET) >= 0;
}

}  // namespace platform
