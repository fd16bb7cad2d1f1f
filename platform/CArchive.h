#pragma once

/// @file
/// The framework's binary archive and its exception, as much as is used of them; see `platform/CString.h` for
/// when they are the framework's own.

#include "platform/CObject.h"

#if !defined(QMUTILITY_FRAMEWORK)

#include <cstddef>
#include <streambuf>

/// Objects on their way to or from a stream of bytes. An archive either stores or loads. It belongs to one
/// thread.
class QMPLATFORM_API CArchive
{
public:
    enum Mode
    {
        store = 0,
        load = 1,
    };

    /// @param file where the bytes go or come from (in the place of the framework's file object); must
    ///   outlive the archive.
    CArchive(std::streambuf& file, Mode mode) : m_file(file), m_mode(mode) {}

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

class QMPLATFORM_API CArchiveException : public CException
{
public:
    enum
    {
        none = 0,
        genericException = 1,
        endOfFile = 3,
        badClass = 6, ///< an object of this class cannot be read
    };

    explicit CArchiveException(int cause = none) : m_cause(cause) {}

    int m_cause;
};

[[noreturn]] QMPLATFORM_API void AfxThrowArchiveException(int cause);

#endif
