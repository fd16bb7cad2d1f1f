#pragma once

/// @file
/// The root of the framework's classes, and its exceptions, as much as is used of them; see
/// `CString.h` for when they are the framework's own.
///
/// Exceptions are thrown and caught as pointers. Who catches one ends its life with `Delete`.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

class CArchive;
class CDumpContext;

/// What is known of a class at run time.
struct CRuntimeClass
{
    const char* m_lpszClassName; ///< the class's name
    int m_nObjectSize;           ///< in bytes
};

/// The root of the framework's classes. Objects are not copied.
class QMFRAMEWORK_API CObject
{
public:
    /// @return the description of the nearest class, towards the root, that has one; here that is always
    ///   `CObject`. Nothing to be released.
    virtual CRuntimeClass* GetRuntimeClass() const;

    virtual ~CObject();
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// Stores the object's state in an archive, or loads it from there. An object of this class has none.
    /// @param archive says whether to store or to load.
    virtual void Serialize(CArchive& archive);

    /// Checks the object; of this class there is nothing to check.
    virtual void AssertValid() const;

    /// Prints the object's state; one of this class has none.
    virtual void Dump(CDumpContext& context) const;

protected:
    CObject() = default;
};

/// The root of the framework's exceptions.
class QMFRAMEWORK_API CException : public CObject
{
public:
    /// Ends the life of an exception that was caught. It must not be used any more.
    void Delete();
};

/// An argument that the callee cannot take, such as an index out of range.
class QMFRAMEWORK_API CInvalidArgException : public CException
{};

/// Throws a `CInvalidArgException*`. Who catches it calls its `Delete`.
[[noreturn]] QMFRAMEWORK_API void AfxThrowInvalidArgException();

#endif
