#include "LibCore/error/tverrhandlerstream.h"

#include <ostream>
#include <string>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

TVErrHandlerStream::TVErrHandlerStream(std::ostream& stream, bool immediate, bool intermediate,
                                       bool delayed, bool manageDeletion)
    : TVErrHandler(immediate, intermediate, delayed, manageDeletion), m_stream(stream)
{
}

TVErrHandlerStream::~TVErrHandlerStream() = default;

int TVErrHandlerStream::handle(TVErrDetails& details)
{
    m_stream << details.get_details(TVAspectUser) << "\n";
    m_stream.flush();
    return details.get_value();
}

void TVErrHandlerStream::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVErrHandlerStream Object:\n";
    dump_flags(out, indent);
}
