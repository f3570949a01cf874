#ifndef TVIDENTRY_H
#define TVIDENTRY_H

// TVIdEntry: one row of an enumeration, an id and its text. A value.
// Entries order by their text alone (that is what sorting a combo box
// means); == compares both parts.

#include "LibObject/core/tvid.h"

#include <iosfwd>
#include <string>

class TVIdEntry
{
public:
    TVIdEntry() = default;
    TVIdEntry(const TVId& id, const std::string& text);
    virtual ~TVIdEntry() = default;

    TVIdEntry(const TVIdEntry&) = default;
    TVIdEntry& operator=(const TVIdEntry&) = default;

    const TVId& get_id() const { return m_id; }
    const std::string& get_text() const { return m_text; }
    void set_id(const TVId& id) { m_id = id; }
    void set_text(const std::string& text) { m_text = text; }

    bool operator<(const TVIdEntry& other) const { return m_text < other.m_text; }
    bool operator==(const TVIdEntry& other) const;
    bool operator!=(const TVIdEntry& other) const { return !(*this == other); }

    void dump(std::ostream& out, int indent) const;

private:
    TVId m_id;
    std::string m_text;
};

#endif // TVIDENTRY_H
