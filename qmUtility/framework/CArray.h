#pragma once

/// @file
/// The framework's growable array, as much as is used of it; see `CString.h` for when it is the
/// framework's own.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxtempl.h>
#else

#include "qmUtility/framework/CArchive.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

/// An array that owns its elements and grows as they are added.
///
/// **Growth.** An array without storage gets what it needs; one whose storage is full, an eighth of its size
/// more, but no less than 4 elements and no more than 1024. References to elements end there. The storage is
/// kept until the array is empty.
///
/// **Failure.** A bad index or size is thrown as `CInvalidArgException*`, lack of memory as std::bad_alloc,
/// and a size that no memory could hold as std::length_error. The elements are then what they were; the
/// storage may have grown, which ends references.
///
/// **Threads.** An array belongs to one thread at a time.
///
/// @tparam TYPE can be constructed without arguments, copied and assigned.
/// @tparam ARG_TYPE how elements are passed in.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject
{
    static_assert(!std::is_same_v<TYPE, bool>, "std::vector would pack them, and not give out references");

public:
    /// @return the number of elements.
    std::ptrdiff_t GetSize() const { return static_cast<std::ptrdiff_t>(m_elements.size()); }

    /// Takes elements off the end, or adds some there that are constructed without arguments.
    /// @param size the new number of elements; 0 also releases the storage.
    void SetSize(std::ptrdiff_t size)
    {
        if (size < 0)
            AfxThrowInvalidArgException();
        if (size == 0)
            return RemoveAll();
        const auto count = static_cast<std::size_t>(size);
        const std::size_t capacity = m_elements.capacity();
        if (capacity == 0)
            m_elements.reserve(count);
        else if (count > capacity) {
            const auto step = std::clamp<std::size_t>(m_elements.size() / 8, 4, 1024);
            m_elements.reserve(std::max(count, capacity + step));
        }
        m_elements.resize(count);
    }

    /// Destroys all elements and releases the storage.
    void RemoveAll() { std::vector<TYPE>().swap(m_elements); }

    /// Appends an element, which is copied in by assignment.
    /// @param element may stand in this very array.
    /// @return its index.
    std::ptrdiff_t Add(ARG_TYPE element)
    {
        const TYPE copy = element; // the array moves
        const std::ptrdiff_t index = GetSize();
        SetSize(index + 1);
        try {
            m_elements.back() = copy;
        } catch (...) {
            m_elements.pop_back();
            throw;
        }
        return index;
    }

    /// @return the element at an index, from 0 to one less than the size.
    TYPE& operator[](std::ptrdiff_t index) { return m_elements[Checked(index)]; }
    /// @copydoc operator[]
    const TYPE& operator[](std::ptrdiff_t index) const { return m_elements[Checked(index)]; }

    /// @return the first of the elements, which stand in a row; null without storage.
    const TYPE* GetData() const { return m_elements.data(); }

    /// Stores the number of elements (`CArchive::WriteCount`) and then their bytes as they lie in memory, or
    /// loads an array that was stored so.
    ///
    /// The number is taken at its word: one that is corrupt may claim all the memory there is before the
    /// first element is read. Load only from sources that are trusted.
    /// @param archive says whether to store or to load.
    /// @throws CArchiveException* with the cause `genericException` when not all could be stored. When
    ///   loading, with the cause `endOfFile` when the file ends in the number, which leaves the array as it
    ///   was, or before the last element: the array then has the new size, and behind the elements that were
    ///   read, the last perhaps in part, stand those from before, or new ones. With the cause `badClass` when
    ///   there are elements that bytes alone do not make (such as strings, whose bytes are pointers): the
    ///   array is then as it was.
    /// @throws CInvalidArgException* when loading a number above `PTRDIFF_MAX`, std::length_error for one
    ///   that no memory could hold, std::bad_alloc for lack of memory: the elements are then what they were.
    void Serialize(CArchive& archive) override
    {
        if (archive.IsStoring()) {
            archive.WriteCount(m_elements.size());
            archive.Write(m_elements.data(), m_elements.size() * sizeof(TYPE));
            return;
        }
        const auto count = static_cast<std::ptrdiff_t>(archive.ReadCount());
        if constexpr (std::is_trivially_copyable_v<TYPE>) {
            SetSize(count);
            const std::size_t bytes = m_elements.size() * sizeof(TYPE);
            if (archive.Read(m_elements.data(), bytes) != bytes)
                AfxThrowArchiveException(CArchiveException::endOfFile);
        } else if (count != 0)
            AfxThrowArchiveException(CArchiveException::badClass);
        else
            RemoveAll();
    }

private:
    std::size_t Checked(std::ptrdiff_t index) const
    {
        if (index < 0 || index >= GetSize())
            AfxThrowInvalidArgException();
        return static_cast<std::size_t>(index);
    }

    std::vector<TYPE> m_elements;
};

#endif
