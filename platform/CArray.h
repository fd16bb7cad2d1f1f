#pragma once

/// @file
/// The framework's growable array, as much as is used of it; see `platform/CString.h` for when it is the
/// framework's own.

#if defined(QMUTILITY_FRAMEWORK)
#include <afxtempl.h>
#else

#include "platform/CArchive.h"

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
/// **Failure.** A bad index or size is thrown as `CInvalidArgException*`, lack of memory as std::bad_alloc or
/// std::length_error, and the array is then as it was.
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
    /// @return its index.
    std::ptrdiff_t Add(ARG_TYPE element)
    {
        const TYPE copy = element; // it may stand in this very array, which moves
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

    /// @name Elements by their index
    /// @{
    TYPE& operator[](std::ptrdiff_t index) { return m_elements[Checked(index)]; }
    const TYPE& operator[](std::ptrdiff_t index) const { return m_elements[Checked(index)]; }
    /// @}

    /// @return the first of the elements, which stand in a row; null without storage.
    const TYPE* GetData() const { return m_elements.data(); }

    /// Stores the number of elements (`CArchive::WriteCount`) and then their bytes as they lie in memory, or
    /// loads an array that was stored so.
    /// @throws CArchiveException* when loading, with the cause `endOfFile` when the file ends before the last
    ///   element, and with the cause `badClass` when there are elements that bytes alone do not make (such as
    ///   strings, whose bytes are pointers): the array is then as it was.
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
