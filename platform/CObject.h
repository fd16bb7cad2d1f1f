#pragma once

/// @file
/// The root of the framework's classes, and its exceptions, as much as is used of them; see
/// `platform/CString.h` for when they are the framework's own.
///
/// Exceptions are thrown and caught as pointers. Who catches one ends its life with `Delete`.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "platform/Export.h"

class CArchive;
class CDumpContext;

/// What is known of a class at run time.
struct CRuntimeClass
{
    const char* m_lpszClassName;
    int m_nObjectSize; ///< in bytes
};

class QMPLATFORM_API CObject
{
public:
    /// @return the description of the nearest class, towards the root, that has one; here that is always
    ///   `CObject`. Nothing to be released.
    virtual CRuntimeClass* GetRuntimeClass() const;

    virtual ~CObject();
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// Stores the object's state in an archive, or loads it from there. An object of this class has none.
    virtual void Serialize(CArchive& archive);

    /// @name Object checks
    /// They check and print nothing of an object of this class.
    /// @{
    virtual void AssertValid() const;
    virtual void Dump(CDumpContext& context) const;
    /// @}

protected:
    CObject() = default;
};

class QMPLATFORM_API CException : public CObject
{
public:
    /// Ends the life of an exception that was caught.
    void Delete();
};

/// An argument that the callee cannot take, such as an index out of range.
class QMPLATFORM_API CInvalidArgException : public CException
{};

[[noreturn]] QMPLATFORM_API void AfxThrowInvalidArgException();

#endif
