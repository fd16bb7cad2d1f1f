// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's binary archive and its exception: the subset used here, or the framework's own classes
/// (see `CString.h`).

#include "qmUtility/framework/CObject.h"

#if !defined(QMUTILITY_FRAMEWORK)

#include <cstddef>
#include <streambuf>

inline namespace qmFramework {

/// Stores objects in a stream of bytes, or loads them from one. Belongs to one thread at a time.
class QMFRAMEWORK_API CArchive {
public:
    /// Direction of an archive.
    enum Mode {
        store = 0,  ///< writes to the stream
        load = 1,   ///< reads from the stream
    };

    /// @param file the stream, which takes the place of the framework's file object; must outlive the
    ///   archive.
    /// @param mode `store` or `load`.
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

/// A failure of an archive.
class QMFRAMEWORK_API CArchiveException : public CException {
public:
    /// The causes.
    enum {
        genericException = 1,  ///< unspecified
        endOfFile = 3,         ///< the stream ended too early
        badClass = 6,          ///< objects of this class cannot be loaded
    };

    /// @param cause one of the causes.
    explicit CArchiveException(int cause) : m_cause(cause) {}

    int m_cause;  ///< one of the causes
};

/// Throws a `CArchiveException*`, which the catcher releases with `Delete`.
[[noreturn]] QMFRAMEWORK_API void AfxThrowArchiveException(int cause);

}  // namespace qmFramework

#endif
