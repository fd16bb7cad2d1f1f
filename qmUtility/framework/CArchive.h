#pragma once

/// @file
/// The framework's binary archive and its exception, as much as is used of them; see `CString.h` for
/// when they are the framework's own.

#include "qmUtility/framework/CObject.h"

#if !defined(QMUTILITY_FRAMEWORK)

#include <cstddef>
#include <streambuf>

/// Objects on their way to or from a stream of bytes. An archive either stores or loads. It belongs to one
/// thread.
class QMFRAMEWORK_API CArchive
{
public:
    /// Which way the bytes go.
    enum Mode
    {
        store = 0, ///< from the objects to the stream
        load = 1,  ///< from the stream to the objects
    };

    /// @param file where the bytes go or come from (in the place of the framework's file object); must
    ///   outlive the archive.
    /// @param mode whether the archive stores or loads.
    CArchive(std::streambuf& file, Mode mode) : m_file(file), m_mode(mode) {}

    /// @return whether the archive stores; if not, it loads.
    bool IsStoring() const { return m_mode == store; }

    /// @return how many bytes were read; fewer than `count` only at the end of the file.
    std::size_t Read(void* bytes, std::size_t count);

    /// @throws CArchiveException* with the cause `genericException` when not all could be written.
    void Write(const void* bytes, std::size_t count);

    /// Stores a count in as few bytes as it needs: below 0xFFFF in 16 bits; else 0xFFFF and, below
    /// 0xFFFFFFFF, 32 bits; else 0xFFFFFFFF once more and 64 bits. The bytes are in the processor's order.
    void WriteCount(std::size_t count);

    /// @throws CArchiveException* with the cause `endOfFile` when the file ends in the count.
    std::size_t ReadCount();

private:
    std::streambuf& m_file;
    Mode m_mode;
};

/// What went wrong with an archive.
class QMFRAMEWORK_API CArchiveException : public CException
{
public:
    /// The causes.
    enum
    {
        none = 0,             ///< no failure
        genericException = 1, ///< not to be told
        endOfFile = 3,        ///< the stream ended too early
        badClass = 6,         ///< an object of this class cannot be read
    };

    /// @param cause one of the causes.
    explicit CArchiveException(int cause = none) : m_cause(cause) {}

    int m_cause; ///< one of the causes
};

/// Throws a `CArchiveException*` with this cause. Who catches it calls its `Delete`.
[[noreturn]] QMFRAMEWORK_API void AfxThrowArchiveException(int cause);

#endif
