#include "LibDatabase/db/tvdbobject.h"

#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbhost.h"
#include "LibDatabase/db/tvdbparser.h"
#include "LibDatabase/db/tvdbexpression.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <cctype>
#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVDBObject";
const TVObjectPreReg s_preReg(C_ClassName, TVDBObject::create_tvobject);

// The engine's code for an object that takes no spec (tvdatabase.h).
int TVDatabase_InvalidObjectSpec()
{
    static const int code = tv_builtin_code("TVDatabase::TVErrC_InvalidObjectSpec");
    return code;
}

// Bounds on one pass over a text: runaway references and expressions stop here.
constexpr int C_MaxVarScans = 10000;
constexpr int C_MaxExpressions = 100;

// A change location older than this is no longer worth showing.
constexpr long C_ModifyLocLifeSecs = 86400;

// Deletes the element at index; false for a bad index.
template <class T>
bool erase_at(TVPtrArray<T>& array, int index)
{
    return index >= 0 && index < array.size() && array.erase(index) == TVErrC_ok;
}

template <class T>
void clone_all(const TVPtrArray<T>& from, TVPtrArray<T>& to)
{
    to.clear();
    for (const T* object : from) {
        TVObject* copy = object->clone_class();
        T* typed = dynamic_cast<T*>(copy);
        if (typed == nullptr)
            delete copy;
        else
            to.add(typed);
    }
}
} // namespace

struct TVDBObject::TVDBObjectImpl {
    int m_id = -1;
    std::unique_ptr<TVDBObject> m_backup;
    char m_state = E_StateNormal;
    TVPtrArrayIndex<TVDBContainerBase> m_containers{false};
    int m_parentId = -1;
    TVDBObject* m_parent = nullptr;
    std::string m_containerTag;
    std::string m_memberTag;
    TVDatabase* m_database = nullptr;
    std::vector<TVDBObjectLink> m_links;
    int m_specId = -1;
    TVPtrArray<TVVariable> m_variables{true};
    bool m_objectSerialised = false;
    bool m_triggerUpdateVars = false;
    TVDate m_createTime{TVDate::C_Blank};
    int m_createID = -1;
    TVDate m_modifyTime{TVDate::C_Blank};
    std::string m_modifyLoc;
    int m_alertState = 0;
    TVPtrArray<TVDBObject> m_children{true};
    TVPtrArray<TVDBScript> m_scripts{true};
    bool m_created = false;
};

TVDBObject::TVDBObject() : d(new TVDBObjectImpl)
{
    register_tvobject();
}

TVDBObject::TVDBObject(const TVDBObject& other)
    : TVObject(other), TVUpdateCounter(other), TVLockable(other), d(new TVDBObjectImpl)
{
    copy_fields(other);
    register_tvobject();
}

TVDBObject& TVDBObject::operator=(const TVDBObject& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        TVUpdateCounter::operator=(other);
        copy_fields(other);
    }
    return *this;
}

TVDBObject::~TVDBObject() = default;

void TVDBObject::copy_fields(const TVDBObject& other)
{
    const TVDBObjectImpl& o = *other.d;
    d->m_id = o.m_id;
    d->m_state = o.m_state;
    d->m_parentId = o.m_parentId;
    d->m_parent = o.m_parent;
    d->m_containerTag = o.m_containerTag;
    d->m_memberTag = o.m_memberTag;
    d->m_database = o.m_database;
    d->m_links = o.m_links;
    d->m_specId = o.m_specId;
    clone_all(o.m_variables, d->m_variables);
    d->m_objectSerialised = o.m_objectSerialised;
    d->m_triggerUpdateVars = o.m_triggerUpdateVars;
    d->m_createTime = o.m_createTime;
    d->m_createID = o.m_createID;
    d->m_modifyTime = o.m_modifyTime;
    d->m_modifyLoc = o.m_modifyLoc;
    d->m_alertState = o.m_alertState;
    d->m_created = o.m_created;
    clone_all(o.m_children, d->m_children);
    clone_all(o.m_scripts, d->m_scripts);
}

void TVDBObject::set_defaults(bool constructing)
{
    TVObject::set_defaults(constructing);
    TVPtrArrayIndex<TVDBContainerBase> containers = std::move(d->m_containers);
    d.reset(new TVDBObjectImpl);
    d->m_containers = std::move(containers);
}

int TVDBObject::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBObject>(out, source, C_ClassName);
}

void TVDBObject::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

// ---- Serial form -------------------------------------------------------------

int TVDBObject::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        // A derived value is worked out again after a read, and a system
        // value lives in its compiled field: neither needs a line when empty.
        std::vector<std::string> varLines;
        if (out != nullptr)
            for (const TVVariable* var : d->m_variables)
                if (!var->is_derived() && !(var->is_sysvalue() && var->get_value().empty()))
                    varLines.push_back(var_to_string(*var));

        int result = serialise_value(in, out, prefix, "I", TVSrlValue<int>(d->m_id, -1));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "S",
                                     TVSrlValue<char>(d->m_state, E_StateNormal));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "P", TVSrlValue<int>(d->m_parentId, -1));
        if (!istvwarn(result))
            result = serialise_string(in, out, prefix, "C", d->m_containerTag, true);
        if (!istvwarn(result))
            result = serialise_string(in, out, prefix, "M", d->m_memberTag, true);
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "L",
                                     TVSrlValueVector<TVDBObjectLink>(d->m_links));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "O", TVSrlValue<int>(d->m_specId, -1));
        if (!istvwarn(result))
            result = serialise_string_vector(in, out, prefix, "V", varLines);
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "CT",
                                     TVSrlValue<TVDate>(d->m_createTime, TVDate::C_Blank));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "CI", TVSrlValue<int>(d->m_createID, -1));
        // The modify time defaults to the create time just read: an object
        // never changed since its creation carries one stamp.
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "MT",
                                     TVSrlValue<TVDate>(d->m_modifyTime, d->m_createTime));
        if (!istvwarn(result))
            result = serialise_object(in, out, prefix, "MC",
                                      TVSrlObjectArray<TVDBObject>(d->m_children, version));
        if (!istvwarn(result))
            result = serialise_object(in, out, prefix, "SC",
                                      TVSrlObjectArray<TVDBScript>(d->m_scripts, version));
        if (!istvwarn(result) && in != nullptr) {
            // Old files carry an edit flag; it meant nothing after a load.
            bool discarded = false;
            result = serialise_value(in, nullptr, prefix, "E", TVSrlValue<bool>(discarded, false));
        }
        if (!istvwarn(result))
            result = TVObject::serialise(in, out, prefix, version);

        if (!istvwarn(result) && in != nullptr) {
            if (d->m_parentId == d->m_id)
                d->m_parentId = -1;
            for (TVVariable* var : d->m_variables)
                var->set_value(var->get_value(), true);
            for (const std::string& line : varLines) {
                result = var_from_string(line);
                if (istvwarn(result))
                    break;
            }
            if (!istvwarn(result))
                finish_read();
        }
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBObject::finish_read()
{
    d->m_objectSerialised = true;
    trigger_update_vars();
    if (!d->m_modifyLoc.empty() && d->m_modifyTime.is_ok() &&
        TVDateUtils::now() - d->m_modifyTime > C_ModifyLocLifeSecs)
        d->m_modifyLoc.clear();
    if (d->m_modifyTime.is_invalid())
        d->m_modifyTime = d->m_createTime;
}

int TVDBObject::var_from_string(const std::string& line)
{
    // "tag#1 value": the tag runs to the first "#" (to the first space in
    // lines without one), then the initialised digit and a space.
    size_t end = line.find('#');
    if (end == std::string::npos)
        end = line.find(' ');
    if (end == std::string::npos || end + 2 >= line.size() ||
        !std::isdigit(static_cast<unsigned char>(line[end + 1])) || line[end + 2] != ' ')
        return tvwarning(TVErrC_FileLineInvalid, TVLOCATION, "Invalid embedded variable %s",
                         line.c_str());
    const std::string tag = line.substr(0, end);
    TVVariable* var = get_var_by_tag(tag, false);
    if (var == nullptr) {
        var = new TVVariable(tag, std::string(), false);
        d->m_variables.add(var);
    }
    var->set_value(tv_stream_in(line.substr(end + 3)), line[end + 1] == '1');
    return TVErrC_ok;
}

std::string TVDBObject::var_to_string(const TVVariable& var)
{
    return var.get_tag() + (var.isinitialised() ? "#1 " : "#0 ") + tv_stream_out(var.get_value());
}

void TVDBObject::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDBObject: id " << d->m_id << ", state " << get_obj_state() << ", parent "
        << d->m_parentId << " \"" << d->m_containerTag << "\" \"" << d->m_memberTag
        << "\", spec " << d->m_specId << ", created " << d->m_createTime << " (first id "
        << d->m_createID << "), modified " << d->m_modifyTime << " at " << d->m_modifyLoc
        << '\n';
    out << pad << "    " << d->m_links.size() << " links, " << d->m_variables.size()
        << " variables, " << d->m_children.size() << " managed children, "
        << d->m_scripts.size() << " scripts, " << d->m_containers.size() << " containers"
        << (is_edited() ? ", edited" : "") << '\n';
    TVUpdateCounter::dump(out, indent + 1);
    TVLockable::dump(out, indent + 1);
    for (const TVDBObject* child : d->m_children)
        child->dump(out, indent + 1);
    TVObject::dump(out, indent + 1);
}

bool TVDBObject::operator==(const TVDBObject& other) const
{
    return derived_compare(other, 0);
}

std::ostream& operator<<(std::ostream& out, const TVDBObject& object)
{
    object.dump(out, 0);
    return out;
}

// ---- Virtual operations --------------------------------------------------------

void TVDBObject::remap_id(int old_id, int new_id)
{
    bool changed = false;
    if (d->m_parentId == old_id) {
        d->m_parentId = new_id;
        changed = true;
    }
    if (d->m_specId == old_id) {
        d->m_specId = new_id;
        changed = true;
    }
    for (TVDBObjectLink& link : d->m_links)
        if (link.m_id == old_id) {
            link.m_id = new_id;
            changed = true;
        }
    if (changed && old_id != new_id)
        mark_changed(TVLOCATION, true);
}

void TVDBObject::remap_ids(const std::map<int, int>& ids)
{
    bool changed = false;
    const auto remap = [&ids, &changed](int& id) {
        const auto it = ids.find(id);
        if (it != ids.end() && it->second != id) {
            id = it->second;
            changed = true;
        }
    };
    remap(d->m_parentId);
    remap(d->m_specId);
    for (TVDBObjectLink& link : d->m_links)
        remap(link.m_id);
    if (changed)
        mark_changed(TVLOCATION, true);
}

std::string TVDBObject::get_container_tag() const
{
    return d->m_containerTag;
}

bool TVDBObject::is_app_flagged() const
{
    return false;
}

TVDBObject* TVDBObject::get_child_by_mtag(const std::string& tag) const
{
    for (const TVDBContainerBase* container : d->m_containers)
        if (TVDBObject* child = container->find_member_tag(tag))
            return child;
    return nullptr;
}

int TVDBObject::get_num_member_tag(const std::string& tag) const
{
    TVPtrArray<TVDBObject> children(false);
    get_children_by_mtag(tag, children);
    return children.size();
}

int TVDBObject::on_remove()
{
    return TVErrC_ok;
}

int TVDBObject::on_add()
{
    return TVErrC_ok;
}

std::string TVDBObject::get_summary() const
{
    return std::string();
}

bool TVDBObject::uses_spec() const
{
    return true;
}

int TVDBObject::apply_objectspec(const TVObjectSpec& spec)
{
    try {
        if (!uses_spec())
            return tvwarning(TVDatabase_InvalidObjectSpec(), TVLOCATION,
                             "This object does not use object specs.");
        bool added = false;
        for (int i = 0; i < spec.get_nvarspecs(); ++i) {
            const TVVarSpec* definition = spec.get_varspec_by_index(i);
            TVVariable* var = get_var_by_tag(definition->get_tag(), false);
            if (var == nullptr) {
                // A restored object's new variable keeps what the file had: nothing to work out.
                var = new TVVariable(definition->get_tag(), std::string(),
                                     !definition->is_derived() && d->m_objectSerialised);
                d->m_variables.add(var);
                added = true;
            }
            var->link(*definition);
        }
        if (added && !d->m_objectSerialised)
            mark_changed(TVLOCATION, true);
        // A stray variable with a value stays: no user data is lost when a spec changes.
        for (int i = d->m_variables.size(); i-- > 0;) {
            const TVVariable* var = d->m_variables[i];
            if (var->get_value().empty() && spec.get_varspec_by_name(var->get_tag()) == nullptr)
                (void)d->m_variables.erase(i);
        }
        d->m_objectSerialised = false;
        TV_PASS_ON(update_vars());
        set_spec_id(spec.get_id());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVDBObject::get_sysvalue(const std::string&) const
{
    return std::string();
}

std::string TVDBObject::get_sysvalue(const std::string&, const std::string&) const
{
    return std::string();
}

int TVDBObject::set_sysvalue(const std::string&, const std::string&)
{
    return TVErrC_ok;
}

int TVDBObject::set_sysvalue(const std::string&, const std::string&, const std::string&)
{
    return TVErrC_ok;
}

bool TVDBObject::sysval_is_calculated(const std::string&) const
{
    return false;
}

int TVDBObject::pre_validate_value(const std::string&, const std::string&, const std::string&,
                                   std::string&) const
{
    return TVErrC_ok;
}

void TVDBObject::trigger_update_vars()
{
    d->m_triggerUpdateVars = true;
}

bool TVDBObject::apply_note(const TVDBNote&)
{
    return false;
}

void TVDBObject::mark_structure_change()
{
    const TVDBHost* host = TVDBHost::installed();
    if (host != nullptr && d->m_database != nullptr)
        host->record_structure_change(*d->m_database, get_last_update());
}

bool TVDBObject::is_app_enabled() const
{
    return true;
}

// ---- Identity ------------------------------------------------------------------

int TVDBObject::get_id() const
{
    return d->m_id;
}

TVId TVDBObject::get_ids(int seq) const
{
    return TVId(d->m_id, seq, -1);
}

void TVDBObject::set_id(int id, const TVDate& created, bool reset_create_id)
{
    if (reset_create_id)
        d->m_createID = -1;
    if (id == d->m_id)
        return;
    if (!reset_create_id && d->m_createID == -1 && d->m_id >= 0)
        d->m_createID = d->m_id;
    d->m_id = id;
    d->m_createTime = created;
    mark_changed(TVLOCATION, true);
}

int TVDBObject::get_create_id() const
{
    return d->m_createID != -1 ? d->m_createID : d->m_id;
}

bool TVDBObject::get_created() const
{
    return d->m_created;
}

const TVDate& TVDBObject::get_create_time() const
{
    return d->m_createTime;
}

const TVDate& TVDBObject::get_modify_time() const
{
    return d->m_modifyTime;
}

const std::string& TVDBObject::get_modify_loc() const
{
    return d->m_modifyLoc;
}

int TVDBObject::get_spec_id() const
{
    return d->m_specId;
}

void TVDBObject::set_spec_id(int spec_id)
{
    if (spec_id == d->m_specId)
        return;
    d->m_specId = spec_id;
    mark_changed(TVLOCATION, true);
}

// ---- Tree ----------------------------------------------------------------------

int TVDBObject::get_parent_id() const
{
    return d->m_parentId;
}

TVDBObject* TVDBObject::get_parent() const
{
    return d->m_parent;
}

TVDBObject* TVDBObject::get_upper() const
{
    if (d->m_parent != nullptr)
        return d->m_parent;
    const TVDBHost* host = TVDBHost::installed();
    TVDBObject* root =
        host != nullptr && d->m_database != nullptr ? host->database_object(*d->m_database) : nullptr;
    return root != this ? root : nullptr;
}

void TVDBObject::set_parent(TVDBObject* parent, const std::string& container_tag,
                            const std::string& member_tag, TVDatabase* db)
{
    const int parentId = parent != nullptr ? parent->get_id() : -1;
    const std::string& ctag = parent != nullptr ? container_tag : C_EmptyString;
    const std::string& mtag = parent != nullptr ? member_tag : C_EmptyString;
    const bool changed =
        parentId != d->m_parentId || ctag != d->m_containerTag || mtag != d->m_memberTag;
    d->m_parentId = parentId;
    d->m_parent = parent;
    d->m_containerTag = ctag;
    d->m_memberTag = mtag;
    d->m_database = db;
    if (changed) {
        trigger_update_vars();
        mark_changed(TVLOCATION, true);
    }
}

void TVDBObject::set_parent_ptr(TVDBObject* parent, TVDatabase* db)
{
    d->m_parent = parent;
    d->m_database = db;
}

const std::string& TVDBObject::get_member_tag() const
{
    return d->m_memberTag;
}

void TVDBObject::stamped()
{
    const TVDBHost* host = TVDBHost::installed();
    if (host != nullptr && d != nullptr && d->m_database != nullptr)
        host->object_updated(d->m_database, get_id());
}

TVDatabase* TVDBObject::get_database() const
{
    return d->m_database;
}

void TVDBObject::add_container(TVDBContainerBase& container)
{
    (void)d->m_containers.add(container.get_tag(), &container);
}

TVDBContainerBase* TVDBObject::get_container(const std::string& tag) const
{
    return d->m_containers.find(tag);
}

bool TVDBObject::remap_container(const std::string& old_tag, const std::string& new_tag)
{
    TVDBContainerBase* container = d->m_containers.find(old_tag);
    if (container == nullptr || d->m_containers.contains(new_tag))
        return false;
    d->m_containers.erase(old_tag);
    container->set_tag(new_tag);
    (void)d->m_containers.add(new_tag, container);
    return true;
}

void TVDBObject::clear_containers()
{
    for (TVDBContainerBase* container : d->m_containers)
        (void)container->clear();
}

int TVDBObject::get_ncontainers() const
{
    return d->m_containers.size();
}

TVDBContainerBase* TVDBObject::get_container_by_index(int index) const
{
    return index >= 0 && index < d->m_containers.size() ? d->m_containers[index] : nullptr;
}

void TVDBObject::get_children_by_mtag(const std::string& tag, TVPtrArray<TVDBObject>& found) const
{
    // One child may stand in several containers (its own, the empty-tagged
    // one): keep the first sighting.
    TVPtrArray<TVDBObject> all(false);
    for (const TVDBContainerBase* container : d->m_containers)
        container->find_all_member_tag(tag, all);
    for (TVDBObject* child : all)
        if (found.index_of(child) < 0)
            found.add(child);
}

// ---- Changes ---------------------------------------------------------------------

void TVDBObject::mark_changed(const std::string& location, bool now)
{
    if (now || !d->m_modifyTime.is_ok())
        d->m_modifyTime = TVDateUtils::now();
    else
        d->m_modifyTime += TVDuration(1);
    d->m_modifyLoc = location;
    mark_update();
}

void TVDBObject::set_modify_time(const TVDate& time)
{
    d->m_modifyTime = time;
    mark_update();
}

void TVDBObject::set_state(char state)
{
    if (state == d->m_state)
        return;
    d->m_state = state;
    mark_changed(TVLOCATION, true);
}

char TVDBObject::get_obj_state() const
{
    switch (d->m_state) {
    case E_StateDeleted:
    case E_StateEdited:
    case E_StateLocked:
        return d->m_state;
    default:
        return E_StateNormal;
    }
}

bool TVDBObject::is_edited() const
{
    return d->m_backup != nullptr;
}

int TVDBObject::edit(int lock_id, bool created)
{
    try {
        // A refused edit leaves the edit that holds the lock as it was: its
        // created flag is what makes a cancel remove a new object.
        int result = lock(lock_id);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        d->m_created = created;
        d->m_backup.reset();
        std::unique_ptr<TVObject> copy(clone_class());
        TVDBObject* backup = dynamic_cast<TVDBObject*>(copy.get());
        if (backup == nullptr) {
            (void)unlock();
            return tvwarning(TVErrC_DynamicCast, TVLOCATION, "Could not duplicate this object.");
        }
        copy.release();
        d->m_backup.reset(backup);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

namespace {
// Commit and revert both need an edit in progress: the lock and its backup.
int check_edited(bool locked, bool backedUp, int id)
{
    if (!locked)
        return tvwarning(TVLockable::TVErrC_ObjectNotLocked, TVLOCATION, "The object %d was not locked.", id);
    if (!backedUp)
        return tvwarning(TVErrC_NullPointer, TVLOCATION, "The object %d was not backed up.", id);
    return TVErrC_ok;
}
} // namespace

int TVDBObject::commit()
{
    try {
        TV_PASS_ON(check_edited(is_locked(), d->m_backup != nullptr, d->m_id));
        d->m_backup.reset();
        // What the user was asked for is given once the edit is done, empty or not.
        for (TVVariable* var : d->m_variables)
            var->mark_initialised();
        int result = unlock();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        mark_changed(TVLOCATION, true);
        d->m_created = false;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBObject::revert()
{
    try {
        TV_PASS_ON(check_edited(is_locked(), d->m_backup != nullptr, d->m_id));
        const TVDBHost* host = TVDBHost::installed();
        const int version =
            host != nullptr && d->m_database != nullptr ? host->appfileversion(*d->m_database) : 0;
        const int id = d->m_id;
        // The backup goes away with the read below only if we let go of it first.
        std::unique_ptr<TVDBObject> backup = std::move(d->m_backup);
        int result = derived_assign(*backup, version);
        d->m_id = id;
        if (istvwarn(result)) {
            d->m_backup = std::move(backup);
            return tv_trail_return(result, TVLOCATION);
        }
        result = unlock();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Links -------------------------------------------------------------------------

void TVDBObject::add_link(int id, const std::string& tag)
{
    d->m_links.emplace_back(id, tag);
    mark_changed(TVLOCATION, true);
}

int TVDBObject::remove_link(int id, const std::string& tag, bool warn)
{
    const TVDBObjectLink link(id, tag);
    const auto end = std::remove(d->m_links.begin(), d->m_links.end(), link);
    if (end == d->m_links.end())
        return warn ? tvwarning(TVErrC_InvalidValue, TVLOCATION, "Could not find ID %d", id)
                    : TVErrC_ok;
    d->m_links.erase(end, d->m_links.end());
    mark_changed(TVLOCATION, true);
    return TVErrC_ok;
}

std::vector<int> TVDBObject::get_links(const std::string& tag) const
{
    std::vector<int> ids;
    for (const TVDBObjectLink& link : d->m_links)
        if (link.m_tag == tag)
            ids.push_back(link.m_id);
    return ids;
}

const std::vector<TVDBObjectLink>& TVDBObject::get_all_links() const
{
    return d->m_links;
}

// ---- Managed children ------------------------------------------------------------------

void TVDBObject::add_managed_child(TVDBObject* child)
{
    if (child == nullptr)
        return;
    (void)d->m_children.insert(0, child);
    mark_changed(TVLOCATION, true);
}

TVDBObject* TVDBObject::extract_managed_child()
{
    if (d->m_children.empty())
        return nullptr;
    TVDBObject* child = d->m_children.remove(0);
    mark_changed(TVLOCATION, true);
    return child;
}

int TVDBObject::get_nmanaged_children() const
{
    return d->m_children.size();
}

// ---- Scripts --------------------------------------------------------------------------

int TVDBObject::get_nscripts() const
{
    return d->m_scripts.size();
}

TVDBScript* TVDBObject::get_script_no(int index) const
{
    return index >= 0 && index < d->m_scripts.size() ? d->m_scripts[index] : nullptr;
}

void TVDBObject::add_script(TVDBScript* script)
{
    if (script != nullptr)
        d->m_scripts.add(script);
}

bool TVDBObject::remove_script(int index)
{
    return erase_at(d->m_scripts, index);
}

void TVDBObject::clear_scripts()
{
    d->m_scripts.clear();
}

TVDBScript* TVDBObject::get_own_script(const std::string& name) const
{
    for (TVDBScript* script : d->m_scripts)
        if (script->get_name() == name)
            return script;
    return nullptr;
}

TVDBScript* TVDBObject::get_script(const std::string& name) const
{
    if (TVDBScript* own = get_own_script(name))
        return own;
    const TVDBHost* host = TVDBHost::installed();
    if (host == nullptr || d->m_database == nullptr || d->m_specId < 0)
        return nullptr;
    const TVObjectSpec* spec = host->objectspec(*d->m_database, d->m_specId);
    return spec != nullptr ? spec->get_own_script(name) : nullptr;
}

int TVDBObject::run_trigger_script(const std::string& name)
{
    TVDBScript* script = get_script(C_Trigger + name);
    if (script == nullptr)
        return TVErrC_ok;
    return script->run_within(*this, false, nullptr);
}

// ---- Variables -------------------------------------------------------------------------

int TVDBObject::get_nvariables() const
{
    return d->m_variables.size();
}

int TVDBObject::get_nvars(bool visible_only) const
{
    if (!visible_only)
        return d->m_variables.size();
    return static_cast<int>(std::count_if(d->m_variables.begin(), d->m_variables.end(),
                                          [](const TVVariable* v) { return !v->is_private(); }));
}

TVVariable* TVDBObject::get_var_by_index(int index, bool visible_only) const
{
    for (TVVariable* var : d->m_variables)
        if ((!visible_only || !var->is_private()) && index-- == 0)
            return var;
    return nullptr;
}

TVVariable* TVDBObject::get_var_by_tag(const std::string& tag, bool search) const
{
    for (const TVDBObject* object = this; object != nullptr;
         object = search ? object->get_upper() : nullptr)
        for (TVVariable* var : object->d->m_variables)
            if (var->get_tag() == tag)
                return var;
    return nullptr;
}

namespace {
// The object that holds tag's variable, this one or (with search) a parent.
TVDBObject* var_holder(TVDBObject* object, const std::string& tag, bool search)
{
    for (; object != nullptr; object = search ? object->get_upper() : nullptr)
        if (object->get_var_by_tag(tag, false) != nullptr)
            return object;
    return nullptr;
}
} // namespace

void TVDBObject::add_var(TVVariable* var)
{
    if (var != nullptr)
        d->m_variables.add(var);
}

bool TVDBObject::remove_var_by_index(int index)
{
    return erase_at(d->m_variables, index);
}

void TVDBObject::clear_vars()
{
    d->m_variables.clear();
}

std::string TVDBObject::get_var_value(const std::string& tag, bool search, bool increment)
{
    TVDBObject* holder = var_holder(this, tag, search);
    if (holder == nullptr)
        return TVDBParser::C_VarStart + tag + TVDBParser::C_VarEnd;
    TVVariable* var = holder->get_var_by_tag(tag, false);
    if (var->is_auto() && increment && var->iscached()) {
        // The width of the value sets the width of the next number: "007" keeps "008".
        const std::string value = var->get_value();
        const long next = tv_string_to_long(value, 0) + 1;
        var->set_value(tv_sprintf("%0*ld", static_cast<int>(value.size()), next), true);
        holder->mark_changed(TVLOCATION, true);
        return value;
    }
    if (!var->iscached()) {
        if (var->is_sysvalue())
            return holder->get_sysvalue(tag);
        var->clone_spec();
        (void)holder->expand_var(*var);
    }
    return var->get_value();
}

int TVDBObject::set_var_value(const std::string& tag, const std::string& value, bool search)
{
    try {
        TVDBObject* holder = var_holder(this, tag, search);
        TVVariable* var = holder != nullptr ? holder->get_var_by_tag(tag, false) : nullptr;
        if (var != nullptr && var->get_value() == value)
            return TVErrC_ok;
        if (var == nullptr) {
            holder = this;
            d->m_variables.add(new TVVariable(tag, value, true));
        } else {
            var->set_value(value, true);
        }
        TV_PASS_ON(holder->set_sysvalue(tag, value));
        holder->trigger_update_vars();
        holder->mark_changed(TVLOCATION, true);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDBObject::var_is_calculated(const std::string& tag) const
{
    const TVVariable* var = get_var_by_tag(tag, false);
    return var != nullptr && (var->is_derived() || (var->is_sysvalue() && sysval_is_calculated(tag)));
}

int TVDBObject::update_vars()
{
    try {
        // A system value that the class computes, or one the spec only
        // declares, is read from its field: it is the class's to set.
        const auto from_object = [this](const TVVariable& var) {
            return var.is_sysvalue() && (!var.defined_in_spec() || sysval_is_calculated(var.get_tag()));
        };
        for (TVVariable* var : d->m_variables) {
            if (from_object(*var))
                var->set_value(get_sysvalue(var->get_tag()), true);
            else if (var->is_derived() || !var->isinitialised())
                var->clone_spec();
            else if (var->is_sysvalue())
                var->set_value(get_sysvalue(var->get_tag()), var->isinitialised());
        }
        // Which variables are left to work out, in the order they stand.
        const auto pending = [&from_object](const TVVariable& var) {
            return !var.isinitialised() && !(var.is_prompt() && !var.is_derived()) &&
                   !from_object(var);
        };
        for (bool progress = true; progress;) {
            progress = false;
            for (int i = 0; i < d->m_variables.size(); ++i) {
                TVVariable& var = *d->m_variables[i];
                if (!pending(var))
                    continue;
                const int result = expand_var(var);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
                if (result != TVErrC_okFinished)
                    continue;
                progress = true;
                if (var.is_sysvalue())
                    TV_PASS_ON(set_sysvalue(var.get_tag(), var.get_value()));
            }
        }
        for (TVVariable* var : d->m_variables)
            if (var->is_sysvalue() && pending(*var))
                TV_PASS_ON(set_sysvalue(var->get_tag(), var->get_value()));
        clear_update_vars_due();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBObject::expand_var(TVVariable& var)
{
    std::string text = var.get_value();
    const int result = apply_vars(text, !var.is_derived() && !var.isinitialised(), &var);
    if (istvwarn(result))
        return tv_trail_return(result, TVLOCATION);
    var.set_value(text, result == TVErrC_okFinished);
    return result;
}

bool TVDBObject::extract_var(const std::string& inner, TVVarRef& ref)
{
    ref.modifier = 0;
    ref.levels = 0;
    size_t pos = 0;
    for (;;) {
        if (inner.compare(pos, 1, TVDBParser::C_VarModifier) == 0 && pos + 2 < inner.size()) {
            ref.modifier = inner[pos + 1];
            pos += 2;
        } else if (inner.compare(pos, 1, TVDBParser::C_VarParent) == 0) {
            ++ref.levels;
            ++pos;
        } else {
            break;
        }
    }
    ref.tag = inner.substr(pos);
    return !ref.tag.empty();
}

bool TVDBObject::locate_next_var(const std::string& text, size_t from, TVVarRef& ref)
{
    const std::string start = TVDBParser::C_VarStart;
    for (size_t begin = text.find(start, from); begin != std::string::npos;
         begin = text.find(start, begin + 1)) {
        const size_t end = text.find(TVDBParser::C_VarEnd, begin + start.size());
        if (end == std::string::npos)
            return false;
        if (extract_var(text.substr(begin + start.size(), end - begin - start.size()), ref)) {
            ref.begin = begin;
            ref.end = end;
            return true;
        }
    }
    return false;
}

std::vector<TVDBObject::TVVarRef> TVDBObject::locate_vars(const std::string& text)
{
    std::vector<TVVarRef> refs;
    TVVarRef ref;
    for (size_t from = 0; locate_next_var(text, from, ref); from = ref.end + 1)
        refs.push_back(ref);
    return refs;
}

namespace {
// The end of the expression whose "$=(" stands at begin: its matching ")",
// or the end of the text when the parentheses don't balance.
size_t expression_end(const std::string& text, size_t begin)
{
    int depth = 0;
    for (size_t i = begin + std::string(TVDBParser::C_ExprStart).size() - 1; i < text.size(); ++i) {
        if (text[i] == TVDBParser::C_OpenBracket)
            ++depth;
        else if (text[i] == TVDBParser::C_CloseBracket && --depth == 0)
            return i;
    }
    return text.size();
}

std::string apply_modifier(const std::string& value, char modifier)
{
    if (modifier == 'L' || modifier == 'l')
        return tv_tolower(value);
    if (modifier == 'U' || modifier == 'u') {
        std::string upper = value;
        for (char& c : upper)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return upper;
    }
    return value;
}
} // namespace

int TVDBObject::apply_vars(std::string& text, bool increment, TVVariable* owner)
{
    try {
        bool unresolved = false;
        size_t from = 0;
        TVVarRef ref;
        for (int scan = 0; scan < C_MaxVarScans && locate_next_var(text, from, ref); ++scan) {
            TVDBObject* target = this;
            for (int up = 0; up < ref.levels && target != nullptr; ++up)
                target = target->get_upper();
            const TVVariable* var = target != nullptr ? target->get_var_by_tag(ref.tag, true) : nullptr;
            if (var == nullptr || !var->isinitialised()) {
                // Left in the text for a later pass, which may know more.
                unresolved = true;
                from = ref.begin + 1;
                continue;
            }
            const std::string value =
                apply_modifier(target->get_var_value(ref.tag, true, increment), ref.modifier);
            text.replace(ref.begin, ref.end + 1 - ref.begin, value);
            from = ref.begin + value.size();
        }
        if (unresolved)
            return TVErrC_okNotFinished;
        const std::string start = TVDBParser::C_ExprStart;
        size_t begin = text.find(start);
        for (int index = 0; begin != std::string::npos && index < C_MaxExpressions; ++index) {
            const size_t end = expression_end(text, begin);
            const std::string expression = text.substr(begin + start.size(),
                                                       end - std::min(end, begin + start.size()));
            std::string result;
            TV_PASS_ON(tv_evaluate_expression(owner, expression, index, result));
            text.replace(begin, std::min(end + 1, text.size()) - begin, result);
            begin = text.find(start, begin + result.size());
        }
        return TVErrC_okFinished;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDBObject::linked_to(const TVObjectSpec& spec) const
{
    for (int i = 0; i < spec.get_nvarspecs(); ++i) {
        const TVVarSpec* definition = spec.get_varspec_by_index(i);
        const TVVariable* var = get_var_by_tag(definition->get_tag(), false);
        if (var == nullptr || !var->shares_definition(*definition))
            return false;
    }
    return true;
}

// ---- Display state ------------------------------------------------------------------------

bool TVDBObject::is_serialised() const
{
    return d->m_objectSerialised;
}

bool TVDBObject::update_vars_due() const
{
    return d->m_triggerUpdateVars;
}

void TVDBObject::clear_update_vars_due()
{
    d->m_triggerUpdateVars = false;
}

int TVDBObject::get_alert_state() const
{
    return d->m_alertState;
}

void TVDBObject::set_alert_state(int state)
{
    d->m_alertState = state;
}
