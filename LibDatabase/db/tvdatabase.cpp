#include "LibDatabase/db/tvdatabase.h"

#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbloader.h"
#include "LibDatabase/db/tvdbreader.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibDatabase/db/tvdbwriter.h"

#include "LibComms/thread/tvmutexlocker.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvcachename.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbhost.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDatabase/db/tvresolvecontainers.h"
#include "LibDate/date/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvserialform.h"
#include "LibObject/object/tvserialisationentry.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <ostream>
#include <set>
#include <sstream>
#include <unordered_set>

int TVDatabase::TVErrC_NotADatabase = tv_builtin_code("TVDatabase::TVErrC_NotADatabase");
int TVDatabase::TVErrC_InvalidDatabaseVersion =
    tv_builtin_code("TVDatabase::TVErrC_InvalidDatabaseVersion");
int TVDatabase::TVErrC_NewerAppVersion = tv_builtin_code("TVDatabase::TVErrC_NewerAppVersion");
int TVDatabase::TVErrC_ObjectIdNotFound = tv_builtin_code("TVDatabase::TVErrC_ObjectIdNotFound");
int TVDatabase::TVErrC_CorruptDatabase = tv_builtin_code("TVDatabase::TVErrC_CorruptDatabase");
int TVDatabase::TVErrC_CorruptPartial = tv_builtin_code("TVDatabase::TVErrC_CorruptPartial");
int TVDatabase::TVErrC_Intermediate = tv_builtin_code("TVDatabase::TVErrC_Intermediate");
int TVDatabase::TVErrC_DatabaseNotLoaded = tv_builtin_code("TVDatabase::TVErrC_DatabaseNotLoaded");
int TVDatabase::TVErrC_DatabaseReadOnly = tv_builtin_code("TVDatabase::TVErrC_DatabaseReadOnly");
int TVDatabase::TVErrC_DatabaseAlreadyLoaded =
    tv_builtin_code("TVDatabase::TVErrC_DatabaseAlreadyLoaded");
int TVDatabase::TVErrC_WrongAppType = tv_builtin_code("TVDatabase::TVErrC_WrongAppType");
int TVDatabase::TVErrC_InvalidObjectSpec = tv_builtin_code("TVDatabase::TVErrC_InvalidObjectSpec");
int TVDatabase::TVErrC_UnfilledVariables = tv_builtin_code("TVDatabase::TVErrC_UnfilledVariables");
int TVDatabase::TVErrC_ExtraVariables = tv_builtin_code("TVDatabase::TVErrC_ExtraVariables");
int TVDatabase::TVErrC_InvalidChild = tv_builtin_code("TVDatabase::TVErrC_InvalidChild");
int TVDatabase::TVErrC_NotAvailable =
    allocate_code("TVDatabase::TVErrC_NotAvailable", "That service is not in this version.");

const char* const TVDatabase::C_DlmtDBIdentifier = TVDBFormat::C_Identifier;
const char* const TVDatabase::C_DlmtVersion = TVDBFormat::C_Version;
const char* const TVDatabase::C_DlmtTransaction = TVDBFormat::C_Transaction;
const char* const TVDatabase::C_ObjectStart = TVDBFormat::C_ObjectStart;
const char* const TVDatabase::C_IdMgr = "IM";
const char* const TVDatabase::C_DatabaseService = "Database";
const char* const TVDatabase::C_DatabaseTag = "DB";
const char* const TVDatabase::C_SpecTag = "OS";
const char* const TVDatabase::C_QueryTag = "QU";
const char* const TVDatabase::C_NoteTag = "NO";
const char* const TVDatabase::C_DefaultSpecName = "Default";
const char* const TVDatabase::C_TopLevelSpecName = "TopLevel";
const char* const TVDatabase::C_DefaultChildName = "Object";
const char* const TVDatabase::C_SystemReference = "SYSTEM";
const char* const TVDatabase::C_LastKnownGood = TVDBFileNames::C_LastKnownGoodExt;
const char* const TVDatabase::C_DatabasePartDirParam = "PartDir";
const char* const TVDatabase::C_DatabasePartDirLabel = "Temporary File Location";
const char* const TVDatabase::C_CreateTrigger = "create";
const char* const TVDatabase::C_EditTrigger = "edit";

namespace {
constexpr const char* C_ClassName = "TVDatabase";
const TVObjectPreReg s_preReg(C_ClassName, TVDatabase::create_tvobject);


// The host through which the objects below this layer ask their database.
// The change question comes from TVUpdateChecker's thread, so it is
// answered by the process-wide counter, which is atomic: with one database
// per process it is the database's own clock, at worst early by a tick.
class Host : public TVDBHost
{
public:
    long last_db_update(const TVDatabase&) const override
    {
        return TVUpdateCounter::get_counter(false);
    }
    long last_structure_change(const TVDatabase& db) const override
    {
        return db.get_last_structure_change();
    }
    void record_structure_change(TVDatabase& db, long counter) const override
    {
        db.set_last_structure_change(counter);
    }
    int appfileversion(const TVDatabase& db) const override { return db.get_appfileversion(); }
    void object_updated(const TVDatabase* db, int id) const override;
};
const Host s_host;
const bool s_hostInstalled = (TVDBHost::install(&s_host), true);


// The databases alive: a copy of an object may outlive its database and
// still be stamped, and must not reach it then.
std::mutex& live_lock()
{
    static std::mutex lock;
    return lock;
}
std::set<const TVDatabase*>& live_databases()
{
    static std::set<const TVDatabase*> live;
    return live;
}

void Host::object_updated(const TVDatabase* db, int id) const
{
    const std::lock_guard<std::mutex> lock(live_lock());
    if (live_databases().count(db) != 0)
        const_cast<TVDatabase*>(db)->note_changed(id);
}

} // namespace

const TVDBHost* tv_database_host()
{
    return &s_host;
}

// ---- Construction ----------------------------------------------------------------

TVDatabase::TVDatabase() : d(std::make_unique<TVDatabaseImpl>())
{
    {
        const std::lock_guard<std::mutex> lock(live_lock());
        live_databases().insert(this);
    }
    d->m_writeTime = TVDateUtils::blank_date();
    // The database's own id is the first it gives out: always 0.
    const int id = allocate_id();
    set_id(id, TVDateUtils::now(), true);
    register_tvobject();
}

TVDatabase::~TVDatabase()
{
    stop_recalc_thread();
    {
        const std::lock_guard<std::mutex> lock(live_lock());
        live_databases().erase(this);
    }
    clear_objects();
}

void TVDatabase::set_defaults(bool constructing)
{
    TVDBObject::set_defaults(constructing);
    const int id = get_id();
    d = std::make_unique<TVDatabaseImpl>();
    d->m_writeTime = TVDateUtils::blank_date();
    d->m_uniqueId = id + 1;
}

int TVDatabase::create_tvobject(TVObject*& out, const TVObject* source)
{
    out = nullptr;
    auto made = std::make_unique<TVDatabase>();
    if (source != nullptr) {
        const int result = made->derived_assign(*source, 0);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    }
    out = made.release();
    return TVErrC_ok;
}

void TVDatabase::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDatabase::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "UnID", TVSrlValue<int>(d->m_uniqueId)));
        TV_PASS_ON(serialise_string(in, out, prefix, "AppType", d->m_appType, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "Comment", d->m_comment, false));
        TV_PASS_ON(serialise_value(in, out, prefix, "AFV",
                                   TVSrlValue<int>(d->m_appFileVersion, 0), true));
        TV_PASS_ON(serialise_value(in, out, prefix, "FC", TVSrlValue<int>(d->m_featureCount, 0),
                                   true));
        // Old files kept the backup count here; it lives in the parameters now.
        if (in != nullptr)
            TV_PASS_ON(serialise_value(in, nullptr, prefix, "BackupCount",
                                       TVSrlValue<int>(d->m_backupCount)));
        // "External" (the links to shared copies) comes with the sync layer;
        // until then its entries are kept as read.
        TV_PASS_ON(serialise_value(in, out, prefix, "WriteTime",
                                   TVSrlValue<TVDate>(d->m_writeTime, TVDate::C_Blank)));
        TV_PASS_ON(serialise_string(in, out, prefix, "WriteHost", d->m_writeHost, false));
        // The type stands twice in every file; readers of both places exist.
        TV_PASS_ON(serialise_string(in, out, prefix, "AppType", d->m_appType, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "AppRelease", d->m_appRelease, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "NoteURL", d->m_noteURL, false));
        TV_PASS_ON(TVDBObject::serialise(in, out, prefix, version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDatabase::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDatabase " << d->m_completeFile << " type " << d->m_appType << " objects "
        << d->m_objects.size() << " next id " << d->m_uniqueId
        << (d->m_isLoaded ? " loaded" : "") << (d->m_readOnly ? " read-only" : "") << '\n';
    d->m_index.dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const TVDatabase& db)
{
    db.dump(out, 0);
    return out;
}

// ---- Objects and ids ---------------------------------------------------------------

int TVDatabase::allocate_id()
{
    const int id = d->m_uniqueId++;
    mark_changed(TVLOCATION, true);
    return id;
}

int TVDatabase::next_id() const
{
    return d->m_uniqueId;
}

TVDBObject* TVDatabase::get_object_by_id(int id) const
{
    return id == get_id() ? const_cast<TVDatabase*>(this) : find_object(id);
}

TVDBObject* TVDatabase::find_object(int id) const
{
    const auto it = d->m_map.find(id);
    return it == d->m_map.end() ? nullptr : it->second;
}

int TVDatabase::get_nobjects() const
{
    return d->m_objects.size();
}

TVDBObject* TVDatabase::get_object_by_index(int index) const
{
    return index >= 0 && index < d->m_objects.size() ? d->m_objects[index] : nullptr;
}

int TVDatabase::resolve_containers()
{
    const int orphans = ::resolve_containers(*this, this, d->m_objects,
                                             [this](int id) { return find_object(id); });
    // Objects at the top have no parent to hand them the database.
    for (TVDBObject* object : d->m_objects)
        if (object->get_parent() == nullptr)
            object->set_parent_ptr(nullptr, this);
    d->m_isResolved = true;
    containers_resolved();
    return orphans;
}

void TVDatabase::clear_objects()
{
    clear_containers();
    for (TVDBObject* object : d->m_objects)
        object->clear_containers();
    for (TVDBObject* object : d->m_retired)
        object->clear_containers();
    d->m_map.clear();
    d->m_objects.clear();
    d->m_retired.clear();
    d->m_journal.invalidate();
}

int TVDatabase::add_object(TVDBObject* object, TVDBObject* parent,
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
        object->set_id(id >= 0 ? id : allocate_id(), TVDateUtils::now(), true);
        const bool newSpec = object->uses_spec() && spec_id > 0 && spec_id != object->get_spec_id();
        if (spec_id >= 0)
            object->set_spec_id(spec_id);
        if (parent != nullptr) {
            const std::string tag =
                member_tag.empty() ? spec_child_member_tag(*parent) : member_tag;
            object->set_parent(parent, container_tag, tag, this);
            TVDBContainerBase* container = parent->get_container(container_tag);
            if (container == nullptr)
                return tverror(TVErrC_NullPointer, TVLOCATION,
                               "The parent container tag %s could not be located.",
                               container_tag.c_str());
            TV_PASS_ON(container->add_object(object));
            if (TVDBContainerBase* all = get_container(C_DatabaseAllTag + container_tag))
                TV_PASS_ON(all->add_object(object));
            if (TVDBContainerBase* any = parent->get_container(std::string()))
                TV_PASS_ON(any->add_object(object));
            parent->mark_changed(TVLOCATION, true);
            set_last_structure_change(parent->get_last_update());
        } else {
            object->set_parent_ptr(nullptr, this);
            mark_changed(TVLOCATION, true);
            set_last_structure_change(get_last_update());
        }
        d->m_objects.add(owned.release());
        d->m_map[object->get_id()] = object;
        TV_PASS_ON(object->on_add());
        // Children carried inside the record come alive here, with new ids.
        while (TVDBObject* child = object->extract_managed_child())
            TV_PASS_ON(add_object(child, object, child->get_container_tag(),
                                  child->get_member_tag(), child->get_spec_id(), "", -1));
        if (newSpec) {
            // A spec that doesn't fit only warns: the object stays, as typed.
            const int result = apply_objectspec_to_db(object, spec_id, true);
            if (istverr(result))
                return tv_trail_return(result, TVLOCATION);
        }
        TV_PASS_ON(apply_active_note(*object));
        TV_PASS_ON(run_trigger(*object, C_CreateTrigger));
        if (!operation.empty())
            TV_PASS_ON(complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::extract_object(int id, TVDBObject*& copy, bool resolve)
{
    copy = nullptr;
    try {
        TV_PASS_ON(check_writable(true));
        TVDBObject* object = find_object(id);
        if (object == nullptr)
            return tverror(TVErrC_ObjectIdNotFound, TVLOCATION,
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
            TV_PASS_ON(extract_object(child->get_id(), childCopy, false));
            if (childCopy == nullptr)
                return tverror(TVErrC_NullPointer, TVLOCATION, "Could not extract child object.");
            owned->add_managed_child(childCopy);
        }
        TVDBObject* parent = object->get_parent();
        TVDBObject& changed = parent != nullptr ? *parent : static_cast<TVDBObject&>(*this);
        changed.mark_changed(TVLOCATION, true);
        set_last_structure_change(changed.get_last_update());
        TV_PASS_ON(object->on_remove());
        object->set_state(E_StateDeleted);
        TV_PASS_ON(object->commit());
        copy = owned.release();
        if (resolve) {
            resolve_containers();
            TV_PASS_ON(update_vars(-1, true));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::delete_object(int id, const std::string& operation)
{
    try {
        TV_PASS_ON(check_writable(true));
        TVDBObject* copy = nullptr;
        TV_PASS_ON(extract_object(id, copy, false));
        std::unique_ptr<TVDBObject> owned(copy);
        resolve_containers();
        owned->mark_changed(TVLOCATION, true);
        owned.reset();
        // References to the deleted object end.
        for (TVDBObject* object : d->m_objects)
            object->remap_id(id, -1);
        remap_id(id, -1);
        if (!operation.empty())
            TV_PASS_ON(complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::replace_object(int id, TVDBObject* object, const std::string& container_tag,
                               const std::string& member_tag, int spec_id,
                               const std::string& operation)
{
    try {
        std::unique_ptr<TVDBObject> owned(object);
        TVDBObject* old = find_object(id);
        if (old == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: obj != nullptr");
        TV_PASS_ON(add_object(owned.release(), old->get_parent(), container_tag, member_tag,
                              spec_id, "", id));
        // One object per id in memory as in the file: the new one stands in
        // the old one's place, where a read-back of the two would leave it.
        const int oldAt = d->m_objects.index_of(old);
        TVDBObject* added = d->m_objects.remove(d->m_objects.index_of(find_object(id)));
        TVDBObject* gone = d->m_objects.remove(oldAt);
        TV_PASS_ON(d->m_objects.insert(oldAt, added));
        // A window may still hold the old object: it stays alive, out of
        // the file, until the objects are next dropped (an undo, an unload).
        d->m_retired.add(gone);
        // The vector moved under the journal's tail: the next write looks at all.
        d->m_journal.invalidate();
        resolve_containers();
        if (!operation.empty())
            TV_PASS_ON(complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::clone_object(int id, TVDBObject*& copy) const
{
    copy = nullptr;
    try {
        const TVDBObject* object = get_object_by_id(id);
        if (object == nullptr)
            return tverror(TVErrC_ObjectIdNotFound, TVLOCATION,
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

int TVDatabase::clone_external_object(const TVDBObject& object, int next_id)
{
    try {
        const int id = object.get_id();
        if (id >= d->m_uniqueId)
            d->m_uniqueId = id + 1;
        if (next_id >= 0 && d->m_uniqueId < next_id)
            d->m_uniqueId = next_id;
        // On a collision the incoming object keeps its id: it may be
        // referred to by the other objects that come with it.
        if (TVDBObject* existing = get_object_by_id(id))
            TV_PASS_ON(change_id(*existing, allocate_id()));
        std::unique_ptr<TVObject> made(object.clone_class());
        auto* clone = dynamic_cast<TVDBObject*>(made.get());
        if (clone == nullptr)
            return tverror(TVErrC_DynamicCast, TVLOCATION, "Failed to create new object.");
        made.release();
        d->m_objects.add(clone);
        d->m_map[id] = clone;
        // The stamps stay the other database's; the next partial save takes it.
        clone->mark_update();
        TV_PASS_ON(update_vars(id, true));
        resolve_containers();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::reparent(TVDBObject* object, TVDBObject* parent, const std::string& container_tag)
{
    if (object == nullptr)
        return tverror(TVErrC_NullPointer, TVLOCATION, "The supplied object was nullptr.");
    object->set_parent(parent, container_tag, object->get_member_tag(), this);
    resolve_containers();
    return TVErrC_ok;
}

int TVDatabase::change_id(TVDBObject& object, int new_id)
{
    const int oldId = object.get_id();
    const auto it = d->m_map.find(oldId);
    if (it == d->m_map.end() || it->second != &object)
        return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: extObj != nullptr");
    d->m_map.erase(it);
    // The create id keeps the first id: with the create time it names the
    // object in every copy of the database.
    object.set_id(new_id, object.get_create_time(), false);
    object.mark_update();
    d->m_map[new_id] = &object;
    for (TVDBObject* other : d->m_objects)
        other->remap_id(oldId, new_id);
    return TVErrC_ok;
}

int TVDatabase::merge_objects(int from, int to)
{
    try {
        TVDBObject* into = get_object_by_id(from);
        if (into == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: from != nullptr");
        const TVDBObject* gone = get_object_by_id(to);
        if (gone == nullptr)
            return tvwarning(TVErrC_Assert, TVLOCATION, "Assertion Failed: to != nullptr");
        TV_PASS_ON(append_values(*into, *gone));
        for (TVDBObject* object : d->m_objects)
            object->remap_id(to, from);
        remap_id(to, from);
        // The children moved by id; the delete below follows the tree.
        resolve_containers();
        TV_PASS_ON(delete_object(to, "Merged object"));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Edits -----------------------------------------------------------------------------

TVDBObject* TVDatabase::find_for_edit(int id) const
{
    if (!d->m_isLoaded) {
        tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                d->m_completeFile.c_str());
        return nullptr;
    }
    TVDBObject* object = get_object_by_id(id);
    if (object == nullptr)
        tverror(TVErrC_ObjectIdNotFound, TVLOCATION, "Could not edit - Object ID %d not found.",
                id);
    return object;
}

int TVDatabase::edit_object(int id, bool created, int lock_id)
{
    try {
        TVDBObject* object = find_for_edit(id);
        if (object == nullptr)
            return tverrorvalue();
        TV_PASS_ON(object->edit(lock_id, created));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::commit_object(int id, const std::string& operation)
{
    try {
        TVDBObject* object = find_for_edit(id);
        if (object == nullptr)
            return tverrorvalue();
        TV_PASS_ON(update_vars(id, true));
        TV_PASS_ON(run_trigger(*object, C_EditTrigger));
        TV_PASS_ON(object->commit());
        if (!operation.empty())
            TV_PASS_ON(complete_operation(operation));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::revert_object(int id)
{
    try {
        TVDBObject* object = find_for_edit(id);
        if (object == nullptr)
            return tverrorvalue();
        TV_PASS_ON(object->revert());
        if (object->get_created())
            TV_PASS_ON(delete_object(id, "Cancel object creation"));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDatabase::object_edited() const
{
    if (is_edited())
        return true;
    for (const TVDBObject* object : d->m_objects)
        if (object->is_edited())
            return true;
    return false;
}

// ---- Undo and redo ---------------------------------------------------------------------

bool TVDatabase::can_undo() const
{
    return d->m_index.can_undo();
}

bool TVDatabase::can_redo() const
{
    return d->m_index.can_redo();
}

std::string TVDatabase::get_undo_operation() const
{
    return d->m_index.get_undo_operation();
}

std::string TVDatabase::get_redo_operation() const
{
    return d->m_index.get_redo_operation();
}

int TVDatabase::undo()
{
    if (!can_undo())
        return TVErrC_ok;
    try {
        TV_PASS_ON(check_writable(true));
        return rebuild_after(d->m_index.undo());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::redo()
{
    if (!can_redo())
        return TVErrC_ok;
    try {
        TV_PASS_ON(check_writable(true));
        return rebuild_after(d->m_index.redo());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// The status is logged; the replay that honours it is the whole of undo.
int TVDatabase::rebuild_after(int index_result)
{
    TV_PASS_ON(index_result);
    TV_PASS_ON(load_base());
    mark_changed(TVLOCATION, true);
    // The rebuilt state is what the files say: nothing is left for the
    // partial file, or the next block would carry the rebuild's values
    // under a transaction that didn't make them.
    mark_partial_written();
    // Linked copies are told of the change by the sync layer.
    return TVErrC_ok;
}

// ---- Layers not in this build -------------------------------------------------------
//
// Each answers TVErrC_NotAvailable, a plain outcome that callers pass on as
// they would ok, but that says nothing was done; import_db, which a user
// asks for by name, reports it as a warning instead.

int TVDatabase::update_vars(int, bool)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::apply_objectspec_to_db(TVDBObject*, int, bool)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::apply_active_note(TVDBObject&)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::run_trigger(TVDBObject&, const std::string&)
{
    return TVErrC_NotAvailable;
}

std::string TVDatabase::spec_child_member_tag(const TVDBObject&) const
{
    return std::string();
}

int TVDatabase::append_values(TVDBObject&, const TVDBObject&)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::pull_all(bool)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::push_all(bool, bool)
{
    return TVErrC_NotAvailable;
}

int TVDatabase::sync_state() const
{
    return 0;
}

bool TVDatabase::is_syncing() const
{
    return false;
}

bool TVDatabase::needs_push() const
{
    // No linked copies: nothing can be behind.
    return false;
}

bool TVDatabase::has_ext_data() const
{
    return false;
}

int TVDatabase::import_db(const std::string& file, const std::string*)
{
    return tvwarning(TVErrC_NotAvailable, TVLOCATION,
                     "Merging %s into this file is not available in this version.",
                     file.empty() ? "data" : file.c_str());
}

int TVDatabase::validate_specs() const
{
    return TVErrC_NotAvailable;
}

int TVDatabase::validate_queries(std::string& script, int& line, std::string& message) const
{
    script.clear();
    line = 0;
    message.clear();
    return TVErrC_NotAvailable;
}

int TVDatabase::periodic_check(long, bool, std::vector<TVCheckIssue>& issues)
{
    issues.clear();
    return TVErrC_NotAvailable;
}

long TVDatabase::get_last_db_update() const
{
    long last = get_last_update();
    for (const TVDBObject* object : d->m_objects)
        last = std::max(last, object->get_last_update());
    return last;
}

bool TVDatabase::db_has_changed_since(long counter) const
{
    return get_last_db_update() > counter;
}

long TVDatabase::get_last_structure_change() const
{
    return d->m_lastStructureChange.load(std::memory_order_relaxed);
}

void TVDatabase::set_last_structure_change(long counter)
{
    d->m_lastStructureChange.store(counter, std::memory_order_relaxed);
}

bool TVDatabase::needs_save() const
{
    return db_has_changed_since(d->m_lastPartialWrite);
}

bool TVDatabase::changed_since_full_write() const
{
    return db_has_changed_since(d->m_lastFullWrite);
}

void TVDatabase::note_changed(int id)
{
    if (d)
        d->m_journal.note(id, d->m_objects.size());
}

// Everything up to now is in the files: the journal starts again.
void TVDatabase::mark_partial_written()
{
    d->m_lastPartialWrite = get_counter(true);
    d->m_journal.restart(d->m_lastPartialWrite, d->m_objects.size());
}

std::vector<const TVDBObject*> TVDatabase::changed_objects(long since) const
{
    // Objects reach the journal through this layer's host; with another
    // one installed (a test's) they can't.
    return d->m_journal.changed(
        since, d->m_objects, [this](int id) { return find_object(id); },
        TVDBHost::installed() == tv_database_host());
}

// ---- Identity ------------------------------------------------------------------------

void TVDatabase::set_app_type(const std::string& type)
{
    d->m_appType = type;
}

const std::string& TVDatabase::get_app_type() const
{
    return d->m_appType;
}

const std::string& TVDatabase::get_comment() const
{
    return d->m_comment;
}

void TVDatabase::set_comment(const std::string& comment)
{
    if (comment == d->m_comment)
        return;
    d->m_comment = comment;
    mark_changed(TVLOCATION, true);
}

int TVDatabase::get_appfileversion() const
{
    return d->m_appFileVersion;
}

int TVDatabase::get_database_file_version() const
{
    return d->m_databaseFileVersion;
}

const TVDate& TVDatabase::get_last_write() const
{
    return d->m_writeTime;
}

const std::string& TVDatabase::get_write_host() const
{
    return d->m_writeHost;
}

bool TVDatabase::is_loaded() const
{
    return d->m_isLoaded;
}

bool TVDatabase::is_read_only() const
{
    return d->m_readOnly;
}

TVDBIndex& TVDatabase::get_index()
{
    return d->m_index;
}

int TVDatabase::check_writable(bool loaded) const
{
    if (d->m_readOnly)
        return tverror(TVErrC_DatabaseReadOnly, TVLOCATION, "This database was opened read-only.");
    if (loaded && !d->m_isLoaded)
        return tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                       d->m_completeFile.c_str());
    return TVErrC_ok;
}

// ---- File names ------------------------------------------------------------------

void TVDatabase::set_filename(const std::string& file)
{
    d->m_completeFile = file;
    d->m_baseFile.clear();
    if (file.empty()) {
        d->m_partialFile.clear();
        d->m_indexFile.clear();
    } else {
        d->m_partialFile = TVDBFileNames::partial(file);
        d->m_indexFile = TVDBFileNames::index(file);
    }
    d->m_index.initialise(d->m_indexFile);
}

const std::string& TVDatabase::get_filename() const
{
    return d->m_completeFile;
}

const std::string& TVDatabase::get_partial_filename() const
{
    return d->m_partialFile;
}

const std::string& TVDatabase::get_base_filename() const
{
    return d->m_baseFile;
}

const std::string& TVDatabase::get_index_filename() const
{
    return d->m_indexFile;
}

std::string TVDatabase::get_cache_name(const std::string& path, bool force)
{
    return ::get_cache_name(path, force);
}

std::string TVDatabase::get_scratch_name(const std::string& path)
{
    return TVDBFileNames::scratch(path);
}

std::string TVDatabase::partial_name(const std::string& path)
{
    return TVDBFileNames::partial(path);
}

// ---- Formats: TVDBWriter and TVDBReader ----------------------------------------------

int TVDatabase::write(std::ostream& out, long since, bool first, const std::string& transaction,
                      int version) const
{
    if (d->m_readOnly)
        return tverror(TVErrC_DatabaseReadOnly, TVLOCATION, "This database was opened read-only.");
    return TVDBWriter(*this).write(out, since, first, transaction, version);
}

int TVDatabase::read(std::istream& in, bool partial, bool skip_saved)
{
    std::ostringstream all;
    all << in.rdbuf();
    return read_text(all.str(), partial, skip_saved);
}

int TVDatabase::read_text(std::string_view text, bool partial, bool skip_saved)
{
    return TVDBReader(*this).read(text, partial, skip_saved);
}

long TVDatabase::get_partial_good_bytes() const
{
    return d->m_partialGoodBytes;
}

std::string TVDatabase::first_object(const std::string& file)
{
    return TVDBReader::first_object(file);
}

// ---- Loading: TVDBLoader ------------------------------------------------------------

int TVDatabase::load(const std::string& file, bool create_file, const std::string& default_file,
                     bool keep_partial, bool use_partial, bool remove_intermediate)
{
    return load(file, false, create_file, default_file, keep_partial, use_partial,
                remove_intermediate, false);
}

int TVDatabase::read(const std::string& file, bool keep_partial, bool use_partial)
{
    return load(file, true, false, std::string(), keep_partial, use_partial, false, true);
}

int TVDatabase::load(const std::string& file, bool read_only, bool create_file,
                     const std::string& default_file, bool keep_partial, bool use_partial,
                     bool remove_intermediate, bool no_clean)
{
    return TVDBLoader(*this).load(file, read_only, create_file, default_file, keep_partial,
                                  use_partial, remove_intermediate, no_clean);
}

int TVDatabase::create(const std::string& file, bool overwrite)
{
    return TVDBLoader(*this).create(file, overwrite);
}

int TVDatabase::unload()
{
    return TVDBLoader(*this).unload();
}

int TVDatabase::load_partial(bool skip_saved)
{
    return TVDBLoader(*this).load_partial(skip_saved);
}

int TVDatabase::load_base()
{
    return TVDBLoader(*this).load_base();
}

int TVDatabase::clean_intermediate(bool keep_partial, bool remove)
{
    return TVDBLoader(*this).clean_intermediate(keep_partial, remove);
}

bool TVDatabase::has_partial(const std::string& file) const
{
    return tv_file_exists(file.empty() ? d->m_partialFile : partial_name(file));
}

// ---- Virtuals of the application ----------------------------------------------------

int TVDatabase::current_appfileversion() const
{
    return 0;
}

int TVDatabase::upgrade_appfileversion()
{
    try {
        const int current = current_appfileversion();
        if (d->m_appFileVersion >= current || d->m_readOnly)
            return TVErrC_ok;
        TV_PASS_ON(TVDBSaver(*this).keep_version_copy(d->m_appFileVersion));
        d->m_appFileVersion = current;
        resolve_containers();
        set_purge_unhandled(true);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::initialise(bool)
{
    resolve_containers();
    // Object specs, queries and the start-up trigger: the schema layer.
    mark_changed(TVLOCATION, true);
    return TVErrC_ok;
}

void TVDatabase::containers_resolved()
{
}

TVDatabase* TVDatabase::create_verification_db(const std::string& app_type) const
{
    auto* db = new TVDatabase;
    db->set_app_type(app_type);
    return db;
}

bool TVDatabase::has_user_data() const
{
    return false;
}

// ---- Saving: TVDBSaver ------------------------------------------------------------------

int TVDatabase::save(bool mark_write, bool manual, bool verify_file)
{
    return TVDBSaver(*this).save(mark_write, manual, verify_file);
}

int TVDatabase::save_partial(const std::string& transaction)
{
    return TVDBSaver(*this).save_partial(transaction);
}

int TVDatabase::verify(const std::string& file, const std::string& app_type) const
{
    return TVDBSaver(const_cast<TVDatabase&>(*this)).verify(file, app_type);
}

int TVDatabase::save_as(const std::string& file, bool manual)
{
    return TVDBSaver(*this).save_as(file, manual);
}

int TVDatabase::save_snapshot(bool manual)
{
    return TVDBSaver(*this).save_snapshot(manual);
}

int TVDatabase::restore_snapshot(const std::string& snapshot, std::string& backup)
{
    return TVDBSaver(*this).restore_snapshot(snapshot, backup);
}

int TVDatabase::replace_file(const std::string& text, const std::string& source)
{
    return TVDBSaver(*this).replace_file(text, source);
}

int TVDatabase::export_db(const std::string& file, std::string* text, bool check,
                          const std::string& app_type)
{
    return TVDBSaver(*this).export_db(file, text, check, app_type);
}

int TVDatabase::remove_partial(const std::string& file)
{
    return TVDBSaver(*this).remove_partial(file);
}

int TVDatabase::complete_operation(const std::string& operation)
{
    try {
        if (!d->m_isLoaded)
            return tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        if (d->m_readOnly)
            return TVErrC_ok;
        // No tick of the clock since the last block: nothing can have
        // changed, and no object need be looked at.
        if (get_counter(false) > d->m_lastPartialWrite)
            TV_PASS_ON(TVDBSaver(*this).append_block(operation, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDatabase::set_backup_count(int count)
{
    d->m_backupCount = count;
}

int TVDatabase::get_backup_count() const
{
    return d->m_backupCount;
}

void TVDatabase::set_autosave(bool on)
{
    d->m_autosave = on;
}

bool TVDatabase::get_autosave() const
{
    return d->m_autosave;
}

// ---- Recalculation thread ----------------------------------------------------------

int TVDatabase::start_recalc_thread(TVThread::E_ThreadPriority priority)
{
    return start_thread(priority);
}

void TVDatabase::signal_recalc_thread()
{
    d->m_recalcSignal.send_signal();
}

void TVDatabase::stop_recalc_thread()
{
    if (!is_running())
        return;
    mark_stop();
    signal_recalc_thread();
    wait_thread();
}

int TVDatabase::background_recalculate()
{
    return TVErrC_ok;
}

void TVDatabase::signal_recalc_complete()
{
    TVMutexLocker lock(d->m_completeLock);
    d->m_recalcComplete = true;
}

bool TVDatabase::recalc_complete()
{
    TVMutexLocker lock(d->m_completeLock);
    const bool complete = d->m_recalcComplete;
    d->m_recalcComplete = false;
    return complete;
}

void TVDatabase::pause_background(bool pause)
{
    signal_recalc_thread();
    TVMutexLocker lock(d->m_pauseLock);
    d->m_pauseBackground = pause;
}

int TVDatabase::recalculate(E_RecalcLevel)
{
    return TVErrC_ok;
}

int TVDatabase::func()
{
    while (!is_stopping()) {
        (void)d->m_recalcSignal.wait_signal(C_RecalcWaitMs);
        if (is_stopping())
            break;
        bool paused = false;
        {
            TVMutexLocker lock(d->m_pauseLock);
            paused = d->m_pauseBackground;
        }
        if (paused)
            continue;
        try {
            const int result = background_recalculate();
            if (istvwarn(result))
                tvlog(TVLOCATION, "Background recalculation failed (%d)", result);
        } catch (const TVErrDetails&) {
            tvlog(TVLOCATION, "Background recalculation failed");
        }
    }
    return TVErrC_ok;
}
