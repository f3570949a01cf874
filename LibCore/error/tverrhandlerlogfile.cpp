#include "LibCore/error/tverrhandlerlogfile.h"

#include <fstream>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

const char* const TVErrHandlerLogfile::C_Separator = "==================";

TVErrHandlerLogfile::TVErrHandlerLogfile(const std::string& logName, bool immediate, bool intermediate,
                                         bool delayed, bool manageDeletion)
    : TVErrHandler(immediate, intermediate, delayed, manageDeletion), m_logName(logName), m_firstError(true)
{
}

TVErrHandlerLogfile::~TVErrHandlerLogfile() = default;

void TVErrHandlerLogfile::trim() const
{
    std::ifstream in(m_logName, std::ios::binary);
    if (!in)
        return;
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    if (in.bad())
        return;
    in.close();
    if (lines.size() <= static_cast<size_t>(C_KeepLines))
        return;
    std::ofstream out(m_logName, std::ios::binary | std::ios::trunc);
    if (!out)
        return;
    for (size_t i = lines.size() - C_KeepLines; i < lines.size(); ++i)
        out << lines[i] << "\n";
}

int TVErrHandlerLogfile::handle(TVErrDetails& details)
{
    if (m_firstError)
        trim();
    if (details.get_severity() == TVSevUser) {
        // A user warning as a run's first event also suppresses the
        // separator for the whole run; kept as it has always behaved.
        m_firstError = false;
        return details.get_value();
    }
    std::ofstream out(m_logName, std::ios::binary | std::ios::app);
    if (!out)
        return details.get_value();
    if (m_firstError)
        out << C_Separator << "\n";
    out << details;
    out.close();
    m_firstError = false;
    return details.get_value();
}

int TVErrHandlerLogfile::log(TVErrDetails& details)
{
    handle(details);
    return TVErrC_okHandled;
}

void TVErrHandlerLogfile::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVErrHandlerLogfile Object:\n";
    dump_flags(out, indent);
    out << pad << " logName = " << m_logName << "\n";
    out << pad << " firstError = " << m_firstError << "\n";
}
