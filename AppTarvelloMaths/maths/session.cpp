#include "AppTarvelloMaths/maths/session.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <ostream>
#include <vector>

namespace {
const TVObjectPreReg s_preReg(Session::C_ClassName, Session::create_tvobject);
} // namespace

struct Session::SessionImpl {
    std::vector<int> m_go;
    TVDate m_start{TVDate::E_DateBlank};
    bool m_complete = false;
};

Session::Session() : d(new SessionImpl)
{
    set_defaults(true);
    register_tvobject();
}

Session::Session(const Session& other) : TVDBObject(other), d(new SessionImpl(*other.d))
{
    register_tvobject();
}

Session& Session::operator=(const Session& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

Session::~Session() = default;

int Session::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<Session>(out, source, C_ClassName);
}

void Session::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

void Session::set_defaults(bool constructing)
{
    if (!constructing)
        TVDBObject::set_defaults(constructing);
    *d = SessionImpl();
}

void Session::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "Session: start " << d->m_start << (d->m_complete ? ", complete" : "")
        << ", runs";
    for (int id : d->m_go)
        out << ' ' << id;
    out << '\n';
    TVDBObject::dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const Session& session)
{
    session.dump(out, 0);
    return out;
}

int Session::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "go", TVSrlValueVector<int>(d->m_go)));
        TV_PASS_ON(serialise_value(in, out, prefix, "start",
                                   TVSrlValue<TVDate>(d->m_start, TVDate(TVDate::E_DateBlank))));
        TV_PASS_ON(serialise_value(in, out, prefix, "complete",
                                   TVSrlValue<bool>(d->m_complete, false)));
        TV_PASS_ON(TVDBObject::serialise(in, out, "TVDBObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void Session::remap_id(int old_id, int new_id)
{
    TVDBObject::remap_id(old_id, new_id);
    if (old_id == new_id || !has_go(old_id))
        return;
    std::replace(d->m_go.begin(), d->m_go.end(), old_id, new_id);
    mark_changed(TVLOCATION, true);
}

void Session::remap_ids(const std::map<int, int>& ids)
{
    TVDBObject::remap_ids(ids);
    bool changed = false;
    for (int& go : d->m_go) {
        const auto it = ids.find(go);
        if (it != ids.end() && it->second != go) {
            go = it->second;
            changed = true;
        }
    }
    if (changed)
        mark_changed(TVLOCATION, true);
}

int Session::get_ngos() const
{
    return static_cast<int>(d->m_go.size());
}

int Session::get_go_no(int index) const
{
    if (index < 0 || index >= get_ngos())
        return -1;
    return d->m_go[static_cast<size_t>(index)];
}

bool Session::has_go(int id) const
{
    return std::find(d->m_go.begin(), d->m_go.end(), id) != d->m_go.end();
}

void Session::add_go(int id)
{
    d->m_go.push_back(id);
}

void Session::remove_go(int id)
{
    d->m_go.erase(std::remove(d->m_go.begin(), d->m_go.end(), id), d->m_go.end());
}

void Session::clear_gos()
{
    d->m_go.clear();
}

const TVDate& Session::get_start() const
{
    return d->m_start;
}

void Session::set_start(const TVDate& start)
{
    if (d->m_start == start)
        return;
    d->m_start = start;
    mark_changed(TVLOCATION, true);
}

bool Session::get_complete() const
{
    return d->m_complete;
}

void Session::set_complete(bool complete)
{
    if (d->m_complete == complete)
        return;
    d->m_complete = complete;
    mark_changed(TVLOCATION, true);
}
