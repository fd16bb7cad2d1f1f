// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheckAPI.h"

CArray<CQMFileCheck, const CQMFileCheck&> CQMFileCheckAPI::m_files;
bool CQMFileCheckAPI::m_bMonitor = false;

CQMFileCheckAPI::CQMFileCheckAPI() { Initialize(); }

CQMFileCheckAPI& CQMFileCheckAPI::operator=(const CQMFileCheckAPI&) = default;
CQMFileCheckAPI::~CQMFileCheckAPI() = default;

bool CQMFileCheckAPI::Initialize() {
    m_bMonitor = false;
    m_files.RemoveAll();
    return true;
}

bool CQMFileCheckAPI::AddWatchDog(CString path) {
    m_files.Add(CQMFileCheck(path));
    return true;
}

bool CQMFileCheckAPI::Check() {
    if (!m_bMonitor) return false;
    // Deliberately does not stop at the first file that is modified: a poll costs the same, whatever changed.
    bool isAnyModified = false;
    for (std::ptrdiff_t i = 0; i != m_files.GetSize(); ++i) isAnyModified |= m_files[i].CheckModified();
    return isAnyModified;
}

void CQMFileCheckAPI::Enable(bool bEnable) { m_bMonitor = bEnable; }
