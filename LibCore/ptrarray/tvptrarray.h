#ifndef TVPTRARRAY_H
#define TVPTRARRAY_H

// TVPtrArray<T>: an ordered array of T* that owns its elements if told so
// at construction.
//
// An owning array deletes its elements when they are erased, when it is
// cleared and when it is destroyed; remove() hands an element back to the
// caller, who owns it from then on. A non-owning array never deletes.
// Copying an owning array copy-constructs every element as a T (so don't
// copy an owning array of polymorphic objects); copying a non-owning array
// copies the pointers. Null pointers may be stored.
//
// get() and remove() are checked: a bad index raises TVErrC_ArrayBounds
// and, if the error doesn't throw, gives null. operator[] is unchecked.

#include "LibCore/error/tverror.h"

#include <algorithm>
#include <utility>
#include <vector>

template <class T>
class TVPtrArray
{
public:
    using const_iterator = typename std::vector<T*>::const_iterator;

    explicit TVPtrArray(bool owns = false) : m_owns(owns) {}

    TVPtrArray(const TVPtrArray& other) : m_owns(other.m_owns) { copy_from(other); }

    TVPtrArray& operator=(const TVPtrArray& other)
    {
        if (this != &other) {
            clear();
            m_owns = other.m_owns;
            copy_from(other);
        }
        return *this;
    }

    TVPtrArray(TVPtrArray&& other) noexcept
        : m_owns(other.m_owns), m_item(std::move(other.m_item))
    {
        other.m_item.clear();
    }

    TVPtrArray& operator=(TVPtrArray&& other) noexcept
    {
        if (this != &other) {
            clear();
            m_owns = other.m_owns;
            m_item = std::move(other.m_item);
            other.m_item.clear();
        }
        return *this;
    }

    virtual ~TVPtrArray() { clear(); }

    bool owns() const { return m_owns; }
    int size() const { return static_cast<int>(m_item.size()); }
    bool empty() const { return m_item.empty(); }

    // Appends; an owning array takes ownership.
    void add(T* item) { m_item.push_back(item); }

    // Inserts before index (0 .. size); a bad index raises and, for an
    // owning array, deletes item so that it doesn't leak.
    [[nodiscard]] int insert(int index, T* item)
    {
        if (index < 0 || index > size()) {
            if (m_owns)
                delete item;
            return bounds_error(index, __LINE__);
        }
        m_item.insert(m_item.begin() + index, item);
        return TVErrC_ok;
    }

    T* operator[](int index) const { return m_item[static_cast<size_t>(index)]; }

    T* get(int index) const
    {
        if (index < 0 || index >= size()) {
            bounds_error(index, __LINE__);
            return nullptr;
        }
        return m_item[static_cast<size_t>(index)];
    }

    T* first() const { return m_item.empty() ? nullptr : m_item.front(); }
    T* last() const { return m_item.empty() ? nullptr : m_item.back(); }

    // Position of item, or -1.
    int index_of(const T* item) const
    {
        auto it = std::find(m_item.begin(), m_item.end(), item);
        return it == m_item.end() ? -1 : static_cast<int>(it - m_item.begin());
    }

    // Takes the element out and gives it to the caller, who must delete it.
    [[nodiscard]] T* remove(int index)
    {
        T* item = get(index);
        if (index >= 0 && index < size())
            m_item.erase(m_item.begin() + index);
        return item;
    }

    // Puts item at index in one step and gives back the element that was
    // there, which the caller owns from now on; null for a bad index (item
    // is then not taken).
    [[nodiscard]] T* replace(int index, T* item)
    {
        if (index < 0 || index >= size()) {
            bounds_error(index, __LINE__);
            return nullptr;
        }
        T* old = m_item[static_cast<size_t>(index)];
        m_item[static_cast<size_t>(index)] = item;
        return old;
    }

    // Empties the array deleting nothing: the caller has taken the elements.
    void release_all() { m_item.clear(); }

    // Takes the element out and deletes it if the array owns it.
    [[nodiscard]] int erase(int index)
    {
        if (index < 0 || index >= size())
            return bounds_error(index, __LINE__);
        T* item = m_item[static_cast<size_t>(index)];
        m_item.erase(m_item.begin() + index);
        if (m_owns)
            delete item;
        return TVErrC_ok;
    }

    void clear()
    {
        if (m_owns)
            for (T* item : m_item)
                delete item;
        m_item.clear();
    }

    // Orders the pointers; less(const T*, const T*) compares elements.
    template <class Less>
    void sort(Less less)
    {
        std::stable_sort(m_item.begin(), m_item.end(), less);
    }

    const_iterator begin() const { return m_item.begin(); }
    const_iterator end() const { return m_item.end(); }

private:
    void copy_from(const TVPtrArray& other)
    {
        m_item.reserve(other.m_item.size());
        try {
            for (T* item : other.m_item)
                m_item.push_back(m_owns && item != nullptr ? new T(*item) : item);
        } catch (...) {
            clear();  // the copies made so far belong to us
            throw;
        }
    }

    int bounds_error(int index, int line) const
    {
        return tverror(TVErrC_ArrayBounds, tvlocation(__FILE__, line),
                       "Element %d out of bounds (%d items)", index, size());
    }

    bool m_owns;
    std::vector<T*> m_item;
};

#endif // TVPTRARRAY_H
