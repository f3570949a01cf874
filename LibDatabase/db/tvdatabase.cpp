#include "LibDatabase/db/tvdatabase.h"

#include "LibComms/thread/tvmutexlocker.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvcachename.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbhost.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDatabase/db/tvresolvecontainers.h"
#include "LibDate/core/tvdateutils.h"
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

const char* const TVDatabase::C_DlmtDBIdentifier = "TVDatabase:7685";
const char* const TVDatabase::C_DlmtVersion = "Version";
const char* const TVDatabase::C_DlmtTransaction = "Transaction";
const char* const TVDatabase::C_ObjectStart = "O:";
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
const char* const TVDatabase::C_LastKnownGood = ".lkg";
const char* const TVDatabase::C_DatabasePartDirParam = "PartDir";
const char* const TVDatabase::C_DatabasePartDirLabel = "Temporary File Location";
const char* const TVDatabase::C_CreateTrigger = "create";
const char* const TVDatabase::C_EditTrigger = "edit";

namespace {
constexpr const char* C_ClassName = "TVDatabase";
const TVObjectPreReg s_preReg(C_ClassName, TVDatabase::create_tvobject);

constexpr const char* C_PartialExt = ".bpu";
constexpr const char* C_BaseExt = ".tvdbbase";
constexpr const char* C_IndexExt = ".tvdbindex";
constexpr const char* C_NewExt = ".new";
constexpr const char* C_OldExt = ".old";
constexpr const char* C_BackupExt = ".bk";
constexpr const char* C_SafetyExt = ".bkc";
constexpr const char* C_DamagedExt = ".bad";
constexpr const char* C_SavingStatus = "Saving...";
constexpr const char* C_ExportingStatus = "Exporting...";

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

bool starts_with(const std::string& text, const char* prefix)
{
    return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

std::string rtrim(std::string text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    return text;
}

// Byte ranges of a partial file's blocks: a block starts at a top-level
// "!Transaction!" line. Nested objects are skipped by the serial form's
// brace count, so a field of that name inside an object starts nothing.
struct Block {
    size_t begin;
    size_t end;
};

std::vector<Block> split_blocks(std::string_view text)
{
    const std::string mark = std::string("!") + TVDatabase::C_DlmtTransaction + "!";
    std::vector<Block> blocks{{0, 0}};
    bool nested = false;
    bool opened = false;
    int depth = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t eol = text.find('\n', pos);
        eol = eol == std::string::npos ? text.size() : eol + 1;
        const char first = text[pos];
        if (nested) {
            if (first == '{') {
                ++depth;
                opened = true;
            } else if (first == '}') {
                --depth;
            }
            if (opened && depth <= 0)
                nested = false;
        } else if (first == '@' && eol - pos > 2) {
            nested = true;
            opened = false;
            depth = 0;
        } else if (text.compare(pos, mark.size(), mark) == 0 && pos > blocks.back().begin) {
            blocks.back().end = pos;
            blocks.push_back({pos, pos});
        }
        pos = eol;
    }
    blocks.back().end = text.size();
    return blocks;
}
} // namespace

struct TVDatabase::TVDatabaseImpl {
    TVPtrArray<TVDBObject> m_objects{true}; // owning, in file order
    // Objects replace_object took out of the file, kept alive for whoever
    // still points at them until the objects are next dropped.
    TVPtrArray<TVDBObject> m_retired{true};
    std::map<int, TVDBObject*> m_map;
    int m_uniqueId = 0;
    std::string m_appType;
    std::string m_comment;
    int m_appFileVersion = 0;
    int m_featureCount = 0;
    int m_backupCount = C_DefaultBackupCount;
    TVDate m_writeTime;
    std::string m_writeHost;
    std::string m_appRelease;
    std::string m_noteURL;

    long m_lastFullWrite = 0;
    long m_lastPartialWrite = 0;
    bool m_firstPartialWrite = true;
    std::atomic<long> m_lastStructureChange{0};
    std::string m_completeFile;
    std::string m_partialFile;
    std::string m_baseFile;
    std::string m_indexFile;
    bool m_readOnly = false;
    bool m_isLoaded = false;
    bool m_isResolved = false;
    bool m_autosave = true;
    long m_lastBackup = 0; // seconds since 1970
    int m_loadID = 0;
    int m_databaseFileVersion = C_LatestFileVersion;
    TVDBIndex m_index;
    long m_partialGoodBytes = 0;
    // One past the highest transaction tag among the blocks the last
    // partial read applied whole (skipped ones included).
    int m_partialNextTag = 0;
    // The operations those blocks' transaction lines name, by id.
    std::map<int, std::string> m_partialOps;
    // The partial file holds operations that the main file lacks.
    bool m_partialAhead = false;
    // The last load_partial could not open the partial file.
    bool m_partialUnread = false;
    // Records (the database's and objects') the last write wrote.
    int m_recordsWritten = 0;

    // The change journal, so that a partial write need not look at every
    // object: every object of this database stamped after m_journalFrom
    // has its id in m_changed, or m_journalFull is set and a write looks
    // at them all. Objects put in the vector since then are its tail, from
    // m_tailFrom, and go in vector order (a reader appends them so).
    std::vector<int> m_changed;
    long m_journalFrom = 0;
    bool m_journalFull = true;
    int m_tailFrom = 0;

    TVCondVar m_recalcSignal;
    TVMutex m_completeLock;
    bool m_recalcComplete = false; // under m_completeLock
    TVMutex m_pauseLock;
    bool m_pauseBackground = false; // under m_pauseLock
};

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
    d->m_journalFull = true;
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
        d->m_journalFull = true;
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
    if (!d || d->m_journalFull)
        return;
    if (!d->m_changed.empty() && d->m_changed.back() == id)
        return;
    // Past this a look at every object costs no more.
    if (d->m_changed.size() >=
        std::max(C_JournalMinimum, static_cast<size_t>(d->m_objects.size()) / 4)) {
        d->m_journalFull = true;
        d->m_changed.clear();
        return;
    }
    d->m_changed.push_back(id);
}

// Everything up to now is in the files: the journal starts again.
void TVDatabase::mark_partial_written()
{
    d->m_lastPartialWrite = get_counter(true);
    d->m_journalFrom = d->m_lastPartialWrite;
    d->m_changed.clear();
    d->m_journalFull = false;
    d->m_tailFrom = d->m_objects.size();
}

// The objects changed since since, in an order that reads back to the
// same vector: from the journal when it covers since, else by a look at
// every object.
std::vector<const TVDBObject*> TVDatabase::changed_objects(long since) const
{
    std::vector<const TVDBObject*> found;
    // Objects reach the journal through this layer's host; with another
    // one installed (a test's) they can't.
    const bool journal = !d->m_journalFull && since >= d->m_journalFrom &&
                         d->m_tailFrom <= d->m_objects.size() &&
                         TVDBHost::installed() == &s_host;
    if (journal) {
        std::unordered_set<const TVDBObject*> tail;
        for (int i = d->m_tailFrom; i < d->m_objects.size(); ++i)
            tail.insert(d->m_objects[i]);
        std::unordered_set<const TVDBObject*> seen;
        for (int id : d->m_changed) {
            const TVDBObject* object = find_object(id);
            if (object != nullptr && object->has_changed_since(since) && tail.count(object) == 0 &&
                seen.insert(object).second)
                found.push_back(object);
        }
        // Those the file holds already are replaced in place, in any order;
        // new ones are appended by the reader, so they keep vector order.
        for (int i = d->m_tailFrom; i < d->m_objects.size(); ++i)
            if (d->m_objects[i]->has_changed_since(since))
                found.push_back(d->m_objects[i]);
    }
#ifndef NDEBUG
    // Debug builds (the tests) hold every journal against a full look.
    std::vector<const TVDBObject*> all;
    for (const TVDBObject* object : d->m_objects)
        if (object->has_changed_since(since))
            all.push_back(object);
    if (journal) {
        std::vector<const TVDBObject*> a(found);
        std::vector<const TVDBObject*> b(all);
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        if (a != b)
            tvfatal(TVErrC_Assert, TVLOCATION, "Assertion Failed: change journal (%d of %d)",
                    static_cast<int>(a.size()), static_cast<int>(b.size()));
    }
    if (!journal)
        found = all;
#else
    if (!journal)
        for (const TVDBObject* object : d->m_objects)
            if (object->has_changed_since(since))
                found.push_back(object);
#endif
    return found;
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
        d->m_partialFile = partial_name(file);
        d->m_indexFile = get_cache_name(file, true) + C_IndexExt;
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
    return tvapplication()->get_scratch_dir() + "/" + tv_basename(path);
}

std::string TVDatabase::partial_name(const std::string& path)
{
    return get_scratch_name(path) + C_PartialExt;
}

// ---- Formats -------------------------------------------------------------------------

int TVDatabase::write(std::ostream& out, long since, bool first, const std::string& transaction,
                      int version) const
{
    if (d->m_readOnly)
        return tverror(TVErrC_DatabaseReadOnly, TVLOCATION, "This database was opened read-only.");
    return write_records(out, since, first, transaction, version);
}

int TVDatabase::write_records(std::ostream& out, long since, bool first,
                              const std::string& transaction, int version) const
{
    try {
        if (since == 0 || first) {
            if (version != -1 && version != d->m_databaseFileVersion)
                return tverror(TVErrC_InvalidDatabaseVersion, TVLOCATION,
                               "You must use a since value of 0 if you are going to change the "
                               "database file version.");
            out << C_DlmtDBIdentifier << '\n';
            TV_PASS_ON(TVSerialisationEntry::write_tagged_field(C_DlmtVersion, out, "%d",
                                                                d->m_databaseFileVersion));
        }
        const int afv = d->m_appFileVersion;
        if (!transaction.empty() && since > 0) {
            d->m_appRelease = tvapplication()->get_release();
            std::string tag;
            d->m_index.add_transaction(transaction, tag, afv);
            TV_PASS_ON(TVSerialisationEntry::write_tagged_field(C_DlmtTransaction, out, "%s",
                                                                tag.c_str()));
        }
        d->m_recordsWritten = 0;
        if (since == 0 || has_changed_since(since)) {
            TV_PASS_ON(TVSerialisationEntry::write_tagged_class(C_ObjectStart, *this, out, afv));
            ++d->m_recordsWritten;
        }
        if (since > 0) {
            for (const TVDBObject* object : changed_objects(since)) {
                TV_PASS_ON(
                    TVSerialisationEntry::write_tagged_class(C_ObjectStart, *object, out, afv));
                ++d->m_recordsWritten;
            }
            return TVErrC_ok;
        }
        const TVDate cutoff = TVDateUtils::now() - TVDuration(C_TombstoneDays, 0, 0);
        for (const TVDBObject* object : d->m_objects) {
            if (since == 0 && object->is_deleted() && object->get_modify_time() < cutoff)
                continue;
            TV_PASS_ON(TVSerialisationEntry::write_tagged_class(C_ObjectStart, *object, out, afv));
            ++d->m_recordsWritten;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::read(std::istream& in, bool partial, bool skip_saved)
{
    std::ostringstream all;
    all << in.rdbuf();
    return read_text(all.str(), partial, skip_saved);
}

int TVDatabase::read_text(std::string_view text, bool partial, bool skip_saved)
{
    std::string_view rest = text;
    std::string_view first;
    if (!TVSerialForm::next_line(rest, first))
        first = std::string_view();
    const size_t headerBytes = static_cast<size_t>(text.size() - rest.size());
    std::string line(first);
    TVSerialForm::strip_line_ends(line);
    if (rtrim(line) != C_DlmtDBIdentifier) {
        if (partial)
            return TVErrC_okDelete;
        return tverror(TVErrC_NotADatabase, TVLOCATION,
                       "The file you are opening is not a database file.");
    }
    std::vector<Block> blocks = partial ? split_blocks(rest) : std::vector<Block>{{0, rest.size()}};
    bool skip = partial && skip_saved && d->m_index.get_last_save() > 0;
    int maxId = d->m_uniqueId;
    std::string dbText;
    int failed = TVErrC_ok;
    bool thrown = false;
    d->m_partialGoodBytes = static_cast<long>(headerBytes);
    d->m_partialNextTag = 0;
    d->m_partialOps.clear();
    for (const Block& block : blocks) {
        try {
            failed = read_block(rest.substr(block.begin, block.end - block.begin), partial,
                                skip_saved, skip, maxId, dbText);
        } catch (const TVErrDetails&) {
            failed = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(failed))
            break;
        d->m_partialGoodBytes = static_cast<long>(headerBytes + block.end);
    }
    // What was read whole stands, even when a later block failed.
    try {
        if (dbText.empty() && !partial && !istvwarn(failed))
            return tverror(TVErrC_NotADatabase, TVLOCATION,
                           "Could not locate database information in DB file.");
        if (!dbText.empty()) {
            const int result = object_from_string(dbText, d->m_appFileVersion);
            if (istvwarn(result) && !istvwarn(failed))
                return tv_trail_return(result, TVLOCATION);
        }
        d->m_uniqueId = std::max(d->m_uniqueId, maxId);
        resolve_containers();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    if (thrown)
        throw TVErrDetails(*get_tverror()->error_details());
    if (istvwarn(failed))
        return tv_trail_return(failed, TVLOCATION);
    return TVErrC_ok;
}

// One block, all or nothing: its objects are built first and go into the
// database only when every one of them has read.
int TVDatabase::read_block(std::string_view text, bool partial, bool skip_saved, bool& skip,
                           int& max_id, std::string& db_text)
{
    struct Staged {
        std::unique_ptr<TVDBObject> m_object;
        std::string_view m_text;
    };
    // The block's entries; an object's lines stay where they are in text
    // unless they needed cleaning (then they are the entry's value).
    struct Item {
        TVSerialisationEntry m_entry;
        std::string_view m_lines;
    };
    std::vector<Item> items;
    {
        std::string_view in = text;
        for (;;) {
            Item item;
            const int result = item.m_entry.read_entry(in, item.m_lines);
            if (result == TVErrC_okEndOfRecord)
                break;
            TV_PASS_ON(result);
            items.push_back(std::move(item));
        }
    }
    std::vector<Staged> staged;
    std::string blockDb;
    bool localSkip = skip;
    int localMax = max_id;
    int nextTag = d->m_partialNextTag;
    std::map<int, std::string> ops;
    const int lastSave = d->m_index.get_last_save();
    for (const Item& item : items) {
        const TVSerialisationEntry& entry = item.m_entry;
        if (entry.get_entrytype() == TVSerialisationEntry::E_TaggedField) {
            if (entry.get_tag() == C_DlmtVersion) {
                const int version = std::atoi(entry.get_value().c_str());
                if (version != C_LatestFileVersion)
                    return tverror(TVErrC_InvalidDatabaseVersion, TVLOCATION,
                                   "Does not handle database version %d (max version handled "
                                   "is %d)",
                                   version, C_LatestFileVersion);
                d->m_databaseFileVersion = version;
            } else if (entry.get_tag() == C_DlmtTransaction && partial) {
                const std::string& tag = entry.get_value();
                const int id = TVDBTransaction::read_transaction_tag(tag);
                nextTag = std::max(nextTag, id + 1);
                const size_t colon = tag.find(':');
                if (id >= 0 && colon != std::string::npos)
                    ops[id] = tag.substr(colon + 1);
                localSkip = d->m_index.get_status(id) != TVDBTransaction::E_Active ||
                            (skip_saved && id < lastSave);
            }
            continue;
        }
        if (entry.get_entrytype() != TVSerialisationEntry::E_TaggedClass ||
            !starts_with(entry.get_tag(), C_ObjectStart) || localSkip)
            continue;
        // items stays as it is from here: views of its values hold.
        const std::string_view objectText =
            item.m_lines.data() != nullptr ? item.m_lines : std::string_view(entry.get_value());
        TVObject* made = nullptr;
        std::string_view lines = objectText;
        TV_PASS_ON(TVObject::read_class(lines, &made, nullptr, d->m_appFileVersion));
        std::unique_ptr<TVObject> owned(made);
        auto* object = dynamic_cast<TVDBObject*>(made);
        if (object == nullptr)
            return tverror(TVErrC_DynamicCast, TVLOCATION, "Could not cast to a TVDBObject.");
        owned.release();
        const int id = object->get_id();
        if (id == get_id()) {
            // The database's own record; the objects after it read with its version.
            blockDb.assign(objectText.data(), objectText.size());
            if (const auto* db = dynamic_cast<const TVDatabase*>(object))
                d->m_appFileVersion = db->get_appfileversion();
            delete object;
        } else {
            staged.push_back({std::unique_ptr<TVDBObject>(object), objectText});
        }
        if (id >= localMax)
            localMax = id + 1;
    }
    for (Staged& s : staged) {
        if (TVDBObject* existing = find_object(s.m_object->get_id())) {
            // A later version replaces the earlier one in place.
            std::string_view lines = s.m_text;
            TV_PASS_ON(TVObject::read_class(lines, nullptr, existing, d->m_appFileVersion));
        } else {
            TVDBObject* object = s.m_object.release();
            d->m_objects.add(object);
            d->m_map[object->get_id()] = object;
        }
    }
    skip = localSkip;
    max_id = localMax;
    d->m_partialNextTag = nextTag;
    d->m_partialOps.insert(ops.begin(), ops.end());
    if (!blockDb.empty())
        db_text = blockDb;
    return TVErrC_ok;
}

long TVDatabase::get_partial_good_bytes() const
{
    return d->m_partialGoodBytes;
}

// ---- Loading -----------------------------------------------------------------------

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

// A load that fails leaves nothing of the file behind: the next load
// (the file that was open before, say) must not read onto its objects.
int TVDatabase::load(const std::string& file, bool read_only, bool create_file,
                     const std::string& default_file, bool keep_partial, bool use_partial,
                     bool remove_intermediate, bool no_clean)
{
    if (d->m_isLoaded)
        return tverror(TVErrC_DatabaseAlreadyLoaded, TVLOCATION,
                       "Database file %s already loaded.", d->m_completeFile.c_str());
    int result = TVErrC_ok;
    try {
        result = load_steps(file, read_only, create_file, default_file, keep_partial, use_partial,
                            remove_intermediate, no_clean);
    } catch (const TVErrDetails&) {
        forget_contents();
        tv_trail_throw(TVLOCATION);
    }
    if (istvwarn(result))
        forget_contents();
    return result;
}

// Drops the objects and what was read into this database's record, keeping
// the names, the type the application set and the session's flags.
void TVDatabase::forget_contents()
{
    clear_objects();
    clear_unhandled_data();
    d->m_isLoaded = false;
    d->m_isResolved = false;
    d->m_uniqueId = get_id() + 1;
    d->m_comment.clear();
    d->m_appFileVersion = 0;
    d->m_featureCount = 0;
    d->m_writeTime = TVDateUtils::blank_date();
    d->m_writeHost.clear();
    d->m_appRelease.clear();
    d->m_noteURL.clear();
}

int TVDatabase::load_steps(const std::string& file, bool read_only, bool create_file,
                           const std::string& default_file, bool keep_partial, bool use_partial,
                           bool remove_intermediate, bool no_clean)
{
    try {
        const std::string appType = d->m_appType;
        set_filename(file);
        d->m_readOnly = read_only;
        if (file.empty()) {
            d->m_isLoaded = true;
            TV_PASS_ON(initialise(true));
            return TVErrC_ok;
        }
        bool existed = tv_file_exists(file);
        const std::string oldFile = get_cache_name(file, false) + C_OldExt;
        if (!existed && !read_only && tv_file_exists(oldFile)) {
            // A save stopped between its two renames: the old file is whole,
            // and the partial file holds everything done since it was written.
            tvlog(TVLOCATION, "Putting %s back as %s", oldFile.c_str(), file.c_str());
            TV_PASS_ON(tv_rename_file(oldFile, file, true, false));
            TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
            existed = true;
        }
        if (!existed) {
            if (!create_file)
                return tvwarning(TVErrC_FileOpen, TVLOCATION, "The file %s does not exist.",
                                 file.c_str());
            if (default_file.empty())
                return create(file, false);
            TV_PASS_ON(tv_copy_file(default_file, file, true, false));
        }
        if (!no_clean && !read_only)
            TV_PASS_ON(clean_intermediate(keep_partial, remove_intermediate));
        // A log that survived the clean starts from the base of the session
        // that wrote it, not from the main file, which may have been saved
        // since: undo replays onto that base.
        const std::string base = get_cache_name(file, true) + C_BaseExt;
        if (has_partial("") && tv_file_exists(base))
            d->m_baseFile = base;
        TV_PASS_ON(load_file(file));
        if (!appType.empty() && appType != d->m_appType) {
            const std::string found = d->m_appType;
            d->m_appType = appType;
            return tverror(TVErrC_WrongAppType, TVLOCATION,
                           "%s is not a %s data file (it is a %s data file).", file.c_str(),
                           appType.c_str(), found.c_str());
        }
        d->m_isLoaded = true;
        ++d->m_loadID;
        mark_partial_written();
        d->m_lastFullWrite = d->m_lastPartialWrite;
        if (use_partial && has_partial("")) {
            // A damaged session file must not cost the main file: what
            // reads whole is applied, the file as it was is kept aside, the
            // warning stays recorded and the load goes on. One that can't
            // be opened at all stops the load, for the user to decide on.
            const int result = load_partial(true);
            if (d->m_partialUnread)
                return result;
        }
        TV_PASS_ON(upgrade_appfileversion());
        TV_PASS_ON(initialise(true));
        // Setting up marks the database changed; only a replay puts the
        // main file behind.
        if (!d->m_partialAhead)
            d->m_lastFullWrite = get_counter(true);
        // What was loaded is what the files hold: nothing of it is due to
        // the partial file. Otherwise the first write (the one before an
        // undo or redo replays) appends the database record as loaded to
        // the last block, and a redo of that block brings the old values.
        mark_partial_written();
        if (!existed)
            TV_PASS_ON(save(true, true, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::load_file(const std::string& file)
{
    try {
        std::string text;
        TV_PASS_ON(tv_db_read_file(file, text));
        int result = TVErrC_ok;
        try {
            result = read_text(text, false, false);
        } catch (const TVErrDetails&) {
            tvuserinfo_set("%s contains invalid data.", file.c_str());
            tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            get_tverror()->perform_action();
            return tverrorvalue();
        }
        if (istvwarn(result)) {
            if (get_tverror()->is_error()) {
                tvuserinfo_set("%s contains invalid data.", file.c_str());
                tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            }
            return tv_trail_return(result, TVLOCATION);
        }
        if (d->m_appFileVersion > current_appfileversion()) {
            const int newer = tverror(TVErrC_NewerAppVersion, TVLOCATION,
                                      "This file was written by a newer version of %s - Cannot "
                                      "load.",
                                      tvapplication()->get_application().c_str());
            tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            return newer;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDatabase::has_partial(const std::string& file) const
{
    return tv_file_exists(file.empty() ? d->m_partialFile : partial_name(file));
}

int TVDatabase::load_partial(bool skip_saved)
{
    try {
        if (!d->m_isLoaded)
            return tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        const std::string& partial = d->m_partialFile;
        if (d->m_completeFile.empty() || !tv_file_exists(partial))
            return TVErrC_ok;
        // An unreadable index only costs the skipping of saved blocks:
        // replaying them onto the main file changes nothing.
        const bool logged = tv_file_exists(d->m_indexFile) && !istvwarn(d->m_index.load());
        std::string text;
        d->m_partialUnread = istvwarn(tv_db_read_file(partial, text));
        if (d->m_partialUnread)
            return tvwarning(TVErrC_CorruptPartial, TVLOCATION, "Could not open the file %s",
                             partial.c_str());
        int result = TVErrC_ok;
        try {
            result = read_text(text, true, skip_saved);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        // New transactions go after every tag in the file, even when the
        // log lost records: a shared tag would tie a new operation's undo
        // to an old block. Records a crash cut off the log's end (they
        // aren't flushed) come back from the blocks' transaction lines.
        d->m_index.recover(d->m_partialNextTag, d->m_partialOps, logged);
        mark_changed(TVLOCATION, true);
        d->m_partialAhead = true;
        // A read-only load (a check of the files) leaves every file as it
        // found it: the repairs below are for the load that writes next.
        if (result == TVErrC_okDelete)
            return d->m_readOnly ? TVErrC_ok : tv_delete_file(partial, false);
        if (!istvwarn(result))
            return TVErrC_ok;
        if (d->m_readOnly)
            return tvwarning(TVErrC_CorruptPartial, TVLOCATION,
                             "The session file %s is damaged: the changes after its last whole "
                             "operation are not shown.",
                             partial.c_str());
        // Keep the damaged file as it was, and cut the live one back to its
        // last whole block so the next append follows good data.
        const std::string damaged = partial + C_DamagedExt;
        TV_PASS_ON(tv_copy_file(partial, damaged, true, true));
        std::error_code ec;
        std::filesystem::resize_file(partial, static_cast<std::uintmax_t>(d->m_partialGoodBytes),
                                     ec);
        return tvwarning(TVErrC_CorruptPartial, TVLOCATION,
                         "The session file %s was damaged: the changes after its last whole "
                         "operation are lost (the file as it was is %s).",
                         partial.c_str(), damaged.c_str());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::load_base()
{
    try {
        TV_PASS_ON(save_partial(""));
        std::map<int, long> counters;
        for (const TVDBObject* object : d->m_objects)
            counters[object->get_id()] = object->get_last_update();
        clear_objects();
        d->m_isLoaded = false;
        d->m_isResolved = false;
        const std::string file = d->m_baseFile.empty() ? d->m_completeFile : d->m_baseFile;
        TV_PASS_ON(load_file(file));
        d->m_isLoaded = true;
        TV_PASS_ON(load_partial(false));
        // Objects the replay left as they were look unchanged to the views.
        for (TVDBObject* object : d->m_objects) {
            const auto it = counters.find(object->get_id());
            if (it != counters.end())
                object->restore_update(it->second);
        }
        TV_PASS_ON(initialise(true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::clean_intermediate(bool keep_partial, bool remove)
{
    try {
        if (d->m_readOnly)
            return tverror(TVErrC_DatabaseReadOnly, TVLOCATION,
                           "This database was opened read-only.");
        const std::string& file = d->m_completeFile;
        if (file.empty())
            return TVErrC_ok;
        const std::string newFile = file + C_NewExt;
        const std::string oldFile = file + C_OldExt;
        if (!remove) {
            std::vector<std::string> names{newFile, oldFile};
            if (!keep_partial) {
                names.push_back(d->m_partialFile);
                names.push_back(d->m_indexFile);
            }
            for (const std::string& name : names)
                if (tv_file_exists(name))
                    return tvwarning(TVErrC_Intermediate, TVLOCATION,
                                     "File %s exists with main database.", name.c_str());
            return TVErrC_ok;
        }
        TV_PASS_ON(tv_delete_file(newFile, false));
        TV_PASS_ON(tv_delete_file(oldFile, false));
        if (!keep_partial) {
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
            d->m_firstPartialWrite = true;
        }
        // The log says which blocks of the partial file are undone and
        // which the main file holds: it goes with the partial file, or an
        // undone block would replay and new ids would reuse old tags.
        if (keep_partial && tv_file_exists(d->m_partialFile))
            return TVErrC_ok;
        // By its name, named or not: a base left behind would be taken for
        // the start of the next session's log.
        TV_PASS_ON(tv_delete_file(get_cache_name(file, true) + C_BaseExt, false));
        d->m_baseFile.clear();
        TV_PASS_ON(tv_delete_file(d->m_indexFile, false));
        d->m_index.reset();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::create(const std::string& file, bool overwrite)
{
    try {
        TV_PASS_ON(check_writable(false));
        if (d->m_isLoaded)
            return tverror(TVErrC_DatabaseAlreadyLoaded, TVLOCATION,
                           "Database file %s already loaded.", d->m_completeFile.c_str());
        set_filename(file);
        if (tv_file_exists(file) && !overwrite)
            return tvwarning(TVErrC_FileExists, TVLOCATION, "The file %s already exists",
                             file.c_str());
        TV_PASS_ON(clean_intermediate(false, true));
        d->m_isLoaded = true;
        TV_PASS_ON(initialise(true));
        TV_PASS_ON(save(true, true, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::unload()
{
    try {
        // The side files go only when the main file holds everything: after
        // a failed load or save they are what the next load recovers from.
        if (!d->m_readOnly && d->m_isLoaded && !d->m_partialAhead)
            TV_PASS_ON(clean_intermediate(false, true));
        forget_contents();
        d->m_readOnly = false;
        d->m_firstPartialWrite = true;
        set_filename(std::string());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVDatabase::first_object(const std::string& file)
{
    std::string text;
    if (istvwarn(tv_db_read_file(file, text))) {
        get_tverror()->clear_last_error();
        return std::string();
    }
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    TVSerialForm::strip_line_ends(line);
    if (rtrim(line) != C_DlmtDBIdentifier)
        return std::string();
    const std::string mark = std::string("@") + C_ObjectStart;
    TVSerialisationEntry entry;
    while (entry.read_entry(in) == TVErrC_ok)
        if (entry.get_entrytype() == TVSerialisationEntry::E_TaggedClass &&
            entry.get_tag() == C_ObjectStart)
            return entry.get_value();
    get_tverror()->clear_all();
    return std::string();
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
        const std::string& file = d->m_completeFile;
        if (!file.empty() && tv_file_exists(file))
            TV_PASS_ON(tv_copy_file(file,
                                    get_cache_name(file, false) + ".Ver" +
                                        std::to_string(d->m_appFileVersion),
                                    true, true));
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

// ---- Saving ---------------------------------------------------------------------------

int TVDatabase::save(bool mark_write, bool manual, bool verify_file)
{
    const TVAppStatusSetter status(C_SavingStatus, true, C_SaveStatusDelayMicro);
    try {
        TV_PASS_ON(check_writable(true));
        const std::string& file = d->m_completeFile;
        if (file.empty())
            return TVErrC_ok;
        const std::string newFile = get_cache_name(file, false) + C_NewExt;
        const std::string oldFile = get_cache_name(file, false) + C_OldExt;
        d->m_appFileVersion = current_appfileversion();
        // The links to shared copies take the file's base name here (sync layer).
        TV_PASS_ON(tv_create_dir(tv_dirname(file), true));
        TV_PASS_ON(tv_create_dir(tv_dirname(newFile), true));
        if (mark_write) {
            // Stamped before the write, so that the stamps are in the file.
            d->m_writeTime = TVDateUtils::now();
            d->m_writeHost = TVApplication::get_hostname();
        }
        (void)manual; // which links are told to push: the sync layer

        // The whole text first, then one write: the file is open briefly.
        std::ostringstream text;
        TV_PASS_ON(write(text, 0, false, std::string(), -1));
        TV_PASS_ON(tv_db_write_file(newFile, text.str(), false));

        const bool existed = tv_file_exists(file);
        bool madeBase = false;
        if (d->m_baseFile.empty()) {
            // The first save of the session: the state the log starts from,
            // the file as it stands before this save (or this save's text,
            // with no log yet). Copied while F is still in place, so that a
            // failed copy leaves F and the session as they were.
            const std::string base = get_cache_name(file, true) + C_BaseExt;
            const bool empty = d->m_index.size() == 0;
            if (empty || existed) {
                TV_PASS_ON(tv_create_dir(tv_dirname(base), true));
                // The copy's bytes are flushed before it takes the name.
                TV_PASS_ON(tv_copy_file(empty ? newFile : file, base, true, true));
                d->m_baseFile = base;
                madeBase = true;
            }
        }
        // From here on a whole main file is on disk at every moment: F, or
        // old_file with new_file beside it (load puts old_file back).
        if (existed)
            TV_PASS_ON(tv_rename_file(file, oldFile, true, true));
        TV_PASS_ON(tv_rename_file(newFile, file, true, true));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        if (tv_dirname(newFile) != tv_dirname(file))
            TV_PASS_ON(tv_sync_dir(tv_dirname(newFile)));

        if (has_user_data() || verify_file) {
            int result = TVErrC_ok;
            bool thrown = false;
            try {
                result = verify(file, d->m_appType);
            } catch (const TVErrDetails&) {
                result = tverrorvalue();
                thrown = true;
            }
            if (istvwarn(result)) {
                tvlog(TVLOCATION, "cloud: !Failed Validate");
                // A base copied from the text that failed is no start for
                // undo: without one, undo replays onto the main file.
                if (madeBase && d->m_index.size() == 0) {
                    try {
                        if (istvwarn(tv_delete_file(d->m_baseFile, false)))
                            get_tverror()->clear_last_error();
                    } catch (const TVErrDetails&) {
                        get_tverror()->clear_last_error();
                    }
                    d->m_baseFile.clear();
                }
                if (existed)
                    TV_PASS_ON(tv_rename_file(oldFile, file, true, true));
                tvsysinfo_append(TVLOCATION, "Moved %s back to %s", oldFile.c_str(), file.c_str());
                if (thrown)
                    throw TVErrDetails(*get_tverror()->error_details());
                return tverrorvalue();
            }
        }
        TV_PASS_ON(rotate_backups(oldFile));
        TV_PASS_ON(d->m_index.mark_save());
        mark_partial_written();
        d->m_lastFullWrite = d->m_lastPartialWrite;
        d->m_partialAhead = false;
        // A stamped save pushes to the linked copies: the sync layer.
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ".bk0" is always the latest; the far end falls off. Within
// C_BackupIntervalSeconds of the last rotation the old file just goes.
int TVDatabase::rotate_backups(const std::string& old_file)
{
    const long now = TVUpdateCounter::clock_seconds();
    if (d->m_backupCount <= 0 || now - d->m_lastBackup <= C_BackupIntervalSeconds)
        return tv_delete_file(old_file, false);
    const std::string scratch = get_scratch_name(d->m_completeFile) + C_BackupExt;
    for (int i = d->m_backupCount; i >= 1; --i) {
        const std::string source = i == 1 ? old_file : scratch + std::to_string(i - 2);
        if (tv_file_exists(source))
            TV_PASS_ON(tv_rename_file(source, scratch + std::to_string(i - 1), true, true));
    }
    d->m_lastBackup = now;
    return TVErrC_ok;
}

int TVDatabase::save_partial(const std::string& transaction)
{
    return append_block(transaction, false);
}

// With changed_only, a block that would hold no record is not written and
// its transaction is taken back: one pass over the objects decides both.
int TVDatabase::append_block(const std::string& transaction, bool changed_only)
{
    try {
        TV_PASS_ON(check_writable(true));
        if (d->m_completeFile.empty())
            return TVErrC_ok;
        const std::string& partial = d->m_partialFile;
        // The header goes at the head of the file, and only there.
        std::error_code ec;
        const std::uintmax_t size = std::filesystem::file_size(partial, ec);
        const bool first = ec || size == 0;
        std::ostringstream block;
        // The block, with its transaction line, is the operation's one
        // flushed write; the index record follows unflushed, and a load
        // rebuilds it from the block if a crash lost it.
        const int logged = d->m_index.size();
        int result = TVErrC_ok;
        try {
            result = write(block, d->m_lastPartialWrite, first, transaction, -1);
            if (!istvwarn(result) && changed_only && d->m_recordsWritten == 0) {
                if (d->m_index.size() > logged)
                    d->m_index.drop_last();
                return TVErrC_ok;
            }
            if (!istvwarn(result))
                result = tv_db_write_file(partial, block.str(), true);
        } catch (const TVErrDetails&) {
            if (d->m_index.size() > logged)
                d->m_index.drop_last();
            tv_trail_throw(TVLOCATION);
        }
        if (istvwarn(result)) {
            if (d->m_index.size() > logged)
                d->m_index.drop_last();
            return tv_trail_return(result, TVLOCATION);
        }
        if (d->m_index.size() > logged) {
            // The operation is on the disk with its block: a log record
            // that didn't follow is rebuilt from the block by the next load.
            int logResult = TVErrC_ok;
            try {
                logResult = d->m_index.log_last();
            } catch (const TVErrDetails&) {
                logResult = tverrorvalue();
            }
            if (istvwarn(logResult)) {
                tvlog(TVLOCATION, "Index record of %s not written; its block stands",
                      transaction.c_str());
                get_tverror()->clear_last_error();
            }
        }
        mark_partial_written();
        d->m_firstPartialWrite = false;
        d->m_partialAhead = true;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
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
            TV_PASS_ON(append_block(operation, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::verify(const std::string& file, const std::string& app_type) const
{
    try {
        if (!d->m_isLoaded)
            return tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        if (d->m_completeFile.empty())
            return TVErrC_ok;
        std::unique_ptr<TVDatabase> check(create_verification_db(app_type));
        int result = TVErrC_ok;
        try {
            result = check->load(file, true, false, std::string(), true, false, false, true);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        check.reset();
        if (istvwarn(result)) {
            tvlog(TVLOCATION, "cloud: @verify Failed");
            return tverror(TVErrC_CorruptDatabase, TVLOCATION, "Unable to load database %s.",
                           file.c_str());
        }
        TV_PASS_ON(tv_copy_file(file, get_scratch_name(d->m_completeFile) + C_LastKnownGood, true,
                                true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// Until the new name is saved whole, the old name keeps everything: the
// session files (log, base, partial) are copied to the new names, and the
// old ones go only after the save. A crash at any step thus leaves the old
// name whole, and from the copy of the partial file on the new name too.
// A failure puts the old names back in memory, so that the next autosave
// and the next operation still go to the old files.
int TVDatabase::save_as(const std::string& file, bool manual)
{
    try {
        TV_PASS_ON(check_writable(true));
        const std::string oldMain = d->m_completeFile;
        const std::string oldIndex = d->m_indexFile;
        const std::string oldBase = d->m_baseFile;
        const std::string oldPartial = d->m_partialFile;
        if (oldMain == file)
            return save(true, manual, true);
        set_filename(file);
        int result = TVErrC_ok;
        bool thrown = false;
        try {
            result = save_as_files(oldMain, oldIndex, oldBase, oldPartial, manual);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(result)) {
            set_filename(oldMain);
            d->m_baseFile = oldBase;
            (void)d->m_index.load();
            if (thrown)
                throw TVErrDetails(*get_tverror()->error_details());
            return tv_trail_return(result, TVLOCATION);
        }
        // The new name holds everything: the old session goes, its partial
        // file last, so that what is left of it still replays onto the old
        // main file.
        // Names that two paths share (the scratch names go by the base
        // name alone) are the new session's now.
        for (const std::string& name : {oldIndex, oldBase, oldPartial})
            if (!name.empty() && name != d->m_indexFile && name != d->m_partialFile &&
                name != get_cache_name(file, true) + C_BaseExt)
                TV_PASS_ON(tv_delete_file(name, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// save_as's steps under the new name, the old names as given.
int TVDatabase::save_as_files(const std::string& old_main, const std::string& old_index,
                              const std::string& old_base, const std::string& old_partial,
                              bool manual)
{
    try {
        const std::string& file = d->m_completeFile;
        // A file saved over loses its own session first: none of it may
        // replay onto what is written there now.
        if (d->m_partialFile != old_partial)
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
        if (!old_main.empty() && tv_file_exists(old_main))
            TV_PASS_ON(tv_copy_file(old_main, file, true, true));
        const std::string base = get_cache_name(file, true) + C_BaseExt;
        // The undo history travels with the new name; the partial file
        // comes last, once the log and base it replays with are there.
        const std::pair<std::string, std::string> carried[] = {
            {old_index, d->m_indexFile}, {old_base, base}, {old_partial, d->m_partialFile}};
        for (const auto& [from, to] : carried) {
            if (from == to)
                continue;
            if (!from.empty() && tv_file_exists(from))
                TV_PASS_ON(tv_copy_file(from, to, true, true));
            else
                TV_PASS_ON(tv_delete_file(to, false));
        }
        if (!old_base.empty())
            d->m_baseFile = base;
        TV_PASS_ON(d->m_index.load());
        TV_PASS_ON(save(true, manual, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::save_snapshot(bool manual)
{
    const int count = d->m_backupCount;
    if (count == 0)
        d->m_backupCount = C_SnapshotBackupCount;
    d->m_lastBackup = 0;
    int result = TVErrC_ok;
    try {
        result = save(true, manual, true);
    } catch (const TVErrDetails&) {
        d->m_backupCount = count;
        d->m_lastBackup = 0;
        tv_trail_throw(TVLOCATION);
    }
    // The next ordinary save rotates as well.
    d->m_backupCount = count;
    d->m_lastBackup = 0;
    return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
}

// The snapshot goes in through the steps of a save: the main file moves to
// the old name, the snapshot is copied in, the old file goes. The session
// files go before the main file is touched, so that none of them replays
// onto the snapshot: a crash leaves the main file as it was, or the
// snapshot, with the safety copy holding the present state either way.
// Any failure once the safety copy is written puts it back.
int TVDatabase::restore_snapshot(const std::string& snapshot, std::string& backup)
{
    try {
        if (!tv_file_exists(snapshot))
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not open %s.", snapshot.c_str());
        const std::string file = d->m_completeFile;
        const std::string appType = d->m_appType;
        const std::string oldFile = get_cache_name(file, false) + C_OldExt;
        backup = get_scratch_name(file) + C_SafetyExt;
        if (backup == snapshot)
            backup += "1";
        // A safety copy of the present state, whole.
        std::ostringstream text;
        TV_PASS_ON(write(text, 0, false, std::string(), -1));
        TV_PASS_ON(tv_db_write_file(backup, text.str(), false));
        int result = TVErrC_ok;
        try {
            result = clean_intermediate(false, true);
            if (!istvwarn(result) && tv_file_exists(file))
                result = tv_rename_file(file, oldFile, true, true);
            if (!istvwarn(result))
                result = tv_copy_file(snapshot, file, true, true);
            if (!istvwarn(result))
                result = tv_delete_file(oldFile, false);
            if (!istvwarn(result))
                result = unload();
            d->m_appType = appType;
            if (!istvwarn(result))
                result = load(file, false, std::string(), false, true, true);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result)) {
            // The cause stays recorded beside the warning below.
            (void)unload();
            d->m_appType = appType;
            // Copied, not moved: backup goes on naming the present state.
            TV_PASS_ON(tv_copy_file(backup, file, true, true));
            TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
            TV_PASS_ON(load(file, false, std::string(), false, true, true));
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not restore snapshot %s",
                             snapshot.c_str());
        }
        TVDBObject::mark_structure_change();
        TV_PASS_ON(save(false, false, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// The text is read and checked on a scratch database before anything is
// touched. Then, in the order a crash can stand at any step: the present
// state is saved whole, the old session's log goes (it must never replay
// onto the new text), the text is written by the save's steps, and the file
// it replaced is kept as the newest backup. Only then does memory change.
int TVDatabase::replace_file(const std::string& text, const std::string& source)
{
    try {
        TV_PASS_ON(check_writable(true));
        const std::string file = d->m_completeFile;
        const std::string from = source.empty() ? "The replacing data" : source;
        std::unique_ptr<TVDatabase> check(create_verification_db(d->m_appType));
        int result = TVErrC_ok;
        try {
            result = check->read_text(text, false, false);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result)) {
            tvuserinfo_set("%s contains invalid data.", from.c_str());
            return tv_trail_return(result, TVLOCATION);
        }
        if (!d->m_appType.empty() && check->get_app_type() != d->m_appType)
            return tverror(TVErrC_WrongAppType, TVLOCATION,
                           "%s is not a %s data file (it is a %s data file).", from.c_str(),
                           d->m_appType.c_str(), check->get_app_type().c_str());
        if (check->get_appfileversion() > current_appfileversion())
            return tverror(TVErrC_NewerAppVersion, TVLOCATION,
                           "This file was written by a newer version of %s - Cannot load.",
                           tvapplication()->get_application().c_str());
        check.reset();
        if (file.empty()) {
            // In memory only: nothing on a disk to keep safe.
            clear_objects();
            TV_PASS_ON(read_text(text, false, false));
            return adopt_replaced();
        }
        // The main file holds everything done so far, so the log can go.
        if (d->m_partialAhead || changed_since_full_write())
            TV_PASS_ON(save(false, false, false));
        TV_PASS_ON(clean_intermediate(false, true));
        const std::string newFile = get_cache_name(file, false) + C_NewExt;
        const std::string oldFile = get_cache_name(file, false) + C_OldExt;
        TV_PASS_ON(tv_db_write_file(newFile, text, false));
        const bool existed = tv_file_exists(file);
        if (existed)
            TV_PASS_ON(tv_rename_file(file, oldFile, true, true));
        TV_PASS_ON(tv_rename_file(newFile, file, true, true));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        bool thrown = false;
        try {
            result = verify(file, d->m_appType);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(result)) {
            if (existed)
                TV_PASS_ON(tv_rename_file(oldFile, file, true, true));
            tvsysinfo_append(TVLOCATION, "Moved %s back to %s", oldFile.c_str(), file.c_str());
            if (thrown)
                throw TVErrDetails(*get_tverror()->error_details());
            return tverrorvalue();
        }
        // The replaced file becomes ".bk0", whatever the rotation's timing.
        const int count = d->m_backupCount;
        d->m_backupCount = count > 0 ? count : C_SnapshotBackupCount;
        d->m_lastBackup = 0;
        result = rotate_backups(oldFile);
        d->m_backupCount = count;
        TV_PASS_ON(result);
        // The new text is the new truth on the disk: what is in memory
        // follows. A read that fails now (it passed above) leaves the
        // database unloaded, and the next load reads the new file.
        clear_objects();
        d->m_isLoaded = false;
        TV_PASS_ON(read_text(text, false, false));
        return adopt_replaced();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// What was just read is the whole database, and the files hold it: the
// undo history starts afresh from here.
int TVDatabase::adopt_replaced()
{
    d->m_isLoaded = true;
    d->m_index.reset();
    d->m_baseFile.clear();
    d->m_firstPartialWrite = true;
    d->m_partialAhead = false;
    TV_PASS_ON(initialise(true));
    mark_partial_written();
    d->m_lastFullWrite = d->m_lastPartialWrite;
    return TVErrC_ok;
}

// A full write, as a save's, that leaves the index and the counters alone;
// a read-only database exports too.
int TVDatabase::export_db(const std::string& file, std::string* text, bool check,
                          const std::string& app_type)
{
    const TVAppStatusSetter status(C_ExportingStatus, true, C_SaveStatusDelayMicro);
    try {
        if (!d->m_isLoaded)
            return tverror(TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        const std::string ownType = d->m_appType;
        if (!app_type.empty())
            d->m_appType = app_type;
        std::ostringstream out;
        int result = TVErrC_ok;
        try {
            result = write_records(out, 0, false, std::string(), -1);
        } catch (const TVErrDetails&) {
            d->m_appType = ownType;
            tv_trail_throw(TVLOCATION);
        }
        d->m_appType = ownType;
        TV_PASS_ON(result);
        if (file.empty()) {
            if (text != nullptr)
                *text = out.str();
            return TVErrC_ok;
        }
        TV_PASS_ON(tv_db_save_file(file, out.str()));
        if (check) {
            std::unique_ptr<TVDatabase> copy(
                create_verification_db(app_type.empty() ? ownType : app_type));
            if (istvwarn(copy->read(file, false, false)))
                return tverror(TVErrC_CorruptDatabase, TVLOCATION, "Unable to load database %s.",
                               file.c_str());
        }
        if (text != nullptr)
            *text = out.str();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::remove_partial(const std::string& file)
{
    try {
        if (d->m_readOnly)
            return tverror(TVErrC_DatabaseReadOnly, TVLOCATION,
                           "This database was opened read-only.");
        if (!file.empty())
            return tv_delete_file(partial_name(file), false);
        if (!d->m_completeFile.empty()) {
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
            d->m_firstPartialWrite = true;
        }
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
