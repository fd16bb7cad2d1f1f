// SPDX-License-Identifier: MIT
#include "qmUtility/framework/ExtensionModule.h"

#include <memory>
#include <mutex>

namespace {

std::mutex mutex;
std::vector<std::unique_ptr<const CDynLinkLibrary>> libraries;

}  // namespace

BOOL qmFramework::AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HINSTANCE module) {
    state = {1, module};
    return 1;
}

void qmFramework::AfxTermExtensionModule(AFX_EXTENSION_MODULE& state) {
    const std::lock_guard lock(mutex);
    std::erase_if(libraries, [&state](const auto& library) { return library->m_hModule == state.hModule; });
    state = {};
}

CDynLinkLibrary::CDynLinkLibrary(const AFX_EXTENSION_MODULE& state) : m_hModule(state.hModule) {
    const std::lock_guard lock(mutex);
    libraries.emplace_back(this);
}

std::vector<HINSTANCE> qmFramework::ExtensionModules() {
    const std::lock_guard lock(mutex);
    std::vector<HINSTANCE> modules;
    modules.reserve(libraries.size());
    for (const auto& library : libraries) modules.push_back(library->m_hModule);
    return modules;
}
