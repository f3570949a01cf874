#include "LibDatabase/db/tvdatabase.h"

#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdatabasehost.h"
#include "LibDatabase/db/tvdbeditor.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbimporter.h"
#include "LibDatabase/db/tvdbnote.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibDatabase/db/tvdbloader.h"
#include "LibDatabase/db/tvdbreader.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibDatabase/db/tvdbschema.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvdbsync.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibCore/log/tvlog.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibDatabase/db/tvdbwriter.h"
#include "LibCore/error/tverrdetails.h"
#include "LibDatabase/db/tvquery.h"

#include "LibComms/thread/tvmutexlocker.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvcachename.h"
#include "LibDatabase/db/tvdbhost.h"
#include "LibDatabase/db/tvresolvecontainers.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <mutex>
#include <ostream>
#include <set>
#include <sstream>

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
} // namespace

// ---- Construction ----------------------------------------------------------------

TVDatabase::TVDatabase() : d(std::make_unique<TVDatabaseImpl>())
{
    TVDatabaseHost::born(this);
    d->m_writeTime = TVDateUtils::blank_date();
    // The database's own id is the first it gives out: always 0.
    const int id = allocate_id();
    set_id(id, TVDateUtils::now(), true);
    add_container(*d->m_specs);
    add_container(*d->m_notes);
    add_container(*d->m_queries);
    register_tvobject();
}

TVDatabase::~TVDatabase()
{
    stop_recalc_thread();
    TVDatabaseHost::gone(this);
    clear_objects();
}

void TVDatabase::set_defaults(bool constructing)
{
    TVDBObject::set_defaults(constructing);
    const int id = get_id();
    std::unique_ptr<TVDBContainer<TVObjectSpec>> specs = std::move(d->m_specs);
    std::unique_ptr<TVDBContainer<TVDBNote>> notes = std::move(d->m_notes);
    std::unique_ptr<TVDBContainer<TVQuery>> queries = std::move(d->m_queries);
    d = std::make_unique<TVDatabaseImpl>();
    (void)specs->clear();
    (void)notes->clear();
    (void)queries->clear();
    d->m_specs = std::move(specs);
    d->m_notes = std::move(notes);
    d->m_queries = std::move(queries);
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
        TV_PASS_ON(serialise_object(in, out, prefix, "External",
                                    TVSrlObjectArray<TVExternalDB>(d->m_external, version)));
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
    return TVDBEditor(*this).add_object(object, parent, container_tag, member_tag, spec_id,
                                        operation, id);
}

int TVDatabase::extract_object(int id, TVDBObject*& copy, bool resolve)
{
    return TVDBEditor(*this).extract_object(id, copy, resolve);
}

int TVDatabase::delete_object(int id, const std::string& operation)
{
    return TVDBEditor(*this).delete_object(id, operation);
}

int TVDatabase::replace_object(int id, TVDBObject* object, const std::string& container_tag,
                               const std::string& member_tag, int spec_id,
                               const std::string& operation)
{
    return TVDBEditor(*this).replace_object(id, object, container_tag, member_tag, spec_id,
                                            operation);
}

int TVDatabase::clone_object(int id, TVDBObject*& copy) const
{
    return TVDBEditor(const_cast<TVDatabase&>(*this)).clone_object(id, copy);
}

int TVDatabase::clone_external_object(const TVDBObject& object, int next_id)
{
    return TVDBEditor(*this).clone_external_object(object, next_id);
}

int TVDatabase::reparent(TVDBObject* object, TVDBObject* parent, const std::string& container_tag)
{
    return TVDBEditor(*this).reparent(object, parent, container_tag);
}

int TVDatabase::change_id(TVDBObject& object, int new_id)
{
    return TVDBEditor(*this).change_id(object, new_id);
}

int TVDatabase::merge_objects(int from, int to)
{
    return TVDBEditor(*this).merge_objects(from, to);
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

// ---- Object specs: TVDBSchema --------------------------------------------------------

int TVDatabase::update_vars(int id, bool force)
{
    return TVDBSchema(*this).update_vars(id, force);
}

int TVDatabase::apply_objectspec_to_db(TVDBObject* object, int spec_id, bool add_create)
{
    return TVDBSchema(*this).apply_objectspec_to_db(object, spec_id, add_create);
}

std::string TVDatabase::spec_child_member_tag(const TVDBObject& parent) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).spec_child_member_tag(parent);
}

int TVDatabase::create_object(TVDBObject* parent, const std::string& member_tag, int spec_id,
                              TVDBObject** out)
{
    return TVDBSchema(*this).create_object(parent, member_tag, spec_id, out);
}

int TVDatabase::add_sysquants(TVObjectSpec&)
{
    return TVErrC_ok;
}

int TVDatabase::add_objectspec(TVObjectSpec* spec, const std::string& operation)
{
    return TVDBSchema(*this).add_objectspec(spec, operation);
}

int TVDatabase::delete_objectspec(int id)
{
    return TVDBSchema(*this).delete_objectspec(id);
}

int TVDatabase::edit_objectspec(int id, int lock_id)
{
    return edit_object(id, false, lock_id);
}

int TVDatabase::commit_objectspec(int id, const std::string& operation)
{
    return TVDBSchema(*this).commit_objectspec(id, operation);
}

int TVDatabase::revert_objectspec(int id)
{
    return TVDBSchema(*this).revert_objectspec(id);
}

int TVDatabase::rename_spec(const std::string& from, const std::string& to)
{
    return TVDBSchema(*this).rename_spec(from, to);
}

TVObjectSpec* TVDatabase::get_objectspec_by_id(int id) const
{
    return id >= 0 ? d->m_specs->find(id) : nullptr;
}

TVObjectSpec* TVDatabase::get_objectspec_by_name(const std::string& name) const
{
    for (TVObjectSpec* spec : *d->m_specs)
        if (spec->get_name() == name)
            return spec;
    return nullptr;
}

TVObjectSpec* TVDatabase::get_objectspec_by_index(int index) const
{
    return index >= 0 && index < d->m_specs->size() ? (*d->m_specs)[index] : nullptr;
}

int TVDatabase::get_objectspec_id_for_name(const std::string& name) const
{
    const TVObjectSpec* spec = get_objectspec_by_name(name);
    return spec != nullptr ? spec->get_id() : -1;
}

int TVDatabase::get_nobjectspecs() const
{
    return d->m_specs->size();
}

int TVDatabase::default_spec_id() const
{
    return get_objectspec_id_for_name(C_DefaultSpecName);
}

int TVDatabase::parse_objectspec(TVObjectSpec& spec, int* error_line)
{
    return TVDBSchema(*this).parse_objectspec(spec, error_line);
}

int TVDatabase::parse_objectspecs(bool strict)
{
    return TVDBSchema(*this).parse_objectspecs(strict);
}

int TVDatabase::apply_objectspecs()
{
    return TVDBSchema(*this).apply_objectspecs();
}

int TVDatabase::create_default_spec()
{
    return TVDBSchema(*this).create_default_spec();
}

bool TVDatabase::is_spec_derived_from(int base_id, int spec_id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).is_spec_derived_from(base_id, spec_id);
}

bool TVDatabase::objectspec_in_use(int id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).objectspec_in_use(id);
}

bool TVDatabase::objectspec_referenced(const std::string& name, std::string& by) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).objectspec_referenced(name, by);
}

std::vector<int> TVDatabase::get_derived_specs(int base_id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).get_derived_specs(base_id);
}

std::vector<TVObjectSpec*> TVDatabase::get_specs(bool all) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).get_specs(all);
}

std::vector<TVObjectSpec*> TVDatabase::get_allowable_specs(int base_id, bool all) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).get_allowable_specs(base_id, all);
}

int TVDatabase::get_child_base_spec(const TVDBObject& object) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).get_child_base_spec(object);
}

void TVDatabase::get_var_values(const std::string& tag, std::vector<std::string>& values) const
{
    values = TVDBSchema(const_cast<TVDatabase&>(*this)).get_var_values(tag);
}

std::vector<std::string> TVDatabase::extra_variables(int id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).extra_variables(id);
}

std::vector<std::string> TVDatabase::unfilled_vars(int id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).unfilled_vars(id);
}

bool TVDatabase::is_bastard(int id) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).is_bastard(id);
}

int TVDatabase::export_specs(const std::string& path) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).export_specs(path);
}

int TVDatabase::import_specs(const std::string& path)
{
    return TVDBSchema(*this).import_specs(path);
}

int TVDatabase::validate_specfile(const std::string& path) const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).validate_specfile(path);
}

int TVDatabase::do_import(const std::string& file)
{
    return TVDBSchema(*this).do_import(file);
}

int TVDatabase::validate_specs() const
{
    return TVDBSchema(const_cast<TVDatabase&>(*this)).validate_specs();
}

// ---- Scripts ----------------------------------------------------------------------------

int TVDatabase::run_trigger(TVDBObject& object, const std::string& trigger)
{
    // A spec's scripts are its objects' triggers, not the spec's own.
    if (!object.uses_spec())
        return TVErrC_ok;
    return object.run_trigger_script(trigger);
}

int TVDatabase::run_trigger_script(const std::string& name)
{
    try {
        // By id: a script may add or replace objects as the pass goes on.
        std::vector<int> ids;
        for (const TVDBObject* object : d->m_objects)
            if (object->uses_spec() && !object->is_deleted())
                ids.push_back(object->get_id());
        for (int id : ids)
            if (TVDBObject* object = get_object_by_id(id))
                TV_PASS_ON(object->run_trigger_script(name));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDatabase::get_error_script(std::string& script, int& id, int& line,
                                  std::string* message) const
{
    for (const TVDBObject* object : d->m_objects)
        for (int i = 0; i < object->get_nscripts(); ++i) {
            const TVDBScript* candidate = object->get_script_no(i);
            if (candidate->get_error_line() >= 0) {
                script = candidate->get_name();
                id = object->get_id();
                line = candidate->get_error_line();
                if (message != nullptr)
                    *message = candidate->get_error_text();
                return true;
            }
        }
    return false;
}

int TVDatabase::discard_operation()
{
    try {
        TV_PASS_ON(TVDBLoader(*this).load_base(false));
        mark_changed(TVLOCATION, true);
        mark_partial_written();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Notes -------------------------------------------------------------------------

int TVDatabase::get_nnotes() const
{
    return d->m_notes->size();
}

TVDBNote* TVDatabase::get_note_no(int index) const
{
    return index >= 0 && index < d->m_notes->size() ? (*d->m_notes)[index] : nullptr;
}

TVDBNote* TVDatabase::get_note_id(int id) const
{
    TVDBNote* note = dynamic_cast<TVDBNote*>(get_object_by_id(id));
    return note != nullptr && !note->is_deleted() ? note : nullptr;
}

int TVDatabase::add_note(const std::string& text, TVDBNote** out)
{
    try {
        auto* note = new TVDBNote(text);
        TV_PASS_ON(add_object(note, this, C_NoteTag, C_NoteTag, -1, "Add note"));
        resolve_containers();
        if (out != nullptr)
            *out = note;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::delete_note(int id)
{
    try {
        if (get_note_id(id) == nullptr)
            return tverror(TVErrC_NullPointer, TVLOCATION, "Note %d not found.", id);
        TV_PASS_ON(delete_object(id, "Delete note"));
        resolve_containers();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::set_active_note(int id, int active, int type)
{
    for (int i = 0; i < get_nnotes(); ++i)
        get_note_no(i)->set_active(TVDBNote::E_Inactive);
    if (id < 0)
        return TVErrC_ok;
    TVDBNote* note = get_note_id(id);
    if (note == nullptr)
        return tverror(TVErrC_NullPointer, TVLOCATION, "Note %d not found.", id);
    note->set_active(static_cast<TVDBNote::E_Active>(active));
    if (note->get_type() != type) {
        note->set_type(type);
        note->mark_changed(TVLOCATION, true);
    }
    return TVErrC_ok;
}

bool TVDatabase::is_active_note(int id) const
{
    const TVDBNote* note = get_note_id(id);
    return note != nullptr && note->get_active() != TVDBNote::E_Inactive;
}

int TVDatabase::apply_active_note(TVDBObject& object)
{
    try {
        for (int i = 0; i < get_nnotes(); ++i) {
            TVDBNote* note = get_note_no(i);
            if (note->get_active() == TVDBNote::E_Inactive || !object.apply_note(*note))
                continue;
            if (note->get_active() == TVDBNote::E_ActiveOnce)
                TV_PASS_ON(delete_object(note->get_id(), ""));
            else
                note->set_active(TVDBNote::E_Inactive);
            // Only a taken note moves anything; resolving after every add
            // made adding many objects quadratic.
            resolve_containers();
            break;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVDatabase::get_noteurl() const
{
    const std::vector<std::string> urls = get_noteurls();
    return urls.empty() ? std::string() : urls.front();
}

std::vector<std::string> TVDatabase::get_noteurls() const
{
    std::vector<std::string> urls;
    std::istringstream in(d->m_noteURL);
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            urls.push_back(line);
    return urls;
}

void TVDatabase::set_noteurl(const std::string& url)
{
    if (url == d->m_noteURL)
        return;
    d->m_noteURL = url;
    mark_changed(TVLOCATION, true);
}

// The surviving object keeps what it has: only the values it lacks (no
// variable, or an empty one) come from the other.
int TVDatabase::append_values(TVDBObject& from, const TVDBObject& to)
{
    try {
        for (int i = 0; i < to.get_nvariables(); ++i) {
            const TVVariable* theirs = to.get_var_by_index(i, false);
            if (theirs->get_value().empty())
                continue;
            const TVVariable* ours = from.get_var_by_tag(theirs->get_tag(), false);
            if (ours == nullptr || ours->get_value().empty())
                TV_PASS_ON(from.set_var_value(theirs->get_tag(), theirs->get_value(), false));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Sync: TVDBSync -------------------------------------------------------------------

int TVDatabase::add_external(int type, const std::string& name, int mode, TVExternalDB*& out)
{
    return TVDBSync(*this).add_external(type, name, mode, out);
}

void TVDatabase::remove_external(int type)
{
    for (int i = d->m_external.size(); i-- > 0;)
        if (d->m_external[i]->get_dbtype() == type)
            (void)d->m_external.erase(i);
    mark_changed(TVLOCATION, true);
}

int TVDatabase::get_nexternals() const
{
    return d->m_external.size();
}

TVExternalDB* TVDatabase::get_external_no(int index) const
{
    return index >= 0 && index < d->m_external.size() ? d->m_external[index] : nullptr;
}

TVExternalDB* TVDatabase::get_external_type(int type) const
{
    for (TVExternalDB* link : d->m_external)
        if (link->get_dbtype() == type)
            return link;
    return nullptr;
}

TVExternalDB* TVDatabase::get_external_name(const std::string& name) const
{
    for (TVExternalDB* link : d->m_external)
        if (link->get_name() == name)
            return link;
    return nullptr;
}

int TVDatabase::push(TVExternalDB& link, bool force)
{
    return TVDBSync(*this).push(link, force);
}

int TVDatabase::pull_all(bool can_replace)
{
    return TVDBSync(*this).pull_all(can_replace);
}

int TVDatabase::push_all(bool include_manual, bool force)
{
    return TVDBSync(*this).push_all(include_manual, force);
}

int TVDatabase::pull(TVExternalDB& link, bool can_replace, std::string& details)
{
    return TVDBSync(*this).pull(link, can_replace, details);
}

// Saved whole first, then the log dropped: a crash between the two leaves
// the log replaying onto a main file that already holds it, which changes
// nothing, where the other order could lose the unsaved edits.
int TVDatabase::pull_complete()
{
    try {
        TV_PASS_ON(save(false, false, false));
        TV_PASS_ON(clean_intermediate(false, true));
        mark_partial_written();
        d->m_lastFullWrite = d->m_lastPartialWrite;
        d->m_firstPartialWrite = true;
        d->m_partialAhead = false;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDatabase::pull_db_data(const TVDatabase& other)
{
    if (other.d->m_uniqueId > d->m_uniqueId)
        d->m_uniqueId = other.d->m_uniqueId;
    return TVErrC_ok;
}

int TVDatabase::sync_state() const
{
    return d->m_syncState;
}

bool TVDatabase::is_syncing() const
{
    return TVDBSync(const_cast<TVDatabase&>(*this)).is_syncing();
}

bool TVDatabase::needs_push() const
{
    return TVDBSync(const_cast<TVDatabase&>(*this)).needs_push();
}

bool TVDatabase::has_ext_data() const
{
    return TVDBSync(const_cast<TVDatabase&>(*this)).has_ext_data();
}

int TVDatabase::get_cloud_state() const
{
    return TVDBSync(const_cast<TVDatabase&>(*this)).cloud_state();
}

std::string TVDatabase::get_merge_details() const
{
    return TVDBSync(const_cast<TVDatabase&>(*this)).merge_details();
}

int TVDatabase::import_db(const std::string& file, const std::string* text)
{
    return TVDBImporter(*this).import_db(file, text, &d->m_importCount);
}

int TVDatabase::get_import_count() const
{
    return d->m_importCount;
}

int TVDatabase::validate_queries(std::string& script, int& line, std::string& message) const
{
    script.clear();
    line = -1;
    message.clear();
    for (const TVQuery* query : get_queries()) {
        // A copy, so that checking leaves the stored query as it was.
        TVQuery scratch(*query);
        const int result = scratch.parse(false, &line);
        if (istvwarn(result)) {
            script = query->get_name();
            const TVErrDetails* details = get_tverror()->error_count() > 0
                                              ? get_tverror()->error_at(0)
                                              : nullptr;
            if (details != nullptr)
                message = details->get_details(TVAspectUser);
            return tv_trail_return(result, TVLOCATION);
        }
    }
    return TVErrC_ok;
}

// ---- Queries ------------------------------------------------------------------------

TVQuery* TVDatabase::create_query() const
{
    return new TVQuery;
}

int TVDatabase::add_query(TVQuery* query, const std::string& operation)
{
    return add_object(query, this, C_QueryTag, C_QueryTag, -1, operation);
}

TVQuery* TVDatabase::get_query_by_name(const std::string& name) const
{
    for (TVQuery* query : *d->m_queries)
        if (!query->is_deleted() && query->get_name() == name)
            return query;
    return nullptr;
}

std::vector<TVQuery*> TVDatabase::get_queries() const
{
    std::vector<TVQuery*> queries;
    for (TVQuery* query : *d->m_queries)
        if (!query->is_deleted())
            queries.push_back(query);
    return queries;
}

int TVDatabase::query_value(const std::vector<TVDBObject*>&, const std::string&,
                            std::string&) const
{
    return TVErrC_ok;
}

int TVDatabase::periodic_check(long seconds, bool force, std::vector<TVCheckIssue>& issues)
{
    issues.clear();
    TVDBChecker& checker = get_checker();
    checker.periodic_check(seconds, force, TVDateUtils::now().get_time_t());
    for (int i = 0; i < checker.get_nitems(); ++i) {
        const TVDBCheckItem* item = checker.get_item_by_index(i);
        issues.push_back({item->get_id(), item->get_short_message()});
    }
    return TVErrC_ok;
}

TVDBChecker& TVDatabase::get_checker() const
{
    if (!d->m_checker) {
        d->m_checker = std::make_unique<TVDBChecker>();
        d->m_checker->set_database(const_cast<TVDatabase*>(this));
    }
    return *d->m_checker;
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
        TVDBHost::installed() == TVDatabaseHost::instance());
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
    try {
        resolve_containers();
        // Every object on the current specs (queries are a layer of their
        // own), then the start-up triggers, which may use what the specs give.
        TV_PASS_ON(TVDBSchema(*this).initialise());
        mark_changed(TVLOCATION, true);
        TV_PASS_ON(run_trigger_script(TVDBObject::C_StartupTrigger));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
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

int TVDatabase::recalculate(E_RecalcLevel level)
{
    if (level == E_RecalcNone)
        return TVErrC_ok;
    return run_trigger_script(TVDBObject::C_RecalculateTrigger);
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
