// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Descriptor_linux.h"
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

std::error_code LastError() { return {errno, std::system_category()}; }

/// Closes a descriptor at the end of the scope.
class Descriptor
{
public:
    explicit Descriptor(int number = AT_FDCWD) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor()
    {
        const int error = errno;
        Close();
        errno = error;
    }

    operator int() const { return m_number; }

    /// Once the bytes are synchronised an interruption loses nothing, and the descriptor is closed all the
    /// same.
    bool Close()
    {
        const int number = std::exchange(m_number, -1);
        return number < 0 || close(number) == 0 || errno == EINTR;
    }

private:
    int m_number;
};

bool ReadAll(int file, Buffer<char>& bytes)
{
    struct stat status;
    if (fstat(file, &status) != 0)
        return false;
    // The size is only a hint: pipes and system files report none, and a file may grow. With one byte more
    // than that, a read that finds the end needs no larger buffer.
    constexpr std::size_t unknownSize = 4095;
    const bool isKnown = S_ISREG(status.st_mode) && status.st_size > 0;
    std::size_t capacity = (isKnown ? static_cast<std::size_t>(status.st_size) : unknownSize) + 1;
    for (bytes = Buffer<char>(capacity);;) {
        const auto count =
            Resumed([&] { return read(file, bytes.Data.get() + bytes.Size, capacity - bytes.Size); });
        if (count <= 0)
            return count == 0;
        bytes.Size += static_cast<std::size_t>(count);
        if (bytes.Size == capacity) {
            Buffer<char> larger(capacity *= 2);
            std::copy_n(bytes.Data.get(), bytes.Size, larger.Data.get());
            bytes.Data = std::move(larger.Data);
        }
    }
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto count = Resumed([&] { return write(file, bytes.data(), bytes.size()); });
        if (count == 0) // some device that takes nothing
            errno = EIO;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool WriteAt(int file, std::size_t offset, std::string_view bytes)
{
    return lseek(file, static_cast<off_t>(offset), SEEK_SET) >= 0 && WriteAll(file, bytes);
}

bool Cut(int file, std::size_t size)
{
    return Resumed([=] { return ftruncate(file, static_cast<off_t>(size)); }) == 0;
}

/// Some file systems cannot synchronise a file, and say so: then there is nothing to wait for.
bool Synchronise(int file)
{
    return Resumed([=] { return fsync(file); }) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
}

/// Writes a file in place, so that its links, owner and attributes stay. Puts the old content back on
/// failure.
bool Overwrite(const SystemPath& path, int file, std::string_view bytes)
{
    const Descriptor reader(OpenDescriptor(path.Get(), O_RDONLY));
    Buffer<char> content(0);
    if (reader < 0 || !ReadAll(reader, content))
        return false;
    const std::string_view old = content;
    // What is longer than the old content comes first: without room for it nothing has been overwritten yet.
    const std::size_t common = std::min(old.size(), bytes.size());
    if (WriteAt(file, common, bytes.substr(common)) && WriteAt(file, 0, bytes.substr(0, common)) &&
        Cut(file, bytes.size()) && Synchronise(file))
        return true;
    const int error = errno;
    WriteAt(file, 0, old);
    Cut(file, old.size());
    Synchronise(file);
    errno = error;
    return false;
}

/// Where a file is: its folder, and its name there.
struct Place
{
    Descriptor Folder;
    std::string Name = {};
};

/// Finds the place of a file, which need not exist, behind any symbolic links.
bool Find(std::string path, Place& place)
{
    constexpr int mostLinks = 40; // as many as the system follows
    for (int links = 0; links <= mostLinks; ++links) {
        const std::size_t begin = path.rfind('/') + 1;
        if (begin == path.size()) { // names no file
            errno = ENOENT;
            return false;
        }
        const std::string folder = begin == 0 ? "." : path.substr(0, begin);
        Descriptor next(OpenDescriptor(folder.c_str(), O_RDONLY | O_DIRECTORY, 0, place.Folder));
        if (next < 0 && errno == EACCES) // a folder that may be used, though not listed or synchronised
            next = Descriptor(OpenDescriptor(folder.c_str(), O_PATH | O_DIRECTORY, 0, place.Folder));
        if (next < 0)
            return false;
        place.Folder = std::move(next);
        place.Name = path.substr(begin);

        char target[PATH_MAX];
        const auto size = readlinkat(place.Folder, place.Name.c_str(), target, sizeof target);
        if (size < 0)
            return errno == EINVAL || errno == ENOENT; // no link, or no file
        struct statfs system;
        if (fstatfs(place.Folder, &system) == 0 && system.f_type == PROC_SUPER_MAGIC)
            return true; // a link to an open file only looks as if it had a target
        path.assign(target, static_cast<std::size_t>(size));
    }
    errno = ELOOP;
    return false;
}

/// Reads the value of an extended attribute, or the null-terminated names of all.
/// @param get is called with a buffer and its size, and returns the size of what it reads.
/// @return nothing on failure, with the reason in `errno`.
template <class Get>
std::optional<std::string> ReadAttribute(Get get)
{
    std::string value;
    auto size = get(nullptr, 0);
    if (size > 0) {
        value.resize(static_cast<std::size_t>(size));
        size = get(value.data(), value.size());
    }
    if (size < 0)
        return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

/// Gives a new file the extended attributes of an old one, access lists and labels among them, and no others:
/// it may have inherited some from its folder.
bool CopyAttributes(int from, int to)
{
    const auto names = [](int file) {
        return ReadAttribute([=](char* list, std::size_t size) { return flistxattr(file, list, size); });
    };
    const auto value = [](int file, const char* name) {
        return ReadAttribute(
            [=](char* bytes, std::size_t size) { return fgetxattr(file, name, bytes, size); });
    };
    const auto present = names(to);
    const auto wanted = names(from);
    if (!present || !wanted)
        return errno == EOPNOTSUPP; // the file system has none
    const std::string all = *present + *wanted;
    for (const char* name = all.c_str(); *name != '\0'; name += std::strlen(name) + 1) {
        const auto old = value(from, name);
        if (!old && errno != ENODATA)
            return false;
        const auto fresh = value(to, name);
        if (!fresh && errno != ENODATA)
            return false;
        if (old != fresh &&
            (old ? fsetxattr(to, name, old->data(), old->size(), 0) : fremovexattr(to, name)) != 0)
            return false;
    }
    return true;
}

/// Gives a new file what is an old one's: owner, attributes and mode. The mode comes last: a change of the
/// owner clears bits of it, and an access list changes others.
bool CopyStatus(int from, const struct stat& status, int to)
{
    struct stat fresh;
    if (fstat(to, &fresh) != 0)
        return false;
    const bool isOwners = fresh.st_uid == status.st_uid && fresh.st_gid == status.st_gid;
    return (isOwners || fchown(to, status.st_uid, status.st_gid) == 0) && CopyAttributes(from, to) &&
           fchmod(to, status.st_mode & ALLPERMS) == 0;
}

/// A new file beside another, which is deleted again unless it takes the other's place.
class Temporary
{
public:
    Temporary(int folder, mode_t mode) : m_folder(folder)
    {
        do { // the prefix identifies what a killed process left behind; the time makes the name unique
            m_name =
                ".qmUtility-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
            m_file = Descriptor(OpenDescriptor(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode, folder));
        } while (m_file < 0 && errno == EEXIST);
        m_isThere = m_file >= 0;
    }
    Temporary(const Temporary&) = delete;
    ~Temporary()
    {
        const int error = errno;
        m_file.Close();
        if (m_isThere)
            unlinkat(m_folder, m_name.c_str(), 0);
        errno = error;
    }

    operator int() const { return m_file; }

    bool MoveTo(const std::string& name)
    {
        const bool isMoved =
            m_file.Close() && renameat(m_folder, m_name.c_str(), m_folder, name.c_str()) == 0;
        m_isThere = !isMoved;
        return isMoved;
    }

private:
    int m_folder;
    std::string m_name;
    Descriptor m_file;
    bool m_isThere = false;
};

/// Replaces a file in its place, or creates one.
/// @param old the file that is replaced, if any.
bool ReplaceAt(const Place& place, int old, const struct stat& status, std::string_view bytes)
{
    constexpr mode_t forOwner = 0600; // until the file has the old one's owner
    constexpr mode_t forAll = 0666;
    Temporary file(place.Folder, old >= 0 ? forOwner : forAll);
    // The status comes after the bytes, which clear bits of the mode.
    if (file < 0 || !WriteAll(file, bytes) || (old >= 0 && !CopyStatus(old, status, file)) ||
        !Synchronise(file) || !file.MoveTo(place.Name))
        return false;
    // The path names the new content from here on. If the folder cannot be synchronised, the old content may
    // come back when the machine crashes, whole; until then the save has succeeded.
    Synchronise(place.Folder);
    return true;
}

/// @return whether an error says that something may not be done, as opposed to one that says that it went
///   wrong.
bool IsRefusal(int error)
{
    constexpr int refusals[] = {EACCES, EPERM, EROFS, EBUSY, EXDEV, EINVAL, EOPNOTSUPP};
    return std::ranges::count(refusals, error) != 0;
}

bool ReplaceContent(const SystemPath& path, std::string_view bytes)
{
    // What may not be written in place may not be replaced.
    const Descriptor old(OpenDescriptor(path.Get(), O_WRONLY));
    if (old < 0 && errno != ENOENT)
        return false;
    struct stat status = {};
    if (old >= 0 && fstat(old, &status) != 0)
        return false;
    if (old >= 0 && !S_ISREG(status.st_mode))
        return WriteAll(old, bytes);
    Place place;
    if (!Find(path.Get(), place))
        return false;
    if (old < 0)
        return ReplaceAt(place, old, status, bytes);

    // The name may be a link to an open file in /proc, or by now that of another file.
    struct stat named;
    const bool canMove = status.st_nlink == 1 &&
                         fstatat(place.Folder, place.Name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                         named.st_dev == status.st_dev && named.st_ino == status.st_ino;
    return (canMove && ReplaceAt(place, old, status, bytes)) ||
           ((!canMove || IsRefusal(errno)) && Overwrite(path, old, bytes));
}

} // namespace

void ExpectUse(void* memory, std::size_t size)
{
    constexpr std::size_t largePage = std::size_t{1} << 21; // a wrong guess is harmless
    const std::size_t before =
        -reinterpret_cast<std::uintptr_t>(memory) & (largePage - 1); // the first such page
    if (size >= before + largePage)
        madvise(static_cast<char*>(memory) + before, (size - before) & ~(largePage - 1), MADV_HUGEPAGE);
}

std::optional<Buffer<char>> File::Read(const SystemPath& path, std::error_code& error)
{
    const Descriptor file(OpenDescriptor(path.Get(), O_RDONLY));
    std::optional<Buffer<char>> bytes(0);
    const bool isRead = file >= 0 && ReadAll(file, *bytes);
    error = isRead ? std::error_code() : LastError();
    return isRead ? std::move(bytes) : std::nullopt;
}

bool File::Replace(const SystemPath& path, std::string_view bytes, std::error_code& error)
{
    const bool isReplaced = ReplaceContent(path, bytes);
    error = isReplaced ? std::error_code() : LastError();
    return isReplaced;
}

File::File(const SystemPath& path) : m_handle(OpenDescriptor(path.Get(), O_WRONLY | O_CREAT | O_TRUNC, 0666))
{}

File::~File()
{
    if (IsOpen())
        close(static_cast<int>(m_handle));
}

bool File::Write(std::string_view bytes)
{
    if (IsOpen() && !WriteAll(static_cast<int>(m_handle), bytes)) {
        const int error = errno;
        close(static_cast<int>(std::exchange(m_handle, Closed)));
        errno = error;
    }
    return IsOpen();
}

} // namespace platform
