// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's root class, binary archive and exceptions: the subset used here, or the framework's own
/// classes (see `CString.h`). Exceptions are thrown as pointers; the catcher releases them with `Delete`.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxwin.h>
#else

#include "qmUtility/Export.h"

#include <cstddef>
#include <iosfwd>

inline namespace qmFramework {

class CArchive;
class CDumpContext;

/// Run-time description of a class.
struct CRuntimeClass {
    const char* m_lpszClassName;  ///< class name
    int m_nObjectSize;            ///< size of an object in bytes
};

/// The root class. Its objects cannot be copied. The virtual functions, used or not, are declared in the
/// framework's order; in this class `Serialize`, `AssertValid` and `Dump` do nothing.
class QMFRAMEWORK_API CObject {
public:
    /// @return the description, owned by the class, of the most derived class that has one: here `CObject`.
    virtual CRuntimeClass* GetRuntimeClass() const;

    virtual ~CObject();
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// Stores the object's state in an archive, or loads it from there.
    virtual void Serialize(CArchive& archive);

    virtual void AssertValid() const;                ///< checks the object's state
    virtual void Dump(CDumpContext& context) const;  ///< prints the object's state

protected:
    CObject() = default;
};

/// Stores objects in a stream of bytes, or loads them from one. Belongs to one thread at a time.
class QMFRAMEWORK_API CArchive {
public:
    /// Direction of an archive.
    enum Mode {
        store = 0,  ///< writes to the stream
        load = 1,   ///< reads from the stream
    };

    /// The stream takes the place of the framework's file object and must outlive the archive.
    CArchive(std::streambuf& file, Mode mode) : m_file(file), m_mode(mode) {}

    /// @return whether the archive stores; otherwise it loads.
    bool IsStoring() const { return m_mode == store; }

    /// @return the number of bytes read; fewer than `count` only at the end of the stream.
    std::size_t Read(void* bytes, std::size_t count);

    /// @throws CArchiveException* with the cause `genericException` when not all bytes could be written.
    void Write(const void* bytes, std::size_t count);

    /// Stores a count in 2, 6 or 14 bytes, in the byte order of the processor: below 0xFFFF as 16 bits; below
    /// 0xFFFFFFFF as 0xFFFF and 32 bits; otherwise as 0xFFFF, 0xFFFFFFFF and 64 bits.
    /// @throws CArchiveException* as `Write` does.
    void WriteCount(std::size_t count);

    /// Loads a count that `WriteCount` stored.
    /// @throws CArchiveException* with the cause `endOfFile` when the stream ends within the count.
    std::size_t ReadCount();

private:
    std::streambuf& m_file;
    Mode m_mode;
};

/// Base class of the exceptions.
class QMFRAMEWORK_API CException : public CObject {
public:
    /// Deletes a caught exception.
    void Delete();
};

/// An invalid argument, such as an index out of range.
class QMFRAMEWORK_API CInvalidArgException : public CException {};

/// A failure of an archive.
class QMFRAMEWORK_API CArchiveException : public CException {
public:
    /// The causes.
    enum {
        genericException = 1,  ///< unspecified
        endOfFile = 3,         ///< the stream ended too early
        badClass = 6,          ///< objects of this class cannot be loaded
    };

    explicit CArchiveException(int cause) : m_cause(cause) {}  ///< for one of the causes

    int m_cause;  ///< one of the causes
};

/// Throws a `CInvalidArgException*`.
[[noreturn]] QMFRAMEWORK_API void AfxThrowInvalidArgException();

/// Throws a `CArchiveException*` with one of the causes.
[[noreturn]] QMFRAMEWORK_API void AfxThrowArchiveException(int cause);

}  // namespace qmFramework

#endif
