// SPDX-License-Identifier: MIT
#include "qmUtility/platform/Kernel.h"
#include "qmUtility/platform/SystemPath.h"

namespace platform {

SystemPath::SystemPath(const std::string& path) : m_path(m_converted) {
    int size = 0;  // also of a path that is empty or too long
    if (path.size() < Capacity && path.find('\0') == std::string::npos)
        size = ::MultiByteToWideChar(CP_ACP, 0, path.data(), static_cast<int>(path.size()), m_converted,
                                     static_cast<int>(Capacity) - 1);
    m_converted[static_cast<std::size_t>(size)] = L'\0';
}

SystemPath::SystemPath(const std::wstring& path)
    : m_path(path.find(L'\0') == std::wstring::npos ? path.c_str() : L"") {}

}  // namespace platform
