#include "LibDatabase/db/tvdbnote.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVDBNote";
const TVObjectPreReg s_preReg(C_ClassName, TVDBNote::create_tvobject);
} // namespace

TVDBNote::TVDBNote()
{
    set_defaults(true);
    register_tvobject();
}

TVDBNote::TVDBNote(const std::string& text)
{
    set_defaults(true);
    m_text = text;
    register_tvobject();
}

TVDBNote::TVDBNote(const TVDBNote& other)
    : TVDBObject(other), m_text(other.m_text), m_active(other.m_active), m_type(other.m_type)
{
    register_tvobject();
}

TVDBNote& TVDBNote::operator=(const TVDBNote& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        m_text = other.m_text;
        m_active = other.m_active;
        m_type = other.m_type;
    }
    return *this;
}

void TVDBNote::set_defaults(bool)
{
    m_text.clear();
    m_active = E_Inactive;
    m_type = -1;
}

int TVDBNote::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBNote>(out, source, C_ClassName);
}

void TVDBNote::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDBNote::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                        int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "t", m_text, true));
        TV_PASS_ON(TVDBObject::serialise(in, out, "TVDBObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBNote::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent), ' ') << "TVDBNote " << get_id() << " \""
        << get_note_line() << "\" active " << m_active << " type " << m_type << "\n";
}

bool TVDBNote::uses_spec() const
{
    return false;
}

void TVDBNote::set_text(const std::string& text)
{
    if (text == m_text)
        return;
    m_text = text;
    mark_changed(TVLOCATION, true);
}

std::string TVDBNote::get_note_line() const
{
    return m_text.substr(0, m_text.find('\n'));
}
