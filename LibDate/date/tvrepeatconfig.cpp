#include "LibDate/date/tvrepeatconfig.h"

#include <cctype>
#include <ostream>
#include <sstream>
#include <vector>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

namespace {

constexpr const char* C_ClassName = "TVRepeatConfig";
const TVObjectPreReg s_preReg(C_ClassName, TVRepeatConfig::create_tvobject);

TVId set_id(int id)
{
    return TVId(id, -1, -1);
}

bool is_word(const std::string& name)
{
    if (name.empty())
        return false;
    for (char c : name) {
        if (std::isalpha(static_cast<unsigned char>(c)) == 0)
            return false;
    }
    return true;
}

} // namespace

struct TVRepeatConfig::Private
{
    TVIdString m_sets;
    std::vector<int> m_days; // by row of m_sets
    int m_nextId = 1;
    int m_capability = 0;

    int row_of(int id) const { return m_sets.get_id_row(set_id(id)); }

    int row_named(const std::string& name) const
    {
        for (int row = 0; row < m_sets.size(); ++row) {
            if (tv_compare_nocase(m_sets.get_row_name(row), name))
                return row;
        }
        return -1;
    }
};

TVRepeatConfig::TVRepeatConfig() : d(std::make_unique<Private>())
{
    set_defaults(true);
    register_tvobject();
}

TVRepeatConfig::TVRepeatConfig(const TVRepeatConfig& other)
    : TVObject(other), d(std::make_unique<Private>(*other.d))
{
    register_tvobject();
}

TVRepeatConfig& TVRepeatConfig::operator=(const TVRepeatConfig& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

TVRepeatConfig::~TVRepeatConfig() = default;

int TVRepeatConfig::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVRepeatConfig>(out, source, C_ClassName);
}

void TVRepeatConfig::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

void TVRepeatConfig::set_defaults(bool)
{
    d->m_sets.clear();
    d->m_days.clear();
    d->m_sets.add(set_id(C_DefaultSet), C_DefaultName);
    d->m_days.push_back(C_MondayToFriday);
    d->m_nextId = 1;
    d->m_capability = 0;
}

int TVRepeatConfig::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int)
{
    try {
        std::vector<std::string> lines;
        if (out != nullptr) {
            for (int row = 0; row < d->m_sets.size(); ++row)
                lines.push_back(tv_sprintf("%d %d %s", d->m_sets.get_row_id(row).get_id(),
                                           d->m_days[static_cast<size_t>(row)],
                                           d->m_sets.get_row_name(row).c_str()));
        }
        int nextId = d->m_nextId;
        int capability = d->m_capability;
        int result = serialise_string_vector(in, out, prefix, "w", lines);
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "n", TVSrlValue<int>(nextId, 1));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "c", TVSrlValue<int>(capability, 0));
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (in == nullptr)
            return TVErrC_ok;

        // Read into a fresh table, so that a bad line leaves the old one.
        TVRepeatConfig read;
        read.d->m_capability = capability;
        int highest = 0;
        for (const std::string& line : lines) {
            std::istringstream fields(line);
            int id = -1;
            int days = 0;
            std::string name;
            std::string rest;
            fields >> id >> days >> name;
            bool ok = !fields.fail() && !(fields >> rest) && id >= 0 && is_word(name) && days > 0 &&
                      days <= C_AllDays;
            if (ok && id == C_DefaultSet) {
                ok = tv_compare_nocase(name, C_DefaultName);
                read.d->m_days[0] = days;
            } else if (ok) {
                ok = read.d->row_of(id) < 0 && read.d->row_named(name) < 0;
                read.d->m_sets.add(set_id(id), name);
                read.d->m_days.push_back(days);
            }
            if (!ok)
                return tvwarning(TVErrC_InvalidValue, TVLOCATION,
                                 "The work-day set \"%s\" should be of the form \"ID DAYS NAME\".",
                                 line.c_str());
            highest = id > highest ? id : highest;
        }
        read.d->m_nextId = nextId > highest ? nextId : highest + 1;
        *d = *read.d;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVRepeatConfig::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ');
    out << pad << "TVRepeatConfig capability " << d->m_capability << ", next id " << d->m_nextId
        << "\n";
    for (int row = 0; row < d->m_sets.size(); ++row)
        out << pad << "    " << d->m_sets.get_row_id(row).get_id() << " "
            << d->m_sets.get_row_name(row) << " days " << d->m_days[static_cast<size_t>(row)]
            << "\n";
}

bool TVRepeatConfig::operator==(const TVRepeatConfig& other) const
{
    return d->m_sets == other.d->m_sets && d->m_days == other.d->m_days &&
           d->m_nextId == other.d->m_nextId && d->m_capability == other.d->m_capability;
}

const TVIdString& TVRepeatConfig::get_worksets() const
{
    return d->m_sets;
}

int TVRepeatConfig::add_workset(const std::string& name, int days, int& id)
{
    if (!is_word(name) || d->row_named(name) >= 0)
        return tvwarning(TVErrC_InvalidValue, TVLOCATION,
                         "A work-day set needs a name of one word that no other set has, not "
                         "\"%s\".",
                         name.c_str());
    if (days <= 0 || days > C_AllDays)
        return tvwarning(TVErrC_InvalidValue, TVLOCATION,
                         "The work-day set \"%s\" needs at least one day.", name.c_str());
    id = d->m_nextId++;
    d->m_sets.add(set_id(id), name);
    d->m_days.push_back(days);
    return TVErrC_ok;
}

int TVRepeatConfig::set_workset_days(int id, int days)
{
    const int row = d->row_of(id);
    if (row < 0 || days <= 0 || days > C_AllDays)
        return tvwarning(TVErrC_InvalidValue, TVLOCATION, "Work-day set %d can't take the days %d.",
                         id, days);
    d->m_days[static_cast<size_t>(row)] = days;
    return TVErrC_ok;
}

int TVRepeatConfig::remove_workset(int id)
{
    const int row = d->row_of(id);
    if (row < 0 || id == C_DefaultSet)
        return tvwarning(TVErrC_InvalidValue, TVLOCATION, "Work-day set %d can't be removed.", id);
    TVIdString kept;
    for (int other = 0; other < d->m_sets.size(); ++other) {
        if (other != row)
            kept.add(d->m_sets.get_row_id(other), d->m_sets.get_row_name(other));
    }
    d->m_sets = kept;
    d->m_days.erase(d->m_days.begin() + row);
    return TVErrC_ok;
}

int TVRepeatConfig::get_workset_days(int id) const
{
    const int row = d->row_of(id);
    return row < 0 ? -1 : d->m_days[static_cast<size_t>(row)];
}

int TVRepeatConfig::find_workset(const std::string& tag) const
{
    const int row = tag.empty() ? -1 : d->row_named(tag);
    return row < 0 ? C_DefaultSet : d->m_sets.get_row_id(row).get_id();
}

std::string TVRepeatConfig::get_workset_tag(int id) const
{
    if (id == C_DefaultSet || d->row_of(id) < 0)
        return std::string();
    return d->m_sets.get_id_name(set_id(id));
}

std::string TVRepeatConfig::get_workset_name(int id) const
{
    const std::string tag = get_workset_tag(id);
    return tag.empty() ? std::string(C_DefaultName) : tag;
}

bool TVRepeatConfig::is_workday(const TVDateDetails& details, const std::string& tag) const
{
    const int days = get_workset_days(find_workset(tag));
    return details.m_dayWeek >= 0 && details.m_dayWeek < 7 &&
           (days & (1 << details.m_dayWeek)) != 0;
}

int TVRepeatConfig::get_capability() const
{
    return d->m_capability;
}

void TVRepeatConfig::set_capability(int capability)
{
    d->m_capability = capability;
}
