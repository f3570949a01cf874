#include "LibDate/dateset/tvdateset.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <utility>

#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

namespace {

constexpr const char* C_ClassName = "TVDateSet";
const TVObjectPreReg s_preReg(C_ClassName, TVDateSet::create_tvobject);

// The part of slot after date, or before it.
TVDuration part_after(const TVDateSlot& slot, const TVDate& date)
{
    if (!slot.is_ok() || slot.get_end() <= date)
        return TVDuration();
    return slot.get_end() - (slot.get_start() < date ? date : slot.get_start());
}

TVDuration part_before(const TVDateSlot& slot, const TVDate& date)
{
    if (!slot.is_ok() || slot.get_start() >= date)
        return TVDuration();
    return (slot.get_end() < date ? slot.get_end() : date) - slot.get_start();
}

bool shares_time(const TVDateSlot& entry, const TVDateSlot& range)
{
    if (TVDateSlot::intersects(entry, range))
        return true;
    return entry.get_start() == entry.get_end() && range.within(entry.get_start());
}

} // namespace

struct TVDateSet::Private
{
    std::vector<TVDateSetEntry> m_entries; // sorted and merged but during a bulk add
    bool m_keepDuration = false;
};

TVDateSet::TVDateSet() : d(std::make_unique<Private>())
{
    set_defaults(true);
    register_tvobject();
}

TVDateSet::TVDateSet(const TVDateSet& other)
    : TVObject(other), d(std::make_unique<Private>(*other.d))
{
    register_tvobject();
}

TVDateSet& TVDateSet::operator=(const TVDateSet& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

TVDateSet::~TVDateSet() = default;

int TVDateSet::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDateSet>(out, source, C_ClassName);
}

void TVDateSet::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDateSet::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int)
{
    try {
        int result =
            serialise_value(in, out, prefix, "e", TVSrlValueVector<TVDateSetEntry>(d->m_entries));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "k",
                                     TVSrlValue<bool>(d->m_keepDuration, false));
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (in != nullptr)
            settle();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDateSet::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ') << "TVDateSet "
        << d->m_entries.size() << " entries" << (d->m_keepDuration ? ", keeping durations" : "")
        << "\n";
    for (const TVDateSetEntry& entry : d->m_entries)
        entry.dump(out, indent + 1);
}

void TVDateSet::set_defaults(bool)
{
    d->m_entries.clear();
    d->m_keepDuration = false;
}

bool TVDateSet::operator==(const TVDateSet& other) const
{
    return d->m_entries == other.d->m_entries && d->m_keepDuration == other.d->m_keepDuration;
}

void TVDateSet::set_keepduration(bool keep)
{
    d->m_keepDuration = keep;
}

bool TVDateSet::get_keepduration() const
{
    return d->m_keepDuration;
}

int TVDateSet::size() const
{
    return static_cast<int>(d->m_entries.size());
}

const TVDateSetEntry& TVDateSet::operator[](int index) const
{
    return d->m_entries[static_cast<size_t>(index)];
}

void TVDateSet::erase(int index)
{
    if (index >= 0 && index < size())
        d->m_entries.erase(d->m_entries.begin() + index);
}

void TVDateSet::clear()
{
    d->m_entries.clear();
}

void TVDateSet::add(const TVDateSlot& slot, int type)
{
    bulk_add(slot, type);
    finish_bulk_add();
}

void TVDateSet::bulk_add(const TVDateSlot& slot, int type)
{
    d->m_entries.emplace_back(slot, type);
}

void TVDateSet::finish_bulk_add()
{
    settle();
}

void TVDateSet::add(const TVDateSet& other)
{
    for (const TVDateSetEntry& entry : other.d->m_entries)
        bulk_add(entry.m_slot, entry.m_type);
    settle();
}

TVDateSet TVDateSet::add_return(const TVDateSet& other) const
{
    TVDateSet sum(*this);
    sum.add(other);
    return sum;
}

int TVDateSet::safe_add(const TVDateSlot& slot, int type)
{
    TVDateSlot checked = slot;
    if (!checked.correct())
        return tvwarning(TVErrC_InvalidValue, TVLOCATION,
                         "A date set takes only slots with a real date.");
    add(TVDateSlot(checked.get_start(), checked.get_end(), true), type);
    return TVErrC_ok;
}

void TVDateSet::subtract(const TVDateSlot& slot, int type)
{
    std::vector<TVDateSetEntry> kept;
    kept.reserve(d->m_entries.size());
    for (const TVDateSetEntry& entry : d->m_entries) {
        TVDateSlot before = entry.m_slot;
        TVDateSlot after = slot;
        bool ours = type == C_AnyType || entry.m_type == type;
        if (!ours || !TVDateSlot::subtract(before, after)) {
            kept.push_back(entry);
            continue;
        }
        if (before.is_ok())
            kept.emplace_back(before, entry.m_type);
        if (after.is_ok())
            kept.emplace_back(after, entry.m_type);
    }
    d->m_entries.swap(kept);
    settle();
}

void TVDateSet::subtract(const TVDateSet& other)
{
    for (const TVDateSetEntry& entry : other.d->m_entries)
        subtract(entry.m_slot, entry.m_type);
}

TVDate TVDateSet::start() const
{
    return d->m_entries.empty() ? TVDate() : d->m_entries.front().m_slot.get_start();
}

TVDate TVDateSet::end() const
{
    TVDate latest;
    for (const TVDateSetEntry& entry : d->m_entries)
        latest.set_latest(entry.m_slot.get_end());
    return latest;
}

TVDuration TVDateSet::duration() const
{
    TVDuration sum;
    for (const TVDateSetEntry& entry : d->m_entries)
        sum += entry.m_slot.duration();
    return sum;
}

bool TVDateSet::match(const TVDate& date) const
{
    return safe_find(date) >= 0;
}

int TVDateSet::safe_find(const TVDate& date) const
{
    // Sorted by start: past the date, nothing later can hold it.
    for (int i = 0; i < size(); ++i) {
        const TVDateSlot& slot = d->m_entries[static_cast<size_t>(i)].m_slot;
        if (slot.get_start() > date)
            return -1;
        if (slot.within(date))
            return i;
    }
    return -1;
}

int TVDateSet::safe_rfind(const TVDate& date) const
{
    for (int i = size() - 1; i >= 0; --i) {
        if (d->m_entries[static_cast<size_t>(i)].m_slot.get_start() <= date)
            return i;
    }
    return -1;
}

TVDuration TVDateSet::time_after(const TVDate& date) const
{
    TVDuration sum;
    for (const TVDateSetEntry& entry : d->m_entries)
        sum += part_after(entry.m_slot, date);
    return sum;
}

TVDuration TVDateSet::time_before(const TVDate& date) const
{
    TVDuration sum;
    for (const TVDateSetEntry& entry : d->m_entries)
        sum += part_before(entry.m_slot, date);
    return sum;
}

std::vector<int> TVDateSet::query_range(const TVDateSlot& range) const
{
    std::vector<int> found;
    for (int i = 0; i < size(); ++i) {
        if (shares_time(d->m_entries[static_cast<size_t>(i)].m_slot, range))
            found.push_back(i);
    }
    return found;
}

bool TVDateSet::has_range(const TVDateSlot& range) const
{
    for (const TVDateSetEntry& entry : d->m_entries) {
        if (shares_time(entry.m_slot, range))
            return true;
    }
    return false;
}

bool TVDateSet::allocate(const TVDuration& length, const TVDateSlot& within, int type,
                         TVDateSlot& out)
{
    if (!within.is_ok() || length < TVDuration())
        return false;
    // Walk the entries by start, keeping the earliest moment not yet
    // covered; the first gap long enough before the next entry is the one.
    TVDate free = within.get_start();
    for (const TVDateSetEntry& entry : d->m_entries) {
        const TVDateSlot& slot = entry.m_slot;
        if (!slot.is_ok() || slot.get_end() <= free)
            continue;
        if (slot.get_start() >= free + length)
            break;
        free = slot.get_end();
    }
    if (free + length > within.get_end())
        return false;
    out = TVDateSlot(free, free + length, false);
    add(out, type);
    return true;
}

void TVDateSet::cleanup(bool dropPast)
{
    const TVDate now = TVDateUtils::now();
    std::vector<TVDateSetEntry> kept;
    for (TVDateSetEntry entry : d->m_entries) {
        if (!entry.m_slot.correct())
            continue;
        if (dropPast && entry.m_slot.get_end() < now)
            continue;
        kept.push_back(entry);
    }
    d->m_entries.swap(kept);
    settle();
}

void TVDateSet::settle()
{
    std::vector<TVDateSetEntry>& entries = d->m_entries;
    std::stable_sort(entries.begin(), entries.end(), compare_tvdatesetentry);
    // In start order, each entry meets at most the last kept entry of its
    // type: an earlier one ended before that one began. A merge keeps the
    // earlier start but may move the end, which is the second key, so the
    // list is sorted once more at the end.
    std::vector<TVDateSetEntry> merged;
    merged.reserve(entries.size());
    std::map<int, size_t> lastOfType;
    for (const TVDateSetEntry& entry : entries) {
        auto last = lastOfType.find(entry.m_type);
        if (last != lastOfType.end() && entry.m_slot.is_ok() &&
            merged[last->second].m_slot.is_ok()) {
            TVDateSlot into = merged[last->second].m_slot;
            TVDateSlot other = entry.m_slot;
            if (TVDateSlot::merge(into, other, d->m_keepDuration)) {
                merged[last->second].m_slot = into;
                continue;
            }
        }
        lastOfType[entry.m_type] = merged.size();
        merged.push_back(entry);
    }
    entries.swap(merged);
    std::stable_sort(entries.begin(), entries.end(), compare_tvdatesetentry);
}
