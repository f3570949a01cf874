#include "LibDatabase/db/tvdbschema.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvobjectspecchild.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvqueryparser.h"
#include "LibDatabase/db/tvresolvecontainers.h"
#include "LibDatabase/db/tvspecparser.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibObject/object/tvobjectindexentry.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <memory>
#include <sstream>

namespace {

// Mandatory children that make mandatory children stop this deep: a spec
// may name itself.
constexpr int C_MaxSpecDepth = 20;
thread_local int s_applyDepth = 0;

const char* const C_DefaultSpecText =
    "# Default objects can also have default objects as children\n$[Object] = ${Default}[];\n";
const char* const C_TopLevelSpecText =
    "# Allow Default objects at the top level of the database\n$[Object] = ${Default}[];\n";

bool is_live(const TVDBObject* object)
{
    return object != nullptr && !object->is_deleted();
}

// The user's text of the newest error, for a spec to keep.
std::string newest_message()
{
    const TVErrDetails* details = get_tverror()->error_details();
    return details != nullptr ? details->get_details(TVAspectUser) : std::string();
}

std::string trimmed(const std::string& text)
{
    return tv_clean_string(text, true, false, true, true);
}

} // namespace

// ---- Compiling -------------------------------------------------------------------------

int TVDBSchema::parse_objectspec(TVObjectSpec& spec, int* error_line)
{
    std::vector<std::string> active;
    return compile(spec, error_line, active);
}

int TVDBSchema::compile(TVObjectSpec& spec, int* error_line, std::vector<std::string>& active)
{
    try {
        int line = -1;
        spec.set_parse_error(std::string(), -1);
        spec.clear_variables();
        TV_PASS_ON(m_db.add_sysquants(spec));
        active.push_back(spec.get_name());
        int result = spec.parse(&line);
        // Inherited specs compile first, so what they inherit comes along.
        const std::vector<std::string> inherited = spec.get_inherited();
        for (size_t i = 0; !istvwarn(result) && i < inherited.size(); ++i) {
            const std::string& name = inherited[i];
            TVObjectSpec* parent = m_db.get_objectspec_by_name(name);
            if (parent == nullptr) {
                result = tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                    "Spec Inheritance Error: %s Could not find inherited spec "
                                    "name %s.",
                                    spec.get_name().c_str(), name.c_str());
            } else if (std::find(active.begin(), active.end(), name) != active.end()) {
                result = tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                    "Spec Inheritance Error: %s The spec %s inherits from itself.",
                                    spec.get_name().c_str(), name.c_str());
            } else {
                const int parentResult = compile(*parent, nullptr, active);
                if (istverr(parentResult))
                    return tv_trail_return(parentResult, TVLOCATION);
                if (istvwarn(parentResult)) {
                    get_tverror()->clear_last_error();
                    result = tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                        "Spec Error: %s Error in inherited spec %s.",
                                        spec.get_name().c_str(), name.c_str());
                } else {
                    spec.apply_inheritance(*parent);
                }
            }
        }
        active.pop_back();
        const std::string& file =
            spec.get_file_name().empty() ? spec.get_name() : spec.get_file_name();
        for (int i = 0; !istvwarn(result) && i < spec.get_nchildren(); ++i) {
            TVObjectSpecChild* child = spec.get_child_by_index(i);
            const int childLine =
                child->get_line_no() + (spec.get_file_name().empty() ? 0 : spec.get_file_line());
            const TVObjectSpec* found = m_db.get_objectspec_by_name(child->get_spec_name());
            child->set_spec_id(found != nullptr ? found->get_id() : -1);
            if (found == nullptr) {
                line = childLine;
                result = tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                    "Child Spec Error: %s:%d Could not find child spec name %s.",
                                    file.c_str(), childLine, child->get_spec_name().c_str());
                break;
            }
            const TVObjectSpec* fallback = found;
            if (!child->get_defaultspec_name().empty())
                fallback = m_db.get_objectspec_by_name(child->get_defaultspec_name());
            if (fallback == nullptr) {
                line = childLine;
                result = tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                    "Child Default Spec Error: %s:%d Could not find child spec "
                                    "name %s.",
                                    file.c_str(), childLine,
                                    child->get_defaultspec_name().c_str());
                break;
            }
            child->set_defaultspecid(fallback->get_id());
        }
        if (error_line != nullptr)
            *error_line = istvwarn(result) ? line : -1;
        if (istvwarn(result)) {
            spec.set_parse_error(newest_message(), line);
            return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::parse_objectspecs(bool strict)
{
    try {
        for (TVObjectSpec* spec : get_specs(true)) {
            const int result = parse_objectspec(*spec, nullptr);
            if (istverr(result) || (strict && istvwarn(result)))
                return tv_trail_return(result, TVLOCATION);
            // Not strict: the failure stays on the spec for the user to mend.
            if (istvwarn(result))
                get_tverror()->clear_last_error();
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::initialise()
{
    try {
        if (m_db.get_nobjectspecs() == 0)
            return TVErrC_ok;
        TV_PASS_ON(parse_objectspecs(false));
        const int result = apply_objectspecs();
        if (istverr(result))
            return tv_trail_return(result, TVLOCATION);
        // An object that didn't take its spec whole still opens; its
        // variables show what is missing.
        if (istvwarn(result)) {
            tvlog(TVLOCATION, "Object specs: %s", newest_message().c_str());
            get_tverror()->clear_last_error();
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Default specs and applying ------------------------------------------------------

int TVDBSchema::create_default_spec()
{
    try {
        bool topAdded = false;
        const std::pair<const char*, const char*> defaults[] = {
            {TVDatabase::C_DefaultSpecName, C_DefaultSpecText},
            {TVDatabase::C_TopLevelSpecName, C_TopLevelSpecText}};
        std::vector<TVObjectSpec*> added;
        for (const auto& entry : defaults) {
            if (m_db.get_objectspec_by_name(entry.first) != nullptr)
                continue;
            auto* spec = new TVObjectSpec(entry.first, entry.second);
            TV_PASS_ON(add_objectspec(spec, ""));
            added.push_back(spec);
            topAdded = topAdded || entry.first == std::string(TVDatabase::C_TopLevelSpecName);
        }
        // Other specs may name the new ones: all compile again.
        if (!added.empty())
            TV_PASS_ON(parse_objectspecs(false));
        if (topAdded)
            TV_PASS_ON(apply_objectspec_to_db(&m_db,
                                              m_db.get_objectspec_id_for_name(
                                                  TVDatabase::C_TopLevelSpecName),
                                              false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::apply_objectspecs()
{
    try {
        if (m_db.get_nobjectspecs() == 0)
            return TVErrC_ok;
        TV_PASS_ON(create_default_spec());
        // Every object is tried; the first warning is the answer.
        int first = TVErrC_ok;
        const auto apply = [this, &first](TVDBObject* object) {
            const int result = apply_objectspec_to_db(object, object->get_spec_id(), false);
            if (istverr(result))
                return result;
            if (istvwarn(result) && !istvwarn(first))
                first = result;
            else if (istvwarn(result))
                get_tverror()->clear_last_error();
            return TVErrC_ok;
        };
        for (int i = 0; i < m_db.get_nobjects(); ++i)
            TV_PASS_ON(apply(m_db.get_object_by_index(i)));
        TV_PASS_ON(apply(&m_db));
        if (istvwarn(first))
            return tv_trail_return(first, TVLOCATION);
        TV_PASS_ON(update_vars(-1, true));
        m_db.set_last_structure_change(m_db.get_last_update());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

const TVObjectSpec* TVDBSchema::spec_of(const TVDBObject& object) const
{
    const TVObjectSpec* spec = m_db.get_objectspec_by_id(object.get_spec_id());
    if (spec == nullptr && object.get_spec_id() < 0)
        spec = m_db.get_objectspec_by_name(TVDatabase::C_DefaultSpecName);
    return spec;
}

int TVDBSchema::apply_objectspec_to_db(TVDBObject* object, int spec_id, bool add_create)
{
    try {
        if (object == nullptr || !object->uses_spec() || object->is_deleted())
            return TVErrC_ok;
        if (s_applyDepth >= C_MaxSpecDepth)
            return tvwarnuser(TVDatabase::TVErrC_InvalidObjectSpec, TVLOCATION,
                              "The children that object specs make go deeper than %d levels.",
                              C_MaxSpecDepth);
        struct Depth {
            Depth() { ++s_applyDepth; }
            ~Depth() { --s_applyDepth; }
        } depth;
        const TVObjectSpec* spec = m_db.get_objectspec_by_id(spec_id);
        // The database stands for the top level; any other object without a spec is a default one.
        if (spec == nullptr && spec_id < 0 && m_db.get_nobjectspecs() > 0)
            spec = m_db.get_objectspec_by_name(object == &m_db ? TVDatabase::C_TopLevelSpecName
                                                               : TVDatabase::C_DefaultSpecName);
        if (spec == nullptr)
            spec = m_db.get_objectspec_by_id(object->get_spec_id());
        if (spec == nullptr)
            return tvwarning(TVErrC_Error, TVLOCATION, "Could not find the object spec for ID %d",
                             spec_id);
        TV_PASS_ON(object->apply_objectspec(*spec));
        // The top level's children are the user's to make: the database
        // lists no children by member tag.
        if (object == &m_db)
            return TVErrC_ok;
        for (int i = 0; i < spec->get_nchildren(); ++i) {
            const TVObjectSpecChild* child = spec->get_child_by_index(i);
            if (child->get_member_tag().empty())
                continue;
            // A child that no longer fits moves to the spec it must have.
            TVPtrArray<TVDBObject> kids(false);
            object->get_children_by_mtag(child->get_member_tag(), kids);
            for (TVDBObject* kid : kids)
                if (!is_spec_derived_from(child->get_spec_id(), kid->get_spec_id()))
                    TV_PASS_ON(apply_objectspec_to_db(kid, child->get_spec_id(), false));
        }
        for (int i = 0; i < spec->get_nchildren(); ++i) {
            const TVObjectSpecChild* child = spec->get_child_by_index(i);
            if (child->get_spec_id() < 0 ||
                !(child->is_mandatory() || (child->is_add_create() && add_create)))
                continue;
            TVDBObject* kid = object->get_child_by_mtag(child->get_member_tag());
            if (kid == nullptr)
                TV_PASS_ON(m_db.create_object(object, child->get_member_tag(),
                                              child->get_defaultspecid(), nullptr));
            else if (!is_spec_derived_from(child->get_spec_id(), kid->get_spec_id()))
                TV_PASS_ON(apply_objectspec_to_db(kid, child->get_spec_id(), add_create));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::update_vars(int id, bool force)
{
    try {
        if (m_db.get_nobjectspecs() == 0)
            return TVErrC_ok;
        const auto update = [this, force](TVDBObject* object) {
            if (!is_live(object) || !object->uses_spec())
                return TVErrC_ok;
            // A revert or a replay reads an object afresh: its variables
            // are its own again until they are linked to its spec.
            const TVObjectSpec* spec = m_db.get_objectspec_by_id(object->get_spec_id());
            if (spec != nullptr && !object->linked_to(*spec))
                return object->apply_objectspec(*spec);
            if (force || object->update_vars_due())
                return object->update_vars();
            return TVErrC_ok;
        };
        if (id < 0) {
            for (int i = 0; i < m_db.get_nobjects(); ++i)
                TV_PASS_ON(update(m_db.get_object_by_index(i)));
            return update(&m_db);
        }
        TVDBObject* object = m_db.get_object_by_id(id);
        TV_PASS_ON(update(object));
        // Values below it may look up to it ("$<^NAME>"): they follow.
        for (int i = 0; object != nullptr && object != &m_db && i < m_db.get_nobjects(); ++i) {
            TVDBObject* below = m_db.get_object_by_index(i);
            const TVDBObject* up = below->get_parent();
            while (up != nullptr && up != object)
                up = up->get_parent();
            if (up != nullptr)
                TV_PASS_ON(below->uses_spec() && is_live(below) ? below->update_vars() : TVErrC_ok);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::create_object(TVDBObject* parent, const std::string& member_tag, int spec_id,
                              TVDBObject** out)
{
    try {
        if (out != nullptr)
            *out = nullptr;
        std::unique_ptr<TVDBObject> made;
        const TVDBContainerBase* container = nullptr;
        if (parent != nullptr && parent != &m_db) {
            // A child like its parent where the parent holds such, else a plain object.
            const TVObjectIndexEntry* entry = nullptr;
            TVObject* fresh = nullptr;
            if (!istvwarn(parent->get_class_index_entry(std::string(), entry)) &&
                entry->get_create_fn() != nullptr && !istvwarn(entry->get_create_fn()(fresh, nullptr)))
                made.reset(dynamic_cast<TVDBObject*>(fresh));
            if (made == nullptr && fresh != nullptr)
                delete fresh;
            for (int pass = 0; pass < 2 && container == nullptr; ++pass) {
                if (made == nullptr || pass == 1)
                    made = std::make_unique<TVDBObject>();
                for (int i = 0; i < parent->get_ncontainers() && container == nullptr; ++i) {
                    const TVDBContainerBase* candidate = parent->get_container_by_index(i);
                    const std::string& tag = candidate->get_tag();
                    if (!tag.empty() && tag.rfind(C_DatabaseAllTag, 0) != 0 &&
                        candidate->accepts(*made))
                        container = candidate;
                }
            }
            if (container == nullptr)
                return tvwarning(TVErrC_NullPointer, TVLOCATION,
                                 "The object %d has no container for its child %s.",
                                 parent->get_id(), member_tag.c_str());
        } else {
            made = std::make_unique<TVDBObject>();
            parent = nullptr;
        }
        TVDBObject* object = made.release();
        TV_PASS_ON(m_db.add_object(object, parent, container != nullptr ? container->get_tag() : "",
                                   member_tag, spec_id, ""));
        if (out != nullptr)
            *out = object;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Editing specs ----------------------------------------------------------------------

int TVDBSchema::add_objectspec(TVObjectSpec* spec, const std::string& operation)
{
    return m_db.add_object(spec, &m_db, TVDatabase::C_SpecTag, TVDatabase::C_SpecTag, -1,
                           operation);
}

int TVDBSchema::delete_objectspec(int id)
{
    try {
        TV_PASS_ON(m_db.delete_object(id, ""));
        TV_PASS_ON(apply_objectspecs());
        return m_db.complete_operation("Delete objectspec");
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::commit_objectspec(int id, const std::string& operation)
{
    try {
        TVObjectSpec* spec = m_db.get_objectspec_by_id(id);
        if (spec == nullptr)
            return tvwarning(TVErrC_NullPointer, TVLOCATION, "Could not locate object spec %d", id);
        // A text that doesn't parse is still kept: the user mends it later.
        const int parsed = parse_objectspec(*spec, nullptr);
        if (istverr(parsed))
            return tv_trail_return(parsed, TVLOCATION);
        TV_PASS_ON(m_db.commit_object(id, ""));
        TV_PASS_ON(parse_objectspecs(false));
        TV_PASS_ON(apply_objectspecs());
        if (!operation.empty())
            TV_PASS_ON(m_db.complete_operation(operation));
        if (istvwarn(parsed))
            return tv_trail_return(parsed, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::revert_objectspec(int id)
{
    try {
        if (m_db.get_objectspec_by_id(id) == nullptr)
            return tvwarning(TVErrC_NullPointer, TVLOCATION, "Could not locate object spec %d", id);
        TV_PASS_ON(m_db.revert_object(id));
        TV_PASS_ON(parse_objectspecs(false));
        return apply_objectspecs();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::rename_spec(const std::string& from, const std::string& to)
{
    try {
        TVObjectSpec* spec = m_db.get_objectspec_by_name(from);
        if (spec == nullptr)
            return tvwarning(TVErrC_NullPointer, TVLOCATION, "Could not locate object spec %s",
                             from.c_str());
        spec->set_name(to);
        for (TVObjectSpec* other : get_specs(true))
            other->handle_rename(from, to);
        return parse_objectspecs(false);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::validate_specs() const
{
    for (const TVObjectSpec* spec : get_specs(true))
        if (!spec->get_parse_error().empty())
            return tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION, "%s",
                              spec->get_parse_error().c_str());
    return TVErrC_ok;
}

// ---- Questions ---------------------------------------------------------------------------

bool TVDBSchema::is_spec_derived_from(int base_id, int spec_id) const
{
    if (base_id == spec_id)
        return true;
    const TVObjectSpec* base = m_db.get_objectspec_by_id(base_id);
    const TVObjectSpec* spec = m_db.get_objectspec_by_id(spec_id);
    return base != nullptr && spec != nullptr && spec->inherits(base->get_name());
}

bool TVDBSchema::objectspec_in_use(int id) const
{
    for (int i = 0; i < m_db.get_nobjects(); ++i) {
        const TVDBObject* object = m_db.get_object_by_index(i);
        if (is_live(object) && object->uses_spec() && object->get_spec_id() == id)
            return true;
    }
    return m_db.get_spec_id() == id;
}

bool TVDBSchema::objectspec_referenced(const std::string& name, std::string& by) const
{
    by.clear();
    for (const TVObjectSpec* spec : get_specs(true))
        if (spec->get_name() != name && spec->referenced(name)) {
            by = spec->get_name();
            return true;
        }
    return false;
}

std::vector<int> TVDBSchema::get_derived_specs(int base_id) const
{
    std::vector<int> ids;
    for (const TVObjectSpec* spec : get_specs(true))
        if (is_spec_derived_from(base_id, spec->get_id()))
            ids.push_back(spec->get_id());
    return ids;
}

std::vector<TVObjectSpec*> TVDBSchema::get_specs(bool all) const
{
    std::vector<TVObjectSpec*> specs;
    for (int i = 0; i < m_db.get_nobjectspecs(); ++i) {
        TVObjectSpec* spec = m_db.get_objectspec_by_index(i);
        if (all || (!spec->is_base_only() && !spec->is_defunct()))
            specs.push_back(spec);
    }
    return specs;
}

std::vector<TVObjectSpec*> TVDBSchema::get_allowable_specs(int base_id, bool all) const
{
    std::vector<TVObjectSpec*> specs = get_specs(all);
    specs.erase(std::remove_if(specs.begin(), specs.end(),
                               [this, base_id](const TVObjectSpec* s) {
                                   return !is_spec_derived_from(base_id, s->get_id());
                               }),
                specs.end());
    return specs;
}

int TVDBSchema::get_child_base_spec(const TVDBObject& object) const
{
    const TVDBObject* parent = object.get_parent();
    if (parent == nullptr && object.get_parent_id() < 0 && &object != &m_db)
        parent = &m_db;
    const TVObjectSpec* spec = parent != nullptr ? spec_of(*parent) : nullptr;
    if (spec == nullptr)
        return -1;
    const TVObjectSpecChild* child = spec->get_child_by_name(object.get_member_tag());
    if (child == nullptr && object.get_member_tag().empty() && spec->get_nchildren() > 0)
        child = spec->get_child_by_index(0);
    return child != nullptr ? child->get_spec_id() : -1;
}

std::vector<std::string> TVDBSchema::get_var_values(const std::string& tag) const
{
    std::vector<std::string> values;
    for (int i = 0; i < m_db.get_nobjects(); ++i) {
        const TVDBObject* object = m_db.get_object_by_index(i);
        const TVVariable* var = is_live(object) ? object->get_var_by_tag(tag, false) : nullptr;
        if (var != nullptr && std::find(values.begin(), values.end(), var->get_value()) == values.end())
            values.push_back(var->get_value());
    }
    return values;
}

std::string TVDBSchema::spec_child_member_tag(const TVDBObject& parent) const
{
    const TVObjectSpec* spec = m_db.get_objectspec_by_id(parent.get_spec_id());
    const TVObjectSpecChild* child = spec != nullptr ? spec->get_child_by_index(0) : nullptr;
    return child != nullptr ? child->get_member_tag() : std::string();
}

// ---- The checker's questions ------------------------------------------------------------

std::vector<std::string> TVDBSchema::extra_variables(int id) const
{
    std::vector<std::string> names;
    const TVDBObject* object = m_db.get_object_by_id(id);
    const TVObjectSpec* spec = is_live(object) && object->uses_spec() ? spec_of(*object) : nullptr;
    if (spec == nullptr)
        return names;
    for (int i = 0; i < object->get_nvariables(); ++i) {
        const TVVariable* var = object->get_var_by_index(i, false);
        if (spec->get_varspec_by_name(var->get_tag()) == nullptr)
            names.push_back(var->get_tag());
    }
    return names;
}

std::vector<std::string> TVDBSchema::unfilled_vars(int id) const
{
    std::vector<std::string> names;
    const TVDBObject* object = m_db.get_object_by_id(id);
    if (!is_live(object) || !object->uses_spec())
        return names;
    for (int i = 0; i < object->get_nvariables(); ++i) {
        const TVVariable* var = object->get_var_by_index(i, false);
        // A prompt left empty, or a value still waiting on a reference.
        const bool promptEmpty = var->is_prompt() && !var->is_derived() && var->get_value().empty();
        const bool waiting = !var->isinitialised() && !(var->is_prompt() && !var->is_derived());
        if (promptEmpty || waiting)
            names.push_back(var->get_tag());
    }
    return names;
}

bool TVDBSchema::is_bastard(int id) const
{
    const TVDBObject* object = m_db.get_object_by_id(id);
    if (!is_live(object) || !object->uses_spec() || object == &m_db)
        return false;
    const TVDBObject* parent = object->get_parent_id() < 0 ? &m_db : object->get_parent();
    const TVObjectSpec* spec = parent != nullptr && parent->uses_spec() ? spec_of(*parent) : nullptr;
    if (spec == nullptr)
        return false;
    // An empty member tag stands for the spec's first child, as add_object gives it.
    if (object->get_member_tag().empty())
        return spec->get_nchildren() == 0;
    return spec->get_child_by_name(object->get_member_tag()) == nullptr;
}

// ---- Spec files ---------------------------------------------------------------------------

int TVDBSchema::export_specs(const std::string& path) const
{
    std::ostringstream text;
    for (const TVObjectSpec* spec : get_specs(true))
        spec->export_spec(text);
    for (const TVQuery* query : m_db.get_queries())
        query->export_query(text);
    return tv_db_save_file(path, text.str());
}

int TVDBSchema::import_specs(const std::string& path)
{
    try {
        std::string content;
        TV_PASS_ON(tv_db_read_file(path, content));
        std::istringstream in(content);
        std::string raw;
        int line = 0;
        bool inside = false;
        bool isQuery = false;
        int first = 0;
        std::string name;
        std::string text;
        const std::string specEnd = TVSpecParser::C_ExportSpecEnd;
        const char* const file = path.c_str();
        while (std::getline(in, raw)) {
            ++line;
            const std::string bare = trimmed(raw);
            if (inside) {
                if (isQuery && bare == TVQueryParser::C_ExportQueryEnd) {
                    inside = false;
                    TV_PASS_ON(take_query(name, text, path, first));
                } else if (!isQuery && bare == specEnd) {
                    inside = false;
                    TVObjectSpec* spec = m_db.get_objectspec_by_name(name);
                    if (spec == nullptr) {
                        spec = new TVObjectSpec(name, std::string());
                        TV_PASS_ON(add_objectspec(spec, ""));
                    }
                    spec->set_text(text);
                    spec->set_file_info(path, first);
                } else {
                    text += tv_clean_string(raw, false, false, false, true) + "\n";
                }
                continue;
            }
            if (bare.empty() || bare[0] == TVDBParser::C_Comment)
                continue;
            if (bare[0] == TVSpecParser::C_ExportSpecStart[0]) {
                name = trimmed(bare.substr(1));
                if (name.empty())
                    return tvwarnuser(TVErrC_StringNull, TVLOCATION,
                                      "(%s:%d): error: Empty spec name.", file, line);
                inside = true;
                isQuery = false;
                first = line;
                text.clear();
            } else if (bare[0] == TVQueryParser::C_ExportQueryStart[0]) {
                name = trimmed(bare.substr(1));
                if (name.empty())
                    return tvwarnuser(TVErrC_StringNull, TVLOCATION,
                                      "(%s:%d): error: Empty query name.", file, line);
                inside = true;
                isQuery = true;
                first = line;
                text.clear();
            } else if (bare == specEnd || bare == TVQueryParser::C_ExportQueryEnd) {
                return tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                  "(%s:%d): error: Extra \"%s\" tag.", file, line, bare.c_str());
            } else {
                return tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                                  "(%s:%d): error: Unknown line \"%s\" outside spec definition.",
                                  file, line, raw.c_str());
            }
        }
        if (inside)
            return tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                              "(%s:%d): error: Unterminated spec \"%s\"", file, line, name.c_str());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::take_query(const std::string& name, const std::string& text,
                           const std::string& path, int first)
{
    TVQuery* query = m_db.get_query_by_name(name);
    if (query == nullptr) {
        query = m_db.create_query();
        query->set_name(name);
        TV_PASS_ON(m_db.add_query(query, ""));
    }
    query->set_text(text);
    query->set_file_info(path, first);
    // A text that fails stays on the query, for the user to mend.
    return query->parse(false, nullptr);
}

int TVDBSchema::validate_specfile(const std::string& path) const
{
    try {
        // A scratch database of the same class takes the file first, so a
        // bad file never touches the real data.
        std::unique_ptr<TVDatabase> scratch(m_db.create_verification_db(m_db.get_app_type()));
        TVDBSchema into(*scratch);
        for (const TVObjectSpec* spec : get_specs(true))
            TV_PASS_ON(into.add_objectspec(new TVObjectSpec(spec->get_name(), spec->get_text()), ""));
        TV_PASS_ON(into.import_specs(path));
        // The file may name the default specs, which come with the first spec.
        TV_PASS_ON(into.create_default_spec());
        TV_PASS_ON(into.parse_objectspecs(true));
        return into.apply_objectspecs();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSchema::do_import(const std::string& path)
{
    try {
        TV_PASS_ON(validate_specfile(path));
        TV_PASS_ON(import_specs(path));
        TV_PASS_ON(parse_objectspecs(false));
        TV_PASS_ON(apply_objectspecs());
        return m_db.complete_operation("Import " + path);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
