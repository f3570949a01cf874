#include "LibDatabase/db/tvresolvecontainers.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbobject.h"

#include <string>

const char* const C_DatabaseAllTag = "DB:";

namespace {
void add_to(TVDBContainerBase* container, TVDBObject& object)
{
    // A container of the wrong type for this object simply doesn't list it.
    if (container != nullptr)
        (void)container->add_object(&object);
}

// Returns true when object turned out to be an orphan.
bool resolve_one(TVDBObject& object, TVDBObject& root, TVDatabase* db,
                 const TVDBObjectLookup& find_object)
{
    const int parentId = object.get_parent_id();
    // The top level belongs to the database too: lookups upward end there.
    if (parentId < 0 && &object != &root)
        object.set_parent_ptr(nullptr, db);
    if (parentId < 0 || object.is_deleted())
        return false;
    TVDBObject* parent = parentId == root.get_id() ? &root : find_object(parentId);
    if (parent == nullptr) {
        tvlog(TVLOCATION, "Object %d has no parent %d: kept as deleted", object.get_id(),
              parentId);
        object.set_parent(&root, std::string(), std::string(), db);
        object.set_state(TVDBObject::E_StateDeleted);
        return true;
    }
    const std::string tag = object.get_container_tag();
    add_to(parent->get_container(tag), object);
    add_to(root.get_container(C_DatabaseAllTag + tag), object);
    add_to(parent->get_container(std::string()), object);
    object.set_parent_ptr(parent, db);
    return false;
}
} // namespace

int resolve_containers(TVDBObject& root, TVDatabase* db, const TVPtrArray<TVDBObject>& objects,
                       const TVDBObjectLookup& find_object)
{
    root.clear_containers();
    for (TVDBObject* object : objects)
        if (object != nullptr)
            object->clear_containers();

    int orphans = resolve_one(root, root, db, find_object) ? 1 : 0;
    for (TVDBObject* object : objects)
        if (object != nullptr && resolve_one(*object, root, db, find_object))
            ++orphans;
    return orphans;
}
