#include "LibDatabase/db/tvdbimporter.h"

#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <memory>
#include <set>

namespace {

constexpr const char* C_ImportingStatus = "Importing...";

bool is_spec(const TVDBObject* object)
{
    return dynamic_cast<const TVObjectSpec*>(object) != nullptr;
}

} // namespace

int TVDBImporter::import_db(const std::string& file, const std::string* text, int* count)
{
    const TVAppStatusSetter status(C_ImportingStatus, true, TVDatabase::C_SaveStatusDelayMicro);
    if (count != nullptr)
        *count = 0;
    try {
        TV_PASS_ON(m_target.check_writable(true));
        const std::string& appType = m_target.get_app_type();
        std::unique_ptr<TVDatabase> scratch(m_target.create_verification_db(appType));
        const std::string source = file.empty() ? "The imported data" : file;
        if (!file.empty()) {
            // With its partial file, as the program that wrote it would see it.
            TV_PASS_ON(scratch->read(file, true, true));
        } else if (text != nullptr) {
            TV_PASS_ON(scratch->read_text(*text, false, false));
            if (!appType.empty() && scratch->get_app_type() != appType)
                return tverror(TVDatabase::TVErrC_WrongAppType, TVLOCATION,
                               "%s is not a %s data file (it is a %s data file).", source.c_str(),
                               appType.c_str(), scratch->get_app_type().c_str());
        } else {
            return tverror(TVErrC_NullPointer, TVLOCATION, "Nothing to import.");
        }

        int taken = 0;
        try {
            const int result = import_all(*scratch, source, taken);
            if (istvwarn(result)) {
                drop_open_operation();
                return tv_trail_return(result, TVLOCATION);
            }
        } catch (const TVErrDetails&) {
            drop_open_operation();
            tv_trail_throw(TVLOCATION);
        }
        const std::string name = file.empty() ? std::string("data") : tv_filename(file);
        TV_PASS_ON(m_target.complete_operation("Import " + name));
        if (count != nullptr)
            *count = taken;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// A half import must not reach the partial file with the next operation:
// the target goes back to what its files hold. Only a database with files
// can; one in memory keeps what was done.
void TVDBImporter::drop_open_operation()
{
    if (m_target.get_filename().empty())
        return;
    try {
        (void)m_target.discard_operation();
    } catch (const TVErrDetails&) {
        // The first failure is the one the user hears of.
    }
}

int TVDBImporter::import_all(TVDatabase& scratch, const std::string& source, int& count)
{
    try {
        std::map<int, int> specMap;
        TV_PASS_ON(take_specs(scratch, specMap));

        // Every id changes at once, by one map, so no new number can meet an
        // old one still in use: specs take the target's, live objects new
        // ids, and references to tombstones end as a delete ends them.
        std::map<int, int> ids;
        std::vector<TVDBObject*> incoming;
        for (int i = 0; i < scratch.get_nobjects(); ++i) {
            TVDBObject* object = scratch.get_object_by_index(i);
            const int oldId = object->get_id();
            int to = -1;
            if (is_spec(object)) {
                const auto it = specMap.find(oldId);
                to = it != specMap.end() ? it->second : -1;
            } else if (!object->is_deleted()) {
                to = m_target.allocate_id();
                incoming.push_back(object);
            }
            ids[oldId] = to;
        }
        for (int i = 0; i < scratch.get_nobjects(); ++i) {
            TVDBObject* object = scratch.get_object_by_index(i);
            object->remap_ids(ids);
            const int to = ids[object->get_id()];
            if (to >= 0 && !is_spec(object))
                object->set_id(to, object->get_create_time(), true);
        }

        // Parents before children: by depth among the incoming objects.
        std::map<int, TVDBObject*> byId;
        for (TVDBObject* object : incoming)
            byId[object->get_id()] = object;
        std::map<int, int> depth;
        for (TVDBObject* object : incoming) {
            int n = 0;
            for (auto it = byId.find(object->get_parent_id()); it != byId.end() && n <= static_cast<int>(incoming.size());
                 it = byId.find(it->second->get_parent_id()))
                ++n;
            depth[object->get_id()] = n;
        }
        std::stable_sort(incoming.begin(), incoming.end(), [&](TVDBObject* a, TVDBObject* b) {
            return depth[a->get_id()] < depth[b->get_id()];
        });

        TVDatabase::TVDatabaseImpl& d = *m_target.d;
        for (TVDBObject* object : incoming) {
            std::unique_ptr<TVObject> made(object->clone_class());
            auto* copy = dynamic_cast<TVDBObject*>(made.get());
            if (copy == nullptr)
                return tverror(TVErrC_DynamicCast, TVLOCATION,
                               "Could not copy object %d of %s.", object->get_id(), source.c_str());
            made.release();
            const int parentId = copy->get_parent_id();
            const std::string ctag = copy->get_container_tag();
            const bool underImported = byId.count(parentId) != 0;
            const bool underRoot =
                parentId == 0 && !ctag.empty() && m_target.get_container(ctag) != nullptr;
            if (!underImported && !underRoot)
                copy->set_parent(nullptr, std::string(), std::string(), &m_target);
            else
                copy->set_parent_ptr(nullptr, &m_target);
            d.m_objects.add(copy);
            d.m_map[copy->get_id()] = copy;
            copy->mark_changed(TVLOCATION, true);
            TV_PASS_ON(copy->on_add());
            ++count;
        }
        m_target.set_last_structure_change(m_target.get_last_update());
        m_target.mark_changed(TVLOCATION, true);
        (void)m_target.resolve_containers();
        TV_PASS_ON(m_target.update_vars(-1, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBImporter::take_specs(TVDatabase& scratch, std::map<int, int>& spec_map)
{
    try {
        const std::vector<TVObjectSpec*> theirs = scratch.get_specs(true);
        bool same = true;
        for (const TVObjectSpec* spec : theirs) {
            const TVObjectSpec* ours = m_target.get_objectspec_by_name(spec->get_name());
            same = same && ours != nullptr && ours->get_text() == spec->get_text();
        }
        if (same) {
            for (const TVObjectSpec* spec : theirs)
                spec_map[spec->get_id()] =
                    m_target.get_objectspec_id_for_name(spec->get_name());
            return TVErrC_ok;
        }

        const std::string topLevel = TVDatabase::C_TopLevelSpecName;
        // Names that clash with another text move aside, in the scratch
        // copy, mentions included; the top level never does (it is joined).
        for (const TVObjectSpec* spec : theirs) {
            const std::string name = spec->get_name();
            const TVObjectSpec* ours = m_target.get_objectspec_by_name(name);
            if (name == topLevel || ours == nullptr || ours->get_text() == spec->get_text())
                continue;
            std::string free;
            for (int n = 0;; ++n) {
                free = name + std::to_string(n);
                if (m_target.get_objectspec_by_name(free) == nullptr &&
                    scratch.get_objectspec_by_name(free) == nullptr)
                    break;
            }
            // A spec that doesn't compile stays as it is; the target's
            // compile below reports it.
            const int renamed = scratch.rename_spec(name, free);
            if (istverr(renamed))
                return tv_trail_return(renamed, TVLOCATION);
            if (istvwarn(renamed))
                get_tverror()->clear_all();
        }

        std::vector<TVObjectSpec*> added;
        TVObjectSpec* joined = nullptr;
        for (const TVObjectSpec* spec : scratch.get_specs(true)) {
            TVObjectSpec* ours = m_target.get_objectspec_by_name(spec->get_name());
            if (ours != nullptr && spec->get_name() == topLevel) {
                if (ours->get_text() != spec->get_text()) {
                    std::string text = ours->get_text();
                    if (!text.empty() && text.back() != '\n')
                        text += "\n";
                    ours->set_text(text + spec->get_text());
                    joined = ours;
                }
            } else if (ours == nullptr || ours->get_text() != spec->get_text()) {
                ours = new TVObjectSpec(spec->get_name(), spec->get_text());
                TV_PASS_ON(m_target.add_objectspec(ours, ""));
                added.push_back(ours);
            }
            spec_map[spec->get_id()] = ours->get_id();
        }
        if (joined != nullptr)
            added.push_back(joined);
        for (TVObjectSpec* spec : added)
            TV_PASS_ON(m_target.parse_objectspec(*spec, nullptr));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
