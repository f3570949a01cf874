#ifndef TVDBCHANGEJOURNAL_H
#define TVDBCHANGEJOURNAL_H

// TVDBChangeJournal: which objects of a database changed since its last
// write, so that a partial write (one operation's block) need not look at
// every object.
//
// Every object of the database stamped after the journal's start has its
// id noted, or the journal is full and a write looks at them all. Objects
// put in the database's vector since the start are its tail and go in
// vector order, as a reader appends them. The journal gives up (is full)
// once it holds more ids than a look at every object would cost, and
// whenever the vector is rearranged under it (invalidate).
//
// Main thread only, as the database's writes are.

#include "LibCore/ptrarray/tvptrarray.h"

#include <cstddef>
#include <functional>
#include <vector>

class TVDBObject;

class TVDBChangeJournal
{
public:
    // Below this many ids the journal never gives up.
    static constexpr size_t C_Minimum = 1024;

    // The object of that id was stamped; object_count is the database's.
    void note(int id, int object_count);
    // Everything up to counter is in the files: the journal starts again,
    // with the vector's tail from tail_from.
    void restart(long counter, int tail_from);
    // The vector changed under the journal: the next write looks at all.
    void invalidate();

    // The objects changed since since, in an order that reads back to the
    // same vector: from the journal when it covers since and usable (the
    // objects can reach it), else by a look at every object. find gives
    // the live object of an id, or null.
    std::vector<const TVDBObject*> changed(long since, const TVPtrArray<TVDBObject>& objects,
                                           const std::function<TVDBObject*(int)>& find,
                                           bool usable) const;

private:
    std::vector<int> m_changed;
    long m_from = 0;
    bool m_full = true;
    int m_tailFrom = 0;
};

#endif // TVDBCHANGEJOURNAL_H
