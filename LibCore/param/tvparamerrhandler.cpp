#include "LibCore/param/tvparamerrhandler.h"

#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/log/tvdump.h"

TVParamErrHandler::TVParamErrHandler(const std::string& usage, std::ostream* out, bool immediate,
                                     bool intermediate, bool delayed, bool manageDeletion)
    : TVErrHandler(immediate, intermediate, delayed, manageDeletion), m_usage(usage), m_out(out)
{
}

TVParamErrHandler::~TVParamErrHandler() = default;

int TVParamErrHandler::handle(TVErrDetails& details)
{
    if (details.get_severity() != TVSevUser || details.get_code() != TVParam::TVErrC_ParamInvalid)
        return details.get_value();
    details.append_details("\n\n" + m_usage, TVAspectUser);
    if (m_out != nullptr) {
        *m_out << "Error: " << details.get_details(TVAspectUser);
        m_out->flush();
    }
    return TVErrC_okHandled;
}

void TVParamErrHandler::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamErrHandler Object:\n";
    dump_flags(out, indent);
    out << pad << " usage = " << m_usage.size() << " bytes\n";
}
