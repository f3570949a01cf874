#ifndef TVOBJECTINDEX_H
#define TVOBJECTINDEX_H

// TVObjectIndex: the process-wide map from a class name to its factory,
// reached through tvclassindex().
//
// Filled during static initialisation (one TVObjectPreReg per class) and
// only read after main() starts, so it takes no lock. A class id is the
// position of the class in registration order: it depends on the order of
// static initialisation, differs between builds and must never be written
// to a file. The name is what files hold.
//
// The first registration of a name wins; a later one with the same name
// gets the first one's id and its factory is ignored.

#include "LibCore/application/tvsingleton.h"
#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibObject/object/tvobjectindexentry.h"

#include <cstdio>
#include <string>

class TVObjectIndex : public TVSingleton<TVObjectIndex>
{
public:
    TVObjectIndex();
    // Copies every entry and rebuilds the name map against the copies; a
    // name whose entry isn't in the source's array raises TVErrC_MapCorrupt.
    TVObjectIndex(const TVObjectIndex& other);
    TVObjectIndex& operator=(const TVObjectIndex& other);
    virtual ~TVObjectIndex();

    virtual void print(FILE* out, int indent) const;

    // Gives in id the class id of name, making a new entry if the name is new.
    void append(const std::string& name, TVObjectCreateFn createFn, int& id);

    // Null when unknown.
    const TVObjectIndexEntry* find_name(const std::string& name) const;
    // Null for a negative or unknown id.
    const TVObjectIndexEntry* find_id(int id) const;

    int size() const { return m_entries.size(); }

private:
    TVPtrArrayIndex<TVObjectIndexEntry> m_entries; // owning, in registration order
};

// The index; created at first use, which is during static initialisation.
TVObjectIndex* tvclassindex();

#endif // TVOBJECTINDEX_H
