#include "LibDatabase/db/tvdbclipboard.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvobjectspecchild.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>

TVIdList TVDBClipboard::m_cutID;

bool TVDBClipboard::ListEntry::greater(const ListEntry& a, const ListEntry& b)
{
    return a.m_tag != b.m_tag ? a.m_tag < b.m_tag : a.m_specName < b.m_specName;
}

void TVDBClipboard::cut(const TVIdList& ids)
{
    m_ids = ids;
    m_wasCopied = false;
    m_cutID = ids;
}

void TVDBClipboard::copy(const TVIdList& ids)
{
    m_ids = ids;
    m_wasCopied = true;
    m_cutID.clear();
}

bool TVDBClipboard::is_cut(int id)
{
    return std::any_of(m_cutID.begin(), m_cutID.end(),
                       [id](const TVId& cut) { return cut.get_id() == id; });
}

bool TVDBClipboard::clipboard_has_object() const
{
    return m_ids.size() > 0;
}

int TVDBClipboard::do_paste(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                            const std::string& tag)
{
    return paste(target, added, tag, -1);
}

int TVDBClipboard::do_paste_as(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                               const std::string& tag, const std::string& spec_name)
{
    try {
        if (!clipboard_has_object())
            return tverror(TVErrC_NullPointer, TVLOCATION, "No object on the clipboard.");
        int specId = -1;
        if (!spec_name.empty()) {
            specId = m_db.get_objectspec_id_for_name(spec_name);
            if (specId < 0)
                return tverror(TVErrC_NullPointer, TVLOCATION, "Could not locate object spec %s",
                               spec_name.c_str());
        }
        return paste(target, added, tag, specId);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBClipboard::paste(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                         const std::string& tag, int spec_id)
{
    try {
        added = TVPtrArray<TVDBObject>(false);
        for (const TVId& id : m_ids) {
            TVDBObject* object = m_db.get_object_by_id(id.get_id());
            if (object == nullptr || object->is_deleted())
                continue;
            if (m_db.get_objectspec_by_id(object->get_spec_id()) == nullptr || tag.empty())
                return tverror(TVErrC_NullPointer, TVLOCATION, "Missing spec or member tag.");
            if (!m_wasCopied) {
                TV_PASS_ON(m_db.reparent(object, &target, tag));
                if (spec_id >= 0)
                    object->set_spec_id(spec_id);
                added.add(object);
                continue;
            }
            TVDBObject* clone = nullptr;
            TV_PASS_ON(m_db.clone_object(object->get_id(), clone));
            TV_PASS_ON(m_db.add_object(clone, &target, tag, tag,
                                       spec_id >= 0 ? spec_id : object->get_spec_id(), ""));
            added.add(clone);
        }
        m_cutID.clear();
        target.mark_changed(TVLOCATION, true);
        TV_PASS_ON(m_db.apply_objectspecs());
        TV_PASS_ON(m_db.complete_operation("Paste objects"));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::vector<std::string> TVDBClipboard::get_matching_children(TVDBObject& target) const
{
    std::vector<std::string> tags;
    const TVObjectSpec* spec = m_db.get_objectspec_by_id(target.get_spec_id());
    if (spec == nullptr)
        return tags;
    for (int i = 0; i < spec->get_nchildren(); ++i) {
        const TVObjectSpecChild* child = spec->get_child_by_index(i);
        bool fits = clipboard_has_object();
        for (const TVId& id : m_ids) {
            const TVDBObject* object = m_db.get_object_by_id(id.get_id());
            fits = fits && object != nullptr &&
                   m_db.is_spec_derived_from(child->get_spec_id(), object->get_spec_id());
        }
        if (fits)
            tags.push_back(child->get_member_tag());
    }
    return tags;
}

void TVDBClipboard::finalise_list(std::vector<ListEntry>& list)
{
    std::sort(list.begin(), list.end(), ListEntry::greater);
    list.erase(std::unique(list.begin(), list.end(),
                           [](const ListEntry& a, const ListEntry& b) {
                               return a.m_tag == b.m_tag && a.m_specId == b.m_specId;
                           }),
               list.end());
}

std::vector<TVDBClipboard::ListEntry> TVDBClipboard::get_possible_children(TVDatabase& db,
                                                                           TVDBObject& object)
{
    std::vector<ListEntry> list;
    const TVObjectSpec* spec = db.get_objectspec_by_id(object.get_spec_id());
    if (spec == nullptr)
        return list;
    for (int i = 0; i < spec->get_nchildren(); ++i) {
        const TVObjectSpecChild* child = spec->get_child_by_index(i);
        for (const TVObjectSpec* allowed : db.get_allowable_specs(child->get_spec_id(), false))
            list.push_back({child->get_member_tag(), allowed->get_name(), allowed->get_id()});
    }
    finalise_list(list);
    return list;
}
