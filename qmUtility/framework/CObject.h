// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's root class and its exceptions: the subset used here, or the framework's own classes (see
/// `CString.h`).
///
/// Exceptions are thrown and caught as pointers; the catcher releases them with `Delete`.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

inline namespace qmFramework {

class CArchive;
class CDumpContext;

/// Run-time description of a class.
struct CRuntimeClass {
    const char* m_lpszClassName;  ///< class name
    int m_nObjectSize;            ///< size of an object in bytes
};

/// The root class. Its objects cannot be copied. The virtual functions, used or not, are declared in the
/// framework's order.
class QMFRAMEWORK_API CObject {
public:
    /// @return the description of the most derived class that has one, which here is always `CObject`; owned
    ///   by the class.
    virtual CRuntimeClass* GetRuntimeClass() const;

    virtual ~CObject();
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// Stores the object's state in an archive, or loads it from there; does nothing in this class.
    /// @param archive stores or loads.
    virtual void Serialize(CArchive& archive);

    /// Checks the object's state; does nothing in this class.
    virtual void AssertValid() const;

    /// Prints the object's state; does nothing in this class.
    virtual void Dump(CDumpContext& context) const;

protected:
    CObject() = default;
};

/// Base class of the exceptions.
class QMFRAMEWORK_API CException : public CObject {
public:
    /// Deletes a caught exception.
    void Delete();
};

/// An invalid argument, such as an index out of range.
class QMFRAMEWORK_API CInvalidArgException : public CException {};

/// Throws a `CInvalidArgException*`, which the catcher releases with `Delete`.
[[noreturn]] QMFRAMEWORK_API void AfxThrowInvalidArgException();

}  // namespace qmFramework

#endif
