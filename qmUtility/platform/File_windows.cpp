// SPDX-License-Identifier: MIT
#include "qmUtility/platform/File.h"
#include "qmUtility/platform/Kernel.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace platform {
namespace {

std::error_code LastError() { return {static_cast<int>(::GetLastError()), std::system_category()}; }

/// The system denies access to folders, like to files that may not be read.
std::error_code LastError(const SystemPath& path)
{
    const auto error = LastError();
    const DWORD attributes = ::GetFileAttributesW(path.Get());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return isFolder ? std::make_error_code(std::errc::is_a_directory) : error;
}

/// Opens a file that others may read, write, rename and delete meanwhile.
HANDLE Open(const SystemPath& path, DWORD access, DWORD disposition)
{
    constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return ::CreateFileW(path.Get(), access, all, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Closes a file at the end of the scope.
class Handle
{
public:
    explicit Handle(HANDLE handle = INVALID_HANDLE_VALUE) : m_handle(handle) {}
    Handle(const Handle&) = delete;
    ~Handle()
    {
        const DWORD error = ::GetLastError();
        Close();
        ::SetLastError(error);
    }

    explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }
    operator HANDLE() const { return m_handle; }

    void Reset(HANDLE handle) { m_handle = handle; }
    bool Close()
    {
        const HANDLE handle = std::exchange(m_handle, INVALID_HANDLE_VALUE);
        return handle == INVALID_HANDLE_VALUE || ::CloseHandle(handle) != 0;
    }

private:
    HANDLE m_handle;
};

constexpr std::size_t MostAtOnce = std::size_t{1} << 30; ///< bytes of one call

bool ReadAll(HANDLE file, Buffer<char>& bytes)
{
    // The size is only a hint: pipes report none, and a file may grow. With one byte more than that, a read
    // that finds the end needs no larger buffer.
    constexpr std::size_t unknownSize = 4095;
    LARGE_INTEGER size;
    const bool isKnown =
        ::GetFileType(file) == FILE_TYPE_DISK && ::GetFileSizeEx(file, &size) != 0 && size.QuadPart > 0;
    std::size_t capacity = (isKnown ? static_cast<std::size_t>(size.QuadPart) : unknownSize) + 1;
    for (bytes = Buffer<char>(capacity);;) {
        DWORD count = 0;
        if (::ReadFile(file, bytes.Data.get() + bytes.Size,
                       static_cast<DWORD>(std::min(capacity - bytes.Size, MostAtOnce)), &count, nullptr) == 0)
            return ::GetLastError() == ERROR_BROKEN_PIPE; // the end of a pipe
        if (count == 0)
            return true;
        bytes.Size += count;
        if (bytes.Size == capacity) {
            Buffer<char> larger(capacity *= 2);
            std::copy_n(bytes.Data.get(), bytes.Size, larger.Data.get());
            bytes.Data = std::move(larger.Data);
        }
    }
}

bool WriteAll(HANDLE file, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD count = 0;
        if (::WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), MostAtOnce)), &count,
                        nullptr) == 0)
            return false;
        bytes.remove_prefix(count);
    }
    return true;
}

bool Seek(HANDLE file, std::size_t offset)
{
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<long long>(offset);
    return ::SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != 0;
}

bool WriteAt(HANDLE file, std::size_t offset, std::string_view bytes)
{
    return Seek(file, offset) && WriteAll(file, bytes);
}

bool Cut(HANDLE file, std::size_t size) { return Seek(file, size) && ::SetEndOfFile(file) != 0; }

bool Synchronise(HANDLE file) { return ::FlushFileBuffers(file) != 0; }

/// Writes a file in place, so that its links, owner and attributes stay. Puts the old content back on
/// failure.
bool Overwrite(const SystemPath& path, HANDLE file, std::string_view bytes)
{
    const Handle reader(Open(path, GENERIC_READ, OPEN_EXISTING));
    Buffer<char> content(0);
    if (!reader || !ReadAll(reader, content))
        return false;
    const std::string_view old = content;
    // What is longer than the old content comes first: without room for it nothing has been overwritten yet.
    const std::size_t common = std::min(old.size(), bytes.size());
    if (WriteAt(file, common, bytes.substr(common)) && WriteAt(file, 0, bytes.substr(0, common)) &&
        Cut(file, bytes.size()) && Synchronise(file))
        return true;
    const DWORD error = ::GetLastError();
    WriteAt(file, 0, old);
    Cut(file, old.size());
    Synchronise(file);
    ::SetLastError(error);
    return false;
}

/// @param get is called with a buffer and its size, and returns the size that it needs with the terminating
///   null, or the length of what it has stored.
/// @return what it stores; empty on failure.
template <class Get>
std::wstring GetPath(Get get)
{
    std::wstring path(get(nullptr, 0), L'\0');
    path.resize(get(path.data(), static_cast<DWORD>(path.size())));
    return path;
}

/// @return the security descriptor of a file: its owner and access list; empty on failure.
std::vector<char> SecurityOf(HANDLE file)
{
    constexpr SECURITY_INFORMATION wanted = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    ::GetKernelObjectSecurity(file, wanted, nullptr, 0, &size);
    std::vector<char> descriptor(size);
    if (::GetKernelObjectSecurity(file, wanted, descriptor.data(), size, &size) == 0)
        descriptor.clear();
    return descriptor;
}

/// A new file beside another, which is deleted again unless it takes the other's place.
class Temporary
{
public:
    /// @param target the full path of the other file.
    /// @param security descriptor of the new file; null for that of a file of this folder.
    Temporary(const std::wstring& target, void* security, DWORD attributes) : m_target(target)
    {
        SECURITY_ATTRIBUTES securityAttributes{sizeof securityAttributes, security, 0};
        const std::wstring folder = target.substr(0, target.rfind(L'\\') + 1);
        do { // the prefix identifies what a killed process left behind; the time makes the name unique
            m_name = folder + L".qmUtility-" +
                     std::to_wstring(std::chrono::steady_clock::now().time_since_epoch().count());
            m_old = m_name + L".old";
            m_file.Reset(::CreateFileW(m_name.c_str(), GENERIC_WRITE, 0, &securityAttributes, CREATE_NEW,
                                       attributes, nullptr));
        } while (!m_file && ::GetLastError() == ERROR_FILE_EXISTS);
        m_isThere = bool(m_file);
    }
    Temporary(const Temporary&) = delete;
    ~Temporary()
    {
        const DWORD error = ::GetLastError();
        m_file.Close();
        if (m_isThere)
            ::DeleteFileW(m_name.c_str());
        ::SetLastError(error);
    }

    explicit operator bool() const { return bool(m_file); }
    operator HANDLE() const { return m_file; }

    /// Takes the place of no file.
    bool Move()
    {
        m_isThere = !m_file.Close() || ::MoveFileExW(m_name.c_str(), m_target.c_str(),
                                                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0;
        return !m_isThere;
    }

    /// Takes the place of the other file, and of what the file system stores about it. For an instant the
    /// path names neither.
    bool Replace()
    {
        m_isThere = !m_file.Close() ||
                    ::ReplaceFileW(m_target.c_str(), m_name.c_str(), m_old.c_str(), 0, nullptr, nullptr) == 0;
        if (!m_isThere)
            ::DeleteFileW(m_old.c_str());
        else { // it may have got no further than to rename the other file
            const DWORD error = ::GetLastError();
            ::MoveFileExW(m_old.c_str(), m_target.c_str(), MOVEFILE_WRITE_THROUGH);
            ::SetLastError(error);
        }
        return !m_isThere;
    }

private:
    const std::wstring& m_target;
    std::wstring m_name;
    std::wstring m_old; ///< the other file's name while it is replaced
    Handle m_file;
    bool m_isThere = false;
};

/// Replaces a file in its place, or creates one.
/// @param old the file that is replaced, if any.
bool ReplaceAt(const std::wstring& target, const Handle& old, DWORD attributes, std::string_view bytes)
{
    std::vector<char> security = old ? SecurityOf(old) : std::vector<char>();
    if (target.empty() || (old && security.empty()))
        return false;
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ENCRYPTED |
                           FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    Temporary file(target, old ? security.data() : nullptr, attributes & kept);
    return file && WriteAll(file, bytes) && Synchronise(file) && (old ? file.Replace() : file.Move());
}

/// @return whether an error says that something may not be done, as opposed to one that says that it went
///   wrong.
bool IsRefusal(DWORD error)
{
    constexpr DWORD refusals[] = {ERROR_INVALID_FUNCTION,  ERROR_ACCESS_DENIED,
                                  ERROR_SHARING_VIOLATION, ERROR_NOT_SUPPORTED,
                                  ERROR_INVALID_PARAMETER, ERROR_UNABLE_TO_REMOVE_REPLACED,
                                  ERROR_INVALID_OWNER,     ERROR_PRIVILEGE_NOT_HELD};
    return std::ranges::count(refusals, error) != 0;
}

bool ReplaceContent(const SystemPath& path, std::string_view bytes)
{
    // What may not be written in place may not be replaced.
    const Handle old(Open(path, GENERIC_WRITE, OPEN_EXISTING));
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(path.Get());
    const bool isFound = attributes != INVALID_FILE_ATTRIBUTES;
    if (!old && (error != ERROR_FILE_NOT_FOUND || isFound)) { // a link without a target is not replaced
        ::SetLastError(error);
        return false;
    }
    if (old && ::GetFileType(old) != FILE_TYPE_DISK)
        return WriteAll(old, bytes);

    const bool isLink = isFound && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const std::wstring target = GetPath([&](wchar_t* full, DWORD size) {
        return isLink ? ::GetFinalPathNameByHandleW(old, full, size, 0)
                      : ::GetFullPathNameW(path.Get(), size, full, nullptr);
    });
    if (!old)
        return ReplaceAt(target, old, 0, bytes);
    BY_HANDLE_FILE_INFORMATION information;
    if (::GetFileInformationByHandle(old, &information) == 0)
        return false;
    const bool isAlone = information.nNumberOfLinks == 1;
    return (isAlone && ReplaceAt(target, old, information.dwFileAttributes, bytes)) ||
           ((!isAlone || IsRefusal(::GetLastError())) && Overwrite(path, old, bytes));
}

} // namespace

void ExpectUse(void* /*memory*/, std::size_t /*size*/) {} // large pages need a privilege

std::optional<Buffer<char>> File::Read(const SystemPath& path, std::error_code& error)
{
    const Handle file(Open(path, GENERIC_READ, OPEN_EXISTING));
    std::optional<Buffer<char>> bytes(0);
    const bool isRead = file && ReadAll(file, *bytes);
    error = isRead ? std::error_code() : LastError(path);
    return isRead ? std::move(bytes) : std::nullopt;
}

bool File::Replace(const SystemPath& path, std::string_view bytes, std::error_code& error)
{
    const bool isReplaced = ReplaceContent(path, bytes);
    error = isReplaced ? std::error_code() : LastError(path);
    return isReplaced;
}

File::File(const SystemPath& path)
    : m_handle(reinterpret_cast<std::intptr_t>(Open(path, GENERIC_WRITE, CREATE_ALWAYS)))
{}

File::~File()
{
    if (IsOpen())
        ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
}

bool File::Write(std::string_view bytes)
{
    if (IsOpen() && !WriteAll(reinterpret_cast<HANDLE>(m_handle), bytes))
        ::CloseHandle(reinterpret_cast<HANDLE>(std::exchange(m_handle, Closed)));
    return IsOpen();
}

} // namespace platform
