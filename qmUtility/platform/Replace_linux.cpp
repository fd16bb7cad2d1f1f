// SPDX-License-Identifier: MIT
#include "qmUtility/platform/File.h"

#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <string>
#include <utility>

namespace platform {
namespace {

/// Where a file is: its folder, and its name there.
struct Place {
    Handle Folder;
    std::string Name = {};
};

/// Finds the place of a file, which need not exist, behind any symbolic links.
bool Find(std::string path, Place& place) {
    constexpr int mostLinks = 40;  // as many as the system follows
    for (int links = 0; links <= mostLinks; ++links) {
        const std::size_t begin = path.rfind('/') + 1;
        if (begin == path.size()) {  // names no file
            errno = ENOENT;
            return false;
        }
        const std::string folder = begin == 0 ? "." : path.substr(0, begin);
        const int base = links == 0 ? AT_FDCWD : int{place.Folder};
        Handle next(OpenDescriptor(folder.c_str(), O_RDONLY | O_DIRECTORY, 0, base));
        if (!next && errno == EACCES)  // a folder that may be used, though not listed or synchronised
            next = Handle(OpenDescriptor(folder.c_str(), O_PATH | O_DIRECTORY, 0, base));
        if (!next) return false;
        place.Folder = std::move(next);
        place.Name = path.substr(begin);

        char target[PATH_MAX];
        const auto size = readlinkat(place.Folder, place.Name.c_str(), target, sizeof target);
        if (size < 0) return errno == EINVAL || errno == ENOENT;  // no link, or no file
        struct statfs system;
        if (fstatfs(place.Folder, &system) == 0 && system.f_type == PROC_SUPER_MAGIC)
            return true;  // a link to an open file only looks as if it had a target
        path.assign(target, static_cast<std::size_t>(size));
    }
    errno = ELOOP;
    return false;
}

/// Reads the value of an extended attribute.
/// @param name null for a list of all names, each null-terminated.
/// @return nothing on failure, with the reason in `errno`.
std::optional<std::string> ReadAttribute(int file, const char* name) {
    const auto read = [=](char* to, std::size_t size) {
        return name != nullptr ? fgetxattr(file, name, to, size) : flistxattr(file, to, size);
    };
    std::string value;
    auto size = read(nullptr, 0);
    if (size > 0) {
        value.resize(static_cast<std::size_t>(size));
        size = read(value.data(), value.size());
    }
    if (size < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

/// Gives a new file the extended attributes of an old one, access lists and labels among them, in place of
/// those inherited from its folder.
bool CopyAttributes(int from, int to) {
    const auto present = ReadAttribute(to, nullptr);
    const auto wanted = ReadAttribute(from, nullptr);
    if (!present || !wanted) return errno == EOPNOTSUPP;  // the file system has none
    const std::string all = *present + *wanted;
    for (const char* name = all.c_str(); *name != '\0'; name += std::strlen(name) + 1) {
        const auto old = ReadAttribute(from, name);
        if (!old && errno != ENODATA) return false;
        const auto fresh = ReadAttribute(to, name);
        if (!fresh && errno != ENODATA) return false;
        if (old != fresh &&
            (old ? fsetxattr(to, name, old->data(), old->size(), 0) : fremovexattr(to, name)) != 0)
            return false;
    }
    return true;
}

/// Gives a new file what is an old one's: owner, attributes and mode. The mode comes last: a change of the
/// owner clears bits of it, and an access list changes others.
bool CopyStatus(int from, const struct stat& status, int to) {
    struct stat fresh;
    if (fstat(to, &fresh) != 0) return false;
    const bool isOwners = fresh.st_uid == status.st_uid && fresh.st_gid == status.st_gid;
    return (isOwners || fchown(to, status.st_uid, status.st_gid) == 0) && CopyAttributes(from, to) &&
           fchmod(to, status.st_mode & ALLPERMS) == 0;
}

/// A new file beside another, which is deleted again unless it takes the other's place.
class Temporary {
public:
    Temporary(int folder, mode_t mode) : m_folder(folder) {
        do {  // the prefix identifies what a killed process left behind; the time makes the name unique
            m_name =
                ".qmUtility-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
            m_file = Handle(OpenDescriptor(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode, folder));
        } while (!m_file && errno == EEXIST);
        m_isThere = bool(m_file);
    }
    Temporary(const Temporary&) = delete;
    ~Temporary() {
        const LastErrorPreserver preserver;
        m_file.Close();
        if (m_isThere) unlinkat(m_folder, m_name.c_str(), 0);
    }

    const Handle& Get() const { return m_file; }

    bool MoveTo(const std::string& name) {
        m_isThere = !m_file.Close() || renameat(m_folder, m_name.c_str(), m_folder, name.c_str()) != 0;
        return !m_isThere;
    }

private:
    int m_folder;
    std::string m_name;
    Handle m_file;
    bool m_isThere = false;
};

/// @return whether an error says that something is not permitted or supported, not that it went wrong.
bool IsRefusal(int error) {
    constexpr int refusals[] = {EACCES, EPERM, EROFS, EBUSY, EXDEV, EINVAL, EOPNOTSUPP};
    return std::ranges::count(refusals, error) != 0;
}

}  // namespace

Replacement ReplaceWhole(const SystemPath& path, const Handle& old, std::string_view bytes) {
    struct stat status = {};
    if (old ? fstat(old, &status) != 0 : errno != ENOENT) return Replacement::Failed;
    if (old && !S_ISREG(status.st_mode)) return old.Write(bytes) ? Replacement::Done : Replacement::Failed;
    Place place;
    if (!Find(path.Get(), place)) return Replacement::Failed;
    // The name may be a link to an open file in /proc, or by now that of another file.
    struct stat named;
    if (old && (status.st_nlink != 1 ||
                fstatat(place.Folder, place.Name.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0 ||
                named.st_dev != status.st_dev || named.st_ino != status.st_ino))
        return Replacement::Refused;

    constexpr mode_t forOwner = 0600;  // until the file has the old one's owner
    constexpr mode_t forAll = 0666;
    Temporary temporary(place.Folder, old ? forOwner : forAll);
    const Handle& file = temporary.Get();
    // The status comes after the bytes, which clear bits of the mode.
    if (!file || !file.Write(bytes) || (old && !CopyStatus(old, status, file)) || !file.Synchronise() ||
        !temporary.MoveTo(place.Name))
        return old && IsRefusal(errno) ? Replacement::Refused : Replacement::Failed;
    // The path names the new content from here on. If the folder cannot be synchronised, the old content may
    // come back when the machine crashes, whole; until then the save has succeeded.
    place.Folder.Synchronise();
    return Replacement::Done;
}

void ExpectUse(void* memory, std::size_t size) {
    constexpr std::size_t largePage = std::size_t{1} << 21;  // a wrong guess is harmless
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(memory) & (largePage - 1);  // the first one
    if (size >= before + largePage)
        madvise(static_cast<char*>(memory) + before, (size - before) & ~(largePage - 1), MADV_HUGEPAGE);
}

}  // namespace platform
