#include "TestSupport/tvdbtestnode.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVDBTestNode";
const TVObjectPreReg s_preReg(C_ClassName, TVDBTestNode::create_tvobject);
} // namespace

TVDBTestNode::TVDBTestNode()
{
    register_containers();
    register_tvobject();
}

TVDBTestNode::TVDBTestNode(const std::string& name) : m_name(name)
{
    register_containers();
    register_tvobject();
}

// The containers list the original's children; the copy starts with its own, empty.
TVDBTestNode::TVDBTestNode(const TVDBTestNode& other) : TVDBObject(other), m_name(other.m_name)
{
    register_containers();
    register_tvobject();
}

TVDBTestNode& TVDBTestNode::operator=(const TVDBTestNode& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        m_name = other.m_name;
    }
    return *this;
}

void TVDBTestNode::register_containers()
{
    add_container(m_kids);
    add_container(m_all);
    add_container(m_dbKids);
}

int TVDBTestNode::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBTestNode>(out, source, C_ClassName);
}

void TVDBTestNode::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDBTestNode::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                            int version)
{
    try {
        int result = serialise_string(in, out, prefix, "n", m_name, true);
        if (!istvwarn(result))
            result = TVDBObject::serialise(in, out, "TVDBObject", version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
