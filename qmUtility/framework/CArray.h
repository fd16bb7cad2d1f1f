// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The framework's growable array: the subset used here, or the framework's own class (see `CString.h`).

#if defined(QMUTILITY_FRAMEWORK)
#include <afxtempl.h>
#else

#include "qmUtility/framework/CObject.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

inline namespace qmFramework {

/// A dynamic array of contiguous elements.
///
/// **Growth.** The first allocation has the size asked for. Each later one adds an eighth of the array's
/// size, at least 4 and at most 1024 elements, and invalidates references to elements. `RemoveAll` and
/// `SetSize(0)` release the storage.
///
/// **Failure.** Throws `CInvalidArgException*` for an index or size out of range, std::length_error for a
/// size above the maximum, and std::bad_alloc. The elements are unchanged then, but references to them may be
/// invalid. An exception of an assignment in `RemoveAt` can duplicate elements.
///
/// **Threads.** An array belongs to one thread at a time.
///
/// @tparam TYPE default-constructible, copyable and assignable.
/// @tparam ARG_TYPE parameter type for elements.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
    static_assert(!std::is_same_v<TYPE, bool>,
                  "std::vector<bool> packs its elements and returns no references to them");

public:
    /// @return the number of elements.
    std::ptrdiff_t GetSize() const { return static_cast<std::ptrdiff_t>(m_elements.size()); }
    std::ptrdiff_t GetCount() const { return GetSize(); }  ///< @overload
    bool IsEmpty() const { return m_elements.empty(); }    ///< whether there are no elements

    /// Removes elements from the end, or appends default-constructed elements.
    /// @param size new number of elements; 0 also releases the storage.
    void SetSize(std::ptrdiff_t size) {
        if (size < 0) AfxThrowInvalidArgException();
        if (size == 0) return RemoveAll();
        const auto count = static_cast<std::size_t>(size);
        Reserve(count);
        m_elements.resize(count);
    }

    /// Destroys all elements and releases the storage.
    void RemoveAll() { std::vector<TYPE>().swap(m_elements); }

    /// Appends an element, which may be a reference into this array.
    /// @return the index of the new element.
    std::ptrdiff_t Add(ARG_TYPE element) {
        TYPE copy(element);  // before the array grows, which may move the element
        Reserve(m_elements.size() + 1);
        m_elements.push_back(std::move(copy));
        return GetSize() - 1;
    }

    /// @param index from 0 to `GetSize()` - 1.
    /// @return the element at the index.
    TYPE& operator[](std::ptrdiff_t index) { return m_elements[Checked(index)]; }
    const TYPE& operator[](std::ptrdiff_t index) const { return m_elements[Checked(index)]; }  ///< @overload

    /// Removes elements and moves those behind them, by assignment. The storage is kept.
    /// @param index of the first, from 0 to `GetSize()`.
    /// @param count number of elements, all of which exist.
    void RemoveAt(std::ptrdiff_t index, std::ptrdiff_t count = 1) {
        if (index < 0 || count < 0 || count > GetSize() - index) AfxThrowInvalidArgException();
        const auto first = std::next(m_elements.begin(), index);
        m_elements.erase(first, std::next(first, count));
    }

    /// Stores the number of elements (`CArchive::WriteCount`) and then the bytes of the elements in memory,
    /// or loads an array stored this way.
    ///
    /// Load from trusted sources only: the memory for all elements is allocated before the first one is read,
    /// and a corrupt number can request all memory.
    /// @throws CArchiveException* with one of these causes:
    ///   - `genericException`: not all could be stored.
    ///   - `endOfFile`: the stream is too short. The array is unchanged, unless its elements are trivially
    ///     copyable and the stream ends within them: it then has the new size, and elements that were not
    ///     read keep their former or default value.
    ///   - `badClass`: the elements are not trivially copyable, so their bytes do not make up their value.
    ///     Only the number 0 can be loaded; after another the array is unchanged.
    void Serialize(CArchive& archive) override {
        if (archive.IsStoring()) {
            archive.WriteCount(m_elements.size());
            archive.Write(m_elements.data(), m_elements.size() * sizeof(TYPE));
            return;
        }
        const std::size_t count = archive.ReadCount();
        if constexpr (std::is_trivially_copyable_v<TYPE>) {
            if (count > m_elements.max_size())  // no stream holds so many
                AfxThrowArchiveException(CArchiveException::endOfFile);
            SetSize(static_cast<std::ptrdiff_t>(count));
            Load(archive, m_elements.data(), count * sizeof(TYPE));
        } else {
            char skipped[sizeof(TYPE)];
            for (std::size_t i = 0; i != count; ++i) Load(archive, skipped, sizeof skipped);
            if (count != 0) AfxThrowArchiveException(CArchiveException::badClass);
            RemoveAll();
        }
    }

private:
    static void Load(CArchive& archive, void* bytes, std::size_t count) {
        if (archive.Read(bytes, count) != count) AfxThrowArchiveException(CArchiveException::endOfFile);
    }

    std::size_t Checked(std::ptrdiff_t index) const {
        if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
        return static_cast<std::size_t>(index);
    }

    void Reserve(std::size_t count) {
        const std::size_t capacity = m_elements.capacity();
        if (count <= capacity) return;
        const auto step = capacity != 0 ? std::clamp<std::size_t>(m_elements.size() / 8, 4, 1024) : 0;
        m_elements.reserve(std::max(count, capacity + step));
    }

    std::vector<TYPE> m_elements;
};

}  // namespace qmFramework

#endif
