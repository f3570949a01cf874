#include "LibDatabase/db/tvdbtransaction.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <cctype>
#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVDBTransaction";
const TVObjectPreReg s_preReg(C_ClassName, TVDBTransaction::create_tvobject);
} // namespace

TVDBTransaction::TVDBTransaction()
{
    set_defaults(true);
    register_tvobject();
}

TVDBTransaction::TVDBTransaction(int id, const std::string& operation)
{
    set_defaults(true);
    m_id = id;
    m_operation = operation;
    register_tvobject();
}

TVDBTransaction::TVDBTransaction(const TVDBTransaction& other)
    : TVObject(other), m_id(other.m_id), m_status(other.m_status), m_operation(other.m_operation)
{
    register_tvobject();
}

TVDBTransaction& TVDBTransaction::operator=(const TVDBTransaction& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_id = other.m_id;
        m_status = other.m_status;
        m_operation = other.m_operation;
    }
    return *this;
}

void TVDBTransaction::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_id = -1;
    m_status = E_Active;
    m_operation.clear();
}

int TVDBTransaction::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBTransaction>(out, source, C_ClassName);
}

void TVDBTransaction::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDBTransaction::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                               int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "id", TVSrlValue<int>(m_id)));
        TV_PASS_ON(serialise_value(in, out, prefix, "st", TVSrlValue<int>(m_status)));
        TV_PASS_ON(serialise_string(in, out, prefix, "op", m_operation, false));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBTransaction::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDBTransaction " << write_tag() << " status " << m_status << '\n';
}

bool TVDBTransaction::operator==(const TVDBTransaction& other) const
{
    return m_id == other.m_id && m_status == other.m_status && m_operation == other.m_operation;
}

std::string TVDBTransaction::write_tag() const
{
    return std::to_string(m_id) + ":" + m_operation;
}

int TVDBTransaction::read_transaction_tag(const std::string& tag)
{
    size_t end = 0;
    while (end < tag.size() && std::isdigit(static_cast<unsigned char>(tag[end])))
        ++end;
    // Nine digits can't overflow an int; a longer run is not a tag we wrote.
    if (end == 0 || end > 9)
        return -1;
    return std::stoi(tag.substr(0, end));
}

std::ostream& operator<<(std::ostream& out, const TVDBTransaction& transaction)
{
    transaction.dump(out, 0);
    return out;
}
