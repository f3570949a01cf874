#ifndef TVDATESET_H
#define TVDATESET_H

// TVDateSet: spans of time, each with a type number, kept as a list sorted
// by start (compare_tvdatesetentry) in which entries of the same type never
// overlap or touch: adding a slot merges it with every entry of its type
// that it meets. With keepduration set, a merge keeps the sum of the
// lengths instead of the union (two bookings of an hour make two hours).
// Entries of different types may overlap.
//
// bulk_add defers the sorting and merging to finish_bulk_add; until then
// the queries that rely on the order (match, safe_find, safe_rfind, start)
// may miss entries.
//
// Serial form, class name "TVDateSet":
//   {TVDateSet
//   !e!entry        ; one line per entry, in order (tvdatesetentry.h)
//   !k!1            ; only when keepduration is set
//   }
// A read settles the entries again, so a file with entries out of order or
// overlapping reads as the sorted, merged list.
//
// Not thread-safe, like every TVObject.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateslot.h"
#include "LibDate/core/tvduration.h"
#include "LibDate/dateset/tvdatesetentry.h"
#include "LibObject/object/tvobject.h"

class TVDateSet : public TVObject
{
public:
    // For subtract: every type.
    static constexpr int C_AnyType = -1;

    TVDateSet();
    TVDateSet(const TVDateSet& other);
    TVDateSet& operator=(const TVDateSet& other);
    ~TVDateSet() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    void set_defaults(bool constructing);

    // Entries and the keepduration flag.
    bool operator==(const TVDateSet& other) const;
    bool operator!=(const TVDateSet& other) const { return !(*this == other); }

    void set_keepduration(bool keep);
    bool get_keepduration() const;

    int size() const;
    // index must be below size().
    const TVDateSetEntry& operator[](int index) const;
    // Out of range does nothing.
    void erase(int index);
    void clear();

    void add(const TVDateSlot& slot, int type);
    // Appends without sorting or merging; finish_bulk_add settles them all.
    void bulk_add(const TVDateSlot& slot, int type);
    void finish_bulk_add();
    // Adds every entry of other.
    void add(const TVDateSet& other);
    // A copy of this set with every entry of other added.
    TVDateSet add_return(const TVDateSet& other) const;
    // Like add, but a slot whose dates can't be made real (correct()) is
    // refused with a warning (TVErrC_InvalidValue), and a slot that runs
    // backward is turned round.
    [[nodiscard]] int safe_add(const TVDateSlot& slot, int type);

    // Takes the slot's time out of the entries of that type (C_AnyType: of
    // all types); an entry may split in two. Touching takes nothing.
    void subtract(const TVDateSlot& slot, int type);
    // Takes out each entry of other from the entries of its type.
    void subtract(const TVDateSet& other);

    // The earliest start, the latest end; invalid for an empty set.
    TVDate start() const;
    TVDate end() const;
    // The sum of the entries' lengths.
    TVDuration duration() const;

    // Whether an entry holds date (TVDateSlot::within).
    bool match(const TVDate& date) const;
    // The first entry that holds date, or -1.
    int safe_find(const TVDate& date) const;
    // The last entry that starts at or before date, or -1.
    int safe_rfind(const TVDate& date) const;
    // How much of the set's time lies after / before date.
    TVDuration time_after(const TVDate& date) const;
    TVDuration time_before(const TVDate& date) const;
    // The entries that share time with range (a moment counts when range
    // holds it), in order.
    std::vector<int> query_range(const TVDateSlot& range) const;
    bool has_range(const TVDateSlot& range) const;
    // Finds the earliest span of length inside within that no entry of any
    // type covers, adds it with type and gives it in out. False, with
    // nothing added, if there is no such span.
    bool allocate(const TVDuration& length, const TVDateSlot& within, int type, TVDateSlot& out);
    // Corrects slots with one real date, drops those with none and, with
    // dropPast, those that ended before now(); then settles the list.
    void cleanup(bool dropPast);

private:
    // Sorts the entries and merges those of a type that meet: the one place
    // where the list is brought back to its rule.
    void settle();

    struct Private;
    std::unique_ptr<Private> d;
};

#endif // TVDATESET_H
