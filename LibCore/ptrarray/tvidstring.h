#ifndef TVIDSTRING_H
#define TVIDSTRING_H

// TVIdString: an ordered list of (id, text) rows, the form in which every
// enumeration reaches a combo box or a form. A value; rows keep the order
// in which they were added until sort() orders them by text (stable, so
// equal texts keep their order).
//
// Lookups never raise: an unknown row gives TVId::C_Empty or "", an
// unknown id or text gives -1, "" or TVId::C_Empty. Ids match exactly (==),
// not by wildcard; the first matching row wins.

#include "LibCore/ptrarray/tvidentry.h"

#include <iosfwd>
#include <string>
#include <vector>

class TVIdString
{
public:
    using const_iterator = std::vector<TVIdEntry>::const_iterator;

    TVIdString() = default;
    virtual ~TVIdString() = default;

    TVIdString(const TVIdString&) = default;
    TVIdString& operator=(const TVIdString&) = default;

    void add(const TVId& id, const std::string& text);
    void append(const TVIdString& other);
    int size() const { return static_cast<int>(m_entry.size()); }
    void clear() { m_entry.clear(); }

    TVId get_row_id(int row) const;
    const std::string& get_row_name(int row) const;
    int get_id_row(const TVId& id) const;
    const std::string& get_id_name(const TVId& id) const;
    TVId get_name_id(const std::string& text) const;

    void sort();

    bool operator==(const TVIdString& other) const { return m_entry == other.m_entry; }
    bool operator!=(const TVIdString& other) const { return !(*this == other); }

    const_iterator begin() const { return m_entry.begin(); }
    const_iterator end() const { return m_entry.end(); }

    void dump(std::ostream& out, int indent) const;

private:
    std::vector<TVIdEntry> m_entry;
};

#endif // TVIDSTRING_H
