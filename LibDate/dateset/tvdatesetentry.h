#ifndef TVDATESETENTRY_H
#define TVDATESETENTRY_H

// TVDateSetEntry: one entry of a TVDateSet, a slot and a type number that
// the owner of the set gives meaning to (0 when there is only one kind).
// A plain value.
//
// Stream form (one value of the set's serial form):
//   entry := slot ";" type     ; slot as in tvdateslot.h, type a decimal int
// A missing ";" reads as type 0.

#include <iosfwd>

#include "LibDate/core/tvdateslot.h"

class TVDateSetEntry
{
public:
    TVDateSetEntry() = default;
    TVDateSetEntry(const TVDateSlot& slot, int type) : m_slot(slot), m_type(type) {}
    virtual ~TVDateSetEntry() = default;

    TVDateSetEntry(const TVDateSetEntry&) = default;
    TVDateSetEntry& operator=(const TVDateSetEntry&) = default;

    bool operator==(const TVDateSetEntry& other) const;
    bool operator!=(const TVDateSetEntry& other) const { return !(*this == other); }

    virtual void dump(std::ostream& out, int indent) const;

    TVDateSlot m_slot;
    int m_type = 0;
};

// For sorting: by the slot (start, then end), then by type.
bool compare_tvdatesetentry(const TVDateSetEntry& a, const TVDateSetEntry& b);

std::ostream& operator<<(std::ostream& out, const TVDateSetEntry& entry);
std::istream& operator>>(std::istream& in, TVDateSetEntry& entry);

#endif // TVDATESETENTRY_H
