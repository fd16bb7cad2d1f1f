// SPDX-License-Identifier: MIT
#include "qmUtility/filecheck/QMFileCheck.h"

#include "qmUtility/platform/Kernel.h"

#include <cstdio>

CQMFileCheck::CQMFileCheck(CString path) : m_strPath(path) {
    m_strPath.Replace(L'/', L'\\');
    m_strPath.TrimLeft();
    m_strPath.TrimRight();
    Initialize();
}

CQMFileCheck::CQMFileCheck(const CQMFileCheck&) = default;
CQMFileCheck& CQMFileCheck::operator=(const CQMFileCheck&) = default;
CQMFileCheck::~CQMFileCheck() = default;

bool CQMFileCheck::Initialize() { return CFile::GetStatus(m_strPath.GetString(), m_status); }

bool CQMFileCheck::ApplyChanges() { return Initialize(); }

bool CQMFileCheck::CheckDeleted() {
    std::FILE* const file = _wfopen(m_strPath.GetString(), L"rb");
    if (file == nullptr) return true;
    (void)std::fclose(file);
    return false;
}

bool CQMFileCheck::CheckModified() {
    CFileStatus current;
    CFile::GetStatus(m_strPath.GetString(), current);  // on failure the time stays zero
    return current.m_mtime != m_status.m_mtime;
}

bool CQMFileCheck::CheckRenamed() { return true; }
