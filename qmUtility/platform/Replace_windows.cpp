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

/// @return the security descriptor of a file: its owner and access list; empty on failure.
std::vector<char> SecurityOf(HANDLE file) {
    constexpr SECURITY_INFORMATION wanted = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    ::GetKernelObjectSecurity(file, wanted, nullptr, 0, &size);
    std::vector<char> descriptor(size);
    if (::GetKernelObjectSecurity(file, wanted, descriptor.data(), size, &size) == 0) descriptor.clear();
    return descriptor;
}

/// A new file beside another, which is deleted again unless it takes the other's place.
class Temporary {
public:
    /// @param target the full path of the other file.
    /// @param security descriptor of the new file; null for that of a file of this folder.
    Temporary(const std::wstring& target, void* security, DWORD attributes) : m_target(target) {
        SECURITY_ATTRIBUTES securityAttributes{sizeof securityAttributes, security, 0};
        const std::wstring folder = target.substr(0, target.rfind(L'\\') + 1);
        do {  // the prefix identifies what a killed process left behind; the time makes the name unique
            m_name = folder + L".qmUtility-" +
                     std::to_wstring(std::chrono::steady_clock::now().time_since_epoch().count());
            m_old = m_name + L".old";
            m_file = Handle(::CreateFileW(m_name.c_str(), GENERIC_WRITE, 0, &securityAttributes, CREATE_NEW,
                                          attributes, nullptr));
        } while (!m_file && ::GetLastError() == ERROR_FILE_EXISTS);
        m_isThere = bool(m_file);
    }
    Temporary(const Temporary&) = delete;
    ~Temporary() {
        const LastErrorPreserver preserver;
        m_file.Close();
        if (m_isThere) ::DeleteFileW(m_name.c_str());
    }

    const Handle& Get() const { return m_file; }

    /// Takes the place of no file.
    bool Move() {
        m_isThere = !m_file.Close() || ::MoveFileExW(m_name.c_str(), m_target.c_str(),
                                                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0;
        return !m_isThere;
    }

    /// Takes the place of the other file and what is stored about it. The path names neither for an instant.
    bool Replace() {
        m_isThere = !m_file.Close() ||
                    ::ReplaceFileW(m_target.c_str(), m_name.c_str(), m_old.c_str(), 0, nullptr, nullptr) == 0;
        if (!m_isThere)
            ::DeleteFileW(m_old.c_str());
        else {  // it may have got no further than to rename the other file
            const LastErrorPreserver preserver;
            ::MoveFileExW(m_old.c_str(), m_target.c_str(), MOVEFILE_WRITE_THROUGH);
        }
        return !m_isThere;
    }

private:
    const std::wstring& m_target;
    std::wstring m_name;
    std::wstring m_old;  ///< the other file's name while it is replaced
    Handle m_file;
    bool m_isThere = false;
};

/// @return whether an error says that something is not permitted or supported, not that it went wrong.
bool IsRefusal(DWORD error) {
    constexpr DWORD refusals[] = {ERROR_INVALID_FUNCTION,  ERROR_ACCESS_DENIED,
                                  ERROR_SHARING_VIOLATION, ERROR_NOT_SUPPORTED,
                                  ERROR_INVALID_PARAMETER, ERROR_UNABLE_TO_REMOVE_REPLACED,
                                  ERROR_INVALID_OWNER,     ERROR_PRIVILEGE_NOT_HELD};
    return std::ranges::count(refusals, error) != 0;
}

}  // namespace

Replacement ReplaceWhole(const SystemPath& path, const Handle& old, std::string_view bytes) {
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(path.Get());
    const bool isFound = attributes != INVALID_FILE_ATTRIBUTES;
    if (!old && (error != ERROR_FILE_NOT_FOUND || isFound)) {  // a link without a target is not replaced
        ::SetLastError(error);
        return Replacement::Failed;
    }
    if (old && ::GetFileType(old) != FILE_TYPE_DISK)
        return old.Write(bytes) ? Replacement::Done : Replacement::Failed;

    const bool isLink = isFound && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const auto getTarget = [&](wchar_t* full, DWORD size) {  // the length, or the size needed; 0 on failure
        return isLink ? ::GetFinalPathNameByHandleW(old, full, size, 0)
                      : ::GetFullPathNameW(path.Get(), size, full, nullptr);
    };
    std::wstring target(getTarget(nullptr, 0), L'\0');
    target.resize(getTarget(target.data(), static_cast<DWORD>(target.size())));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (old && ::GetFileInformationByHandle(old, &information) == 0) return Replacement::Failed;
    if (old && information.nNumberOfLinks != 1) return Replacement::Refused;

    std::vector<char> security = old ? SecurityOf(old) : std::vector<char>();
    if (!target.empty() && (!old || !security.empty())) {
        constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ENCRYPTED |
                               FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
        Temporary temporary(target, old ? security.data() : nullptr, information.dwFileAttributes & kept);
        const Handle& file = temporary.Get();
        if (file && file.Write(bytes) && file.Synchronise() && (old ? temporary.Replace() : temporary.Move()))
            return Replacement::Done;
    }
    return old && IsRefusal(::GetLastError()) ? Replacement::Refused : Replacement::Failed;
}

void ExpectUse(void* /*memory*/, std::size_t /*size*/) {}  // large pages need a privilege

}  // namespace platform
