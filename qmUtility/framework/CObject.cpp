// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CObject.h"

CRuntimeClass* CObject::GetRuntimeClass() const {
    static CRuntimeClass runtimeClass = {"CObject", sizeof(CObject)};
    return &runtimeClass;
}

CObject::~CObject() = default;

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext&) const {}

void CException::Delete() { delete this; }

void qmFramework::AfxThrowInvalidArgException() {
    throw new CInvalidArgException;  // NOLINT(*-throw-by-value*,cert-err*): the framework throws pointers
}
