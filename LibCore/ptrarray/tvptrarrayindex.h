#ifndef TVPTRARRAYINDEX_H
#define TVPTRARRAYINDEX_H

// TVPtrArrayIndex<T>: a TVPtrArray<T> in insertion order plus an ordered
// map from a string key to the same pointers.
//
// Ownership is the array's (owning if told so at construction); the map
// never owns. Every element has exactly one key, and a pointer is stored
// at most once. find() gives null for an
// unknown key without complaint; get() raises TVErrC_ArrayBounds ("Value
// not found." / "Index %d out of bounds.") and gives null if the error
// doesn't throw.
//
// Copying copies the array (deep for an owning one) and rebuilds the map
// against the copies by position; a map entry whose pointer isn't in the
// array raises TVErrC_MapCorrupt "Corrupt map." and is left out.

#include "LibCore/error/tverror.h"
#include "LibCore/ptrarray/tvptrarray.h"

#include <map>
#include <string>

template <class T>
class TVPtrArrayIndex
{
public:
    using const_iterator = typename TVPtrArray<T>::const_iterator;

    explicit TVPtrArrayIndex(bool owns = false) : m_array(owns) {}

    TVPtrArrayIndex(const TVPtrArrayIndex& other) : m_array(other.m_array)
    {
        rebuild_index(other);
    }

    TVPtrArrayIndex& operator=(const TVPtrArrayIndex& other)
    {
        if (this != &other) {
            m_index.clear();
            m_array = other.m_array;
            rebuild_index(other);
        }
        return *this;
    }

    TVPtrArrayIndex(TVPtrArrayIndex&&) noexcept = default;
    TVPtrArrayIndex& operator=(TVPtrArrayIndex&&) noexcept = default;
    virtual ~TVPtrArrayIndex() = default;

    bool owns() const { return m_array.owns(); }
    int size() const { return m_array.size(); }
    bool empty() const { return m_array.empty(); }

    // Appends item under key. If the key is taken nothing changes and false
    // is returned: the caller still owns item.
    [[nodiscard]] bool add(const std::string& key, T* item)
    {
        if (!m_index.emplace(key, item).second)
            return false;
        m_array.add(item);
        return true;
    }

    T* find(const std::string& key) const
    {
        auto it = m_index.find(key);
        return it == m_index.end() ? nullptr : it->second;
    }

    bool contains(const std::string& key) const { return m_index.count(key) != 0; }

    T* get(const std::string& key) const
    {
        auto it = m_index.find(key);
        if (it == m_index.end()) {
            tverror(TVErrC_ArrayBounds, tvlocation(__FILE__, __LINE__), "Value not found.");
            return nullptr;
        }
        return it->second;
    }

    T* get(int index) const
    {
        if (index < 0 || index >= size()) {
            tverror(TVErrC_ArrayBounds, tvlocation(__FILE__, __LINE__), "Index %d out of bounds.",
                    index);
            return nullptr;
        }
        return m_array[index];
    }

    T* operator[](int index) const { return m_array[index]; }

    // Position in insertion order, or -1.
    int index_of(const std::string& key) const
    {
        auto it = m_index.find(key);
        return it == m_index.end() ? -1 : m_array.index_of(it->second);
    }

    // Drops key and its element (deleted if owned). False if key is unknown.
    bool erase(const std::string& key)
    {
        auto it = m_index.find(key);
        if (it == m_index.end())
            return false;
        int pos = m_array.index_of(it->second);
        m_index.erase(it);
        if (pos >= 0)
            (void)m_array.erase(pos);  // pos is in range
        return true;
    }

    void clear()
    {
        m_index.clear();
        m_array.clear();
    }

    // Keys in key order.
    const std::map<std::string, T*>& index() const { return m_index; }

    const_iterator begin() const { return m_array.begin(); }
    const_iterator end() const { return m_array.end(); }

private:
    void rebuild_index(const TVPtrArrayIndex& other)
    {
        for (const auto& entry : other.m_index) {
            int pos = other.m_array.index_of(entry.second);
            if (pos < 0) {
                tverror(TVErrC_MapCorrupt, tvlocation(__FILE__, __LINE__), "Corrupt map.");
                continue;
            }
            m_index.emplace(entry.first, m_array[pos]);
        }
    }

    TVPtrArray<T> m_array;
    std::map<std::string, T*> m_index;
};

#endif // TVPTRARRAYINDEX_H
