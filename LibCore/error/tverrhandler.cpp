#include "LibCore/error/tverrhandler.h"

#include <ostream>
#include <string>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

TVErrHandler::TVErrHandler()
{
    set_defaults(true);
}

TVErrHandler::TVErrHandler(bool immediate, bool intermediate, bool delayed, bool manageDeletion)
    : m_enable(true),
      m_triggerImmediate(immediate),
      m_triggerIntermediate(intermediate),
      m_triggerDelayed(delayed),
      m_manageDeletion(manageDeletion)
{
}

TVErrHandler::~TVErrHandler() = default;

void TVErrHandler::set_defaults(bool /*constructing*/)
{
    m_enable = true;
    m_triggerImmediate = false;
    m_triggerIntermediate = false;
    m_triggerDelayed = true;
    m_manageDeletion = true;
}

void TVErrHandler::set_triggers(bool immediate, bool intermediate, bool delayed)
{
    m_triggerImmediate = immediate;
    m_triggerIntermediate = intermediate;
    m_triggerDelayed = delayed;
}

int TVErrHandler::handle(TVErrDetails& details)
{
    return details.get_value();
}

int TVErrHandler::log(TVErrDetails& /*details*/)
{
    return TVErrC_ok;
}

void TVErrHandler::dump_flags(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << " enable = " << m_enable << "\n";
    out << pad << " triggerImmediate = " << m_triggerImmediate << "\n";
    out << pad << " triggerIntermediate = " << m_triggerIntermediate << "\n";
    out << pad << " triggerDelayed = " << m_triggerDelayed << "\n";
    out << pad << " manageDeletion = " << m_manageDeletion << "\n";
}

void TVErrHandler::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVErrHandler Object:\n";
    dump_flags(out, indent);
}
