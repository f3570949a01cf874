#ifndef TVRESOLVECONTAINERS_H
#define TVRESOLVECONTAINERS_H

// resolve_containers: rebuilds the tree of a database from the parent ids
// that its objects carry, after every load and every structural replay.
//
// The database calls it with itself as root (it is a TVDBObject), its own
// TVDatabase pointer, its objects in file order and its id lookup; it then
// calls its own containers_resolved(). Every container of the root and of
// the objects is emptied first, then each live object with a parent is
// added to up to three containers:
//
//   1. the parent's container of the object's container tag,
//   2. the root's container "DB:" + that tag (a database-wide listing is
//      declared by creating such a container, nothing more),
//   3. the parent's container with the empty tag.
//
// A deleted object takes part in none. An object whose parent is missing
// is an orphan: it goes to the root with empty tags and becomes deleted,
// so that the loss is recorded rather than silent. Each orphan is logged.

#include "LibCore/ptrarray/tvptrarray.h"

#include <functional>

class TVDatabase;
class TVDBObject;

// The object of that id, or null; the root need not be known to it.
using TVDBObjectLookup = std::function<TVDBObject*(int id)>;

// The tag prefix of the root's database-wide containers.
extern const char* const C_DatabaseAllTag; // "DB:"

// Returns the number of orphans found. Objects are not owned.
int resolve_containers(TVDBObject& root, TVDatabase* db, const TVPtrArray<TVDBObject>& objects,
                       const TVDBObjectLookup& find_object);

#endif // TVRESOLVECONTAINERS_H
