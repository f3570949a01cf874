#include "LibDatabase/db/tvdbeditor.h"

#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvresolvecontainers.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvtrail.h"

#include <memory>

TVDBEditor::TVDBEditor(TVDatabase& db) : m_db(db), d(db.d.get())
{
}

int TVDBEditor::add_object(TVDBObject* object, TVDBObject* parent,
                           const std::string& container_tag, const std::string& member_tag,
                           int spec_id, const std::string& operation, int id)
{
    try {
        if (object == nullptr)
            return tverror(TVErrC_NullPointer, TVLOCATION, "The supplied object was nullptr.");
        std::unique_ptr<TVDBObject> owned(object);
        if (parent != nullptr && container_tag.empty())
            return tverror(TVErrC_NullPointer, TVLOCATION,
                           "The container tag must be set if a parent is assigned.");
        if (parent != nullptr && parent->get_id() < 0)
            return tverror(TVErrC_NullPointer, TVLOCATION,
                           "The parent object of %d does not have a valid ID set (%d).",
                           object->get_id(), parent->get_id());
        // To the microsecond: with the create id it tells this object from
        // one made under the same id on another device in the same second.
        object->set_id(id >= 0 ? id : m_db.allocate_id(), TVDateUtils::unow(), true);
        const bool newSpec = object->uses_spec() && spec_id > 0 && spec_id != object->get_spec_id();
        if (spec_id >= 0)
            object->set_spec_id(spec_id);
        if (parent != nullptr) {
            const std::string tag =
                member_tag.empty() ? m_db.spec_child_member_tag(*parent) : member_tag;
            object->set_parent(parent, container_tag, tag, &m_db);
            TVDBContainerBase* container = parent->get_container(container_tag);
            if (container == nullptr)
                return tverror(TVErrC_NullPointer, TVLOCATION,
                               "The parent container tag %s could not be located.",
                               container_tag.c_str());
            TV_PASS_ON(container->add_object(object));
            if (TVDBContainerBase* all = m_db.get_container(C_DatabaseAllTag + container_tag))
                TV_PASS_ON(all->add_object(object));
            if (TVDBContainerBase* any = parent->get_container(std::string()))
                TV_PASS_ON(any->add_object(object));
            parent->mark_changed(TVLOCATION, true);
            m_db.set_last_structure_change(parent->get_last_update());
        } else {
            object->set_parent_ptr(nullptr, &m_db);
            m_db.mark_changed(TVLOCATION, true);
            m_db.set_last_structure_change(m_db.get_last_update());
        }
        d->m_objects.add(owned.release());
        d->m_map[object->get_id()] = object;
        TV_PASS_ON(object->on_add());
        // Children carried inside the record come alive here, with new ids.
        while (TVDBObject* child = object->extract_managed_child())
            TV_PASS_ON(m_db.add_object(child, object, child->get_container_tag(),
                                  child->get_member_tag(), child->get_spec_id(), "", -1));
        if (newSpec) {
            // A spec that doesn't fit only warns: the object stays, as typed.
            const int result = m_db.apply_objectspec_to_db(object, spec_id, true);
            if (istverr(result))
                return tv_trail_return(result, TVLOCATION);
        }
        TV_PASS_ON(m_db.apply_active_note(*object));
        TV_PASS_ON(m_db.run_trigger(*object, TVDatabase::C_CreateTrigger));
        if (!operation.empty())
            TV_PASS_ON(m_db.complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::extract_object(int id, TVDBObject*& copy, bool resolve)
{
    copy = nullptr;
    try {
        TV_PASS_ON(m_db.check_writable(true));
        TVDBObject* object = m_db.find_object(id);
        if (object == nullptr)
            return tverror(TVDatabase::TVErrC_ObjectIdNotFound, TVLOCATION,
                           "Could not delete - Object ID %d not found.", id);
        TV_PASS_ON(object->edit(-1, false));
        std::unique_ptr<TVObject> made(object->clone_class());
        auto* cast = dynamic_cast<TVDBObject*>(made.get());
        if (cast == nullptr)
            return tverror(TVErrC_Assert, TVLOCATION, "Assertion Failed: objectCopy != nullptr");
        made.release();
        std::unique_ptr<TVDBObject> owned(cast);
        owned->set_parent_ptr(nullptr, object->get_database());
        // Walked from the end and each put first: the copy's children come
        // out in file order.
        for (int i = d->m_objects.size(); i-- > 0;) {
            TVDBObject* child = d->m_objects[i];
            if (child->get_parent() != object || child->is_deleted())
                continue;
            TVDBObject* childCopy = nullptr;
            TV_PASS_ON(m_db.extract_object(child->get_id(), childCopy, false));
            if (childCopy == nullptr)
                return tverror(TVErrC_NullPointer, TVLOCATION, "Could not extract child object.");
            owned->add_managed_child(childCopy);
        }
        TVDBObject* parent = object->get_parent();
        TVDBObject& changed = parent != nullptr ? *parent : static_cast<TVDBObject&>(m_db);
        changed.mark_changed(TVLOCATION, true);
        m_db.set_last_structure_change(changed.get_last_update());
        TV_PASS_ON(object->on_remove());
        object->set_state(TVDBObject::E_StateDeleted);
        TV_PASS_ON(object->commit());
        copy = owned.release();
        if (resolve) {
            m_db.resolve_containers();
            TV_PASS_ON(m_db.update_vars(-1, true));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::delete_object(int id, const std::string& operation)
{
    try {
        TV_PASS_ON(m_db.check_writable(true));
        TVDBObject* copy = nullptr;
        TV_PASS_ON(m_db.extract_object(id, copy, false));
        std::unique_ptr<TVDBObject> owned(copy);
        m_db.resolve_containers();
        owned->mark_changed(TVLOCATION, true);
        owned.reset();
        // References to the deleted object end.
        for (TVDBObject* object : d->m_objects)
            object->remap_id(id, -1);
        m_db.remap_id(id, -1);
        if (!operation.empty())
            TV_PASS_ON(m_db.complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::replace_object(int id, TVDBObject* object, const std::string& container_tag,
                               const std::string& member_tag, int spec_id,
                               const std::string& operation)
{
    try {
        std::unique_ptr<TVDBObject> owned(object);
        TVDBObject* old = m_db.find_object(id);
        if (old == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: obj != nullptr");
        TV_PASS_ON(m_db.add_object(owned.release(), old->get_parent(), container_tag, member_tag,
                              spec_id, "", id));
        // One object per id in memory as in the file: the new one stands in
        // the old one's place, where a read-back of the two would leave it.
        const int oldAt = d->m_objects.index_of(old);
        TVDBObject* added = d->m_objects.remove(d->m_objects.index_of(m_db.find_object(id)));
        TVDBObject* gone = d->m_objects.remove(oldAt);
        TV_PASS_ON(d->m_objects.insert(oldAt, added));
        // A window may still hold the old object: it stays alive, out of
        // the file, until the objects are next dropped (an undo, an unload).
        d->m_retired.add(gone);
        // The vector moved under the journal's tail: the next write looks at all.
        d->m_journal.invalidate();
        m_db.resolve_containers();
        if (!operation.empty())
            TV_PASS_ON(m_db.complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::clone_object(int id, TVDBObject*& copy) const
{
    copy = nullptr;
    try {
        const TVDBObject* object = m_db.get_object_by_id(id);
        if (object == nullptr)
            return tverror(TVDatabase::TVErrC_ObjectIdNotFound, TVLOCATION,
                           "Could not clone - Object ID %d not found.", id);
        std::unique_ptr<TVObject> made(object->clone_class());
        copy = dynamic_cast<TVDBObject*>(made.get());
        if (copy == nullptr)
            return tverror(TVErrC_DynamicCast, TVLOCATION, "Could not duplicate this object.");
        made.release();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::clone_external_object(const TVDBObject& object, int next_id)
{
    try {
        const int id = object.get_id();
        if (id >= d->m_uniqueId)
            d->m_uniqueId = id + 1;
        if (next_id >= 0 && d->m_uniqueId < next_id)
            d->m_uniqueId = next_id;
        // On a collision the incoming object keeps its id: it may be
        // referred to by the other objects that come with it.
        if (TVDBObject* existing = m_db.get_object_by_id(id))
            TV_PASS_ON(m_db.change_id(*existing, m_db.allocate_id()));
        std::unique_ptr<TVObject> made(object.clone_class());
        auto* clone = dynamic_cast<TVDBObject*>(made.get());
        if (clone == nullptr)
            return tverror(TVErrC_DynamicCast, TVLOCATION, "Failed to create new object.");
        made.release();
        d->m_objects.add(clone);
        d->m_map[id] = clone;
        // The stamps stay the other database's; the next partial save takes it.
        clone->mark_update();
        TV_PASS_ON(m_db.update_vars(id, true));
        m_db.resolve_containers();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBEditor::reparent(TVDBObject* object, TVDBObject* parent, const std::string& container_tag)
{
    if (object == nullptr)
        return tverror(TVErrC_NullPointer, TVLOCATION, "The supplied object was nullptr.");
    object->set_parent(parent, container_tag, object->get_member_tag(), &m_db);
    m_db.resolve_containers();
    return TVErrC_ok;
}

int TVDBEditor::change_id(TVDBObject& object, int new_id)
{
    const int oldId = object.get_id();
    const auto it = d->m_map.find(oldId);
    if (it == d->m_map.end() || it->second != &object)
        return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: extObj != nullptr");
    d->m_map.erase(it);
    // The create id keeps the first id: with the create time it names the
    // object in every copy of the database. A new number is only where the
    // object sits here, no change of it or of those that refer to it: their
    // modify times stay, or a copy renumbered on one device would win over
    // a real change made on another. The update stamp still ticks, so that
    // the next write takes them.
    const TVDate modified = object.get_modify_time();
    object.set_id(new_id, object.get_create_time(), false);
    object.set_modify_time(modified);
    d->m_map[new_id] = &object;
    for (TVDBObject* other : d->m_objects) {
        const TVDate before = other->get_modify_time();
        other->remap_id(oldId, new_id);
        other->set_modify_time(before);
    }
    return TVErrC_ok;
}

int TVDBEditor::merge_objects(int from, int to)
{
    try {
        TVDBObject* into = m_db.get_object_by_id(from);
        if (into == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: from != nullptr");
        const TVDBObject* gone = m_db.get_object_by_id(to);
        if (gone == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: to != nullptr");
        TV_PASS_ON(m_db.append_values(*into, *gone));
        for (TVDBObject* object : d->m_objects)
            object->remap_id(to, from);
        m_db.remap_id(to, from);
        // The children moved by id; the delete below follows the tree.
        m_db.resolve_containers();
        TV_PASS_ON(m_db.delete_object(to, "Merged object"));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
