#include "LibDatabase/db/tvdbchangejournal.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdbobject.h"

#include <algorithm>
#include <unordered_set>

void TVDBChangeJournal::note(int id, int object_count)
{
    if (m_full)
        return;
    if (!m_changed.empty() && m_changed.back() == id)
        return;
    // Past this a look at every object costs no more.
    if (m_changed.size() >= std::max(C_Minimum, static_cast<size_t>(object_count) / 4)) {
        m_full = true;
        m_changed.clear();
        return;
    }
    m_changed.push_back(id);
}

void TVDBChangeJournal::restart(long counter, int tail_from)
{
    m_from = counter;
    m_changed.clear();
    m_full = false;
    m_tailFrom = tail_from;
}

void TVDBChangeJournal::invalidate()
{
    m_full = true;
    m_changed.clear();
}

std::vector<const TVDBObject*> TVDBChangeJournal::changed(
    long since, const TVPtrArray<TVDBObject>& objects,
    const std::function<TVDBObject*(int)>& find, bool usable) const
{
    std::vector<const TVDBObject*> found;
    const bool journal = usable && !m_full && since >= m_from && m_tailFrom <= objects.size();
    if (journal) {
        std::unordered_set<const TVDBObject*> tail;
        for (int i = m_tailFrom; i < objects.size(); ++i)
            tail.insert(objects[i]);
        std::unordered_set<const TVDBObject*> seen;
        for (int id : m_changed) {
            const TVDBObject* object = find(id);
            if (object != nullptr && object->has_changed_since(since) && tail.count(object) == 0 &&
                seen.insert(object).second)
                found.push_back(object);
        }
        // Those the file holds already are replaced in place, in any order;
        // new ones are appended by the reader, so they keep vector order.
        for (int i = m_tailFrom; i < objects.size(); ++i)
            if (objects[i]->has_changed_since(since))
                found.push_back(objects[i]);
    }
#ifndef NDEBUG
    // Debug builds (the tests) hold every journal against a full look.
    std::vector<const TVDBObject*> all;
    for (const TVDBObject* object : objects)
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
        for (const TVDBObject* object : objects)
            if (object->has_changed_since(since))
                found.push_back(object);
#endif
    return found;
}
