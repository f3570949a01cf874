#include "LibDatabase/db/tvdbcontainerbase.h"

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

void TVDBContainerBase::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDBContainerBase: tag \"" << m_tag << "\"\n";
}

int TVDBContainerBase::add_object(TVDBObject*)
{
    return TVErrC_ok;
}

int TVDBContainerBase::clear()
{
    return TVErrC_ok;
}

TVDBObject* TVDBContainerBase::find_member_tag(const std::string&) const
{
    return nullptr;
}

void TVDBContainerBase::find_all_member_tag(const std::string&, TVPtrArray<TVDBObject>&) const {}

int TVDBContainerBase::get_num_member_tag(const std::string&) const
{
    return 0;
}

std::ostream& operator<<(std::ostream& out, const TVDBContainerBase& container)
{
    container.dump(out, 0);
    return out;
}

bool TVDBContainerBase::accepts(const TVDBObject&) const
{
    return false;
}
