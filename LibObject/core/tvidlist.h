#ifndef TVIDLIST_H
#define TVIDLIST_H

// TVIdList: an ordered list of TVId with set-like insertion.
//
// add() and insert() refuse a value that matches a member by the wildcard
// rule of TVId::compare (a negative seq or group on either side matches
// anything), so 5/-1/-1 and 5/2/3 never stand in one list together.
// index_of() and == are exact. Reading past the end gives the empty id, or
// -1 for the single parts; nothing here reports an error. A plain value.

#include "LibObject/core/tvid.h"

#include <iosfwd>
#include <vector>

class TVIdList
{
public:
    using iterator = std::vector<TVId>::iterator;
    using const_iterator = std::vector<TVId>::const_iterator;
    using reverse_iterator = std::vector<TVId>::reverse_iterator;
    using const_reverse_iterator = std::vector<TVId>::const_reverse_iterator;

    TVIdList() = default;
    TVIdList(const TVIdList&) = default;
    TVIdList& operator=(const TVIdList&) = default;
    virtual ~TVIdList() = default;

    void clear() { m_ids.clear(); }
    int size() const { return static_cast<int>(m_ids.size()); }

    // Appends unless a member matches.
    void add(int id, int seq, int group) { add(TVId(id, seq, group)); }
    void add(const TVId& value);
    // Puts the value first unless a member matches.
    void insert(const TVId& value);
    // add() for each member of other, in order.
    void append(const TVIdList& other);

    // Whether a member matches; a negative part is a wildcard.
    bool is_marked(int id, int seq, int group) const { return is_marked(TVId(id, seq, group)); }
    bool is_marked(const TVId& value) const;

    // Erases every member whose id equals id and whose seq and group equal
    // the arguments wherever those are non-negative. Only the arguments are
    // wildcards here, not the members.
    void remove(int id, int seq, int group);
    void remove(const TVId& value) { remove(value.get_id(), value.get_seq(), value.get_group()); }

    // Exact position, or -1.
    int index_of(const TVId& value) const;

    TVId first() const;
    int first_id() const;
    int first_sequence() const;
    int sequence(int index) const;
    TVId operator[](int index) const;
    // Does nothing for a bad index.
    void replace(const TVId& value, int index);
    // Takes the first member out; the empty id when there is none.
    TVId pop();

    std::vector<int> get_ids() const;
    // Replaces the contents with id/-1/-1/ for each number, duplicates dropped.
    void set_ids(const std::vector<int>& ids);

    bool operator==(const TVIdList& other) const { return m_ids == other.m_ids; }
    bool operator!=(const TVIdList& other) const { return !(*this == other); }

    iterator begin() { return m_ids.begin(); }
    iterator end() { return m_ids.end(); }
    const_iterator begin() const { return m_ids.begin(); }
    const_iterator end() const { return m_ids.end(); }
    const_iterator cbegin() const { return m_ids.cbegin(); }
    const_iterator cend() const { return m_ids.cend(); }
    reverse_iterator rbegin() { return m_ids.rbegin(); }
    reverse_iterator rend() { return m_ids.rend(); }
    const_reverse_iterator rbegin() const { return m_ids.rbegin(); }
    const_reverse_iterator rend() const { return m_ids.rend(); }
    const_reverse_iterator crbegin() const { return m_ids.crbegin(); }
    const_reverse_iterator crend() const { return m_ids.crend(); }

    virtual void dump(std::ostream& out, int indent) const;

private:
    bool in_range(int index) const { return index >= 0 && index < size(); }

    std::vector<TVId> m_ids;
};

#endif // TVIDLIST_H
