// CArray<TYPE, ARG_TYPE>: the framework's growable array. Out-of-range access
// through GetAt, SetAt, ElementAt, operator[], RemoveAt and a negative SetSize
// throws CInvalidArgException*, as the framework does in release builds.
// New elements are value-initialised (pointers start null).
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/afxexcept.h"
#include "platform/afxobject.h"

template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
public:
    CArray() = default;

    long long GetSize() const { return static_cast<long long>(m_data.size()); }
    long long GetCount() const { return GetSize(); }
    long long GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return m_data.empty(); }

    // Resizes to newSize; growBy (when not -1) sets how many elements later
    // growth reserves at once.
    void SetSize(long long newSize, long long growBy = -1) {
        if (newSize < 0) AfxThrowInvalidArgException();
        if (growBy >= 0) m_growBy = growBy;
        Grow(static_cast<std::size_t>(newSize));
        m_data.resize(static_cast<std::size_t>(newSize));
    }

    const TYPE& GetAt(long long index) const { return m_data[Check(index)]; }
    TYPE& ElementAt(long long index) { return m_data[Check(index)]; }
    const TYPE& ElementAt(long long index) const { return m_data[Check(index)]; }
    void SetAt(long long index, ARG_TYPE element) { m_data[Check(index)] = element; }
    TYPE& operator[](long long index) { return ElementAt(index); }
    const TYPE& operator[](long long index) const { return GetAt(index); }

    TYPE* GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    const TYPE* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

    // Sets the element at index, growing the array first when index is past the end.
    void SetAtGrow(long long index, ARG_TYPE element) {
        if (index < 0) AfxThrowInvalidArgException();
        if (index >= GetSize()) SetSize(index + 1);
        m_data[static_cast<std::size_t>(index)] = element;
    }

    // Appends and returns the new element's index.
    long long Add(ARG_TYPE element) {
        Grow(m_data.size() + 1);
        m_data.push_back(element);
        return GetSize() - 1;
    }

    void RemoveAll() {
        m_data.clear();
        m_data.shrink_to_fit();
    }

    void RemoveAt(long long index, long long count = 1) {
        if (index < 0 || count < 0 || index + count > GetSize()) AfxThrowInvalidArgException();
        m_data.erase(m_data.begin() + index, m_data.begin() + index + count);
    }

    // Inserts count copies of element before index; an index past the end
    // grows the array to index first.
    void InsertAt(long long index, ARG_TYPE element, long long count = 1) {
        if (index < 0 || count <= 0) AfxThrowInvalidArgException();
        if (index >= GetSize()) SetSize(index);
        Grow(m_data.size() + static_cast<std::size_t>(count));
        m_data.insert(m_data.begin() + index, static_cast<std::size_t>(count), element);
    }

private:
    std::size_t Check(long long index) const {
        if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
        return static_cast<std::size_t>(index);
    }

    // Growth as the framework does it: by growBy elements, or by a
    // size-dependent step (at least 4, at most 1024) when growBy is -1 or 0.
    void Grow(std::size_t needed) {
        if (needed <= m_data.capacity()) return;
        std::size_t step = m_growBy > 0 ? static_cast<std::size_t>(m_growBy) : m_data.size() / 8;
        if (m_growBy <= 0) step = step < 4 ? 4 : (step > 1024 ? 1024 : step);
        std::size_t target = m_data.size() + step;
        // Geometric growth keeps repeated Add linear for long lists.
        if (target < m_data.capacity() * 2) target = m_data.capacity() * 2;
        m_data.reserve(needed > target ? needed : target);
    }

    std::vector<TYPE> m_data;
    long long m_growBy = -1;
};
