#include "LibCore/error/tverrdetails.h"

#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

namespace {
constexpr int C_SeverityFactor = TVErrDetails::C_SeverityFactor;
constexpr int C_MaxValue = 5 * C_SeverityFactor - 1;
} // namespace

TVErrDetails::TVErrDetails()
    : m_details(2), m_code(TVErrC_ok), m_severity(TVSevLog), m_time(TVDateUtils::unow())
{
}

TVErrDetails::~TVErrDetails() = default;

int TVErrDetails::compute_combination(int code, int severity)
{
    return severity * C_SeverityFactor + code;
}

int TVErrDetails::compute_severity(int value)
{
    if (value < 0 || value > C_MaxValue)
        return 0;
    return value / C_SeverityFactor;
}

int TVErrDetails::compute_code(int value)
{
    if (value < 0 || value > C_MaxValue)
        return -1;
    return value % C_SeverityFactor;
}

void TVErrDetails::set_details(const std::string& text, int aspect)
{
    if (aspect == TVAspectBoth) {
        m_details[TVAspectSystem] = text;
        m_details[TVAspectUser] = text;
    } else if (aspect == TVAspectSystem || aspect == TVAspectUser) {
        m_details[static_cast<size_t>(aspect)] = text;
    }
}

void TVErrDetails::append_details(const std::string& text, int aspect)
{
    if (aspect == TVAspectBoth) {
        m_details[TVAspectSystem] += text;
        m_details[TVAspectUser] += text;
    } else if (aspect == TVAspectSystem || aspect == TVAspectUser) {
        m_details[static_cast<size_t>(aspect)] += text;
    }
}

const std::string& TVErrDetails::get_details(int aspect) const
{
    static const std::string empty;
    if (aspect == TVAspectSystem || aspect == TVAspectUser)
        return m_details[static_cast<size_t>(aspect)];
    return empty;
}

void TVErrDetails::append_location(const std::string& text)
{
    m_location += ", ";
    m_location += text;
}

void TVErrDetails::append_extra(const std::string& name, const std::string& value)
{
    if (!m_extra.empty())
        m_extra += ", ";
    m_extra += name + ": " + value;
}

TVErrDetails& TVErrDetails::operator+=(const TVErrDetails& other)
{
    m_details[TVAspectSystem] += other.m_details[TVAspectSystem];
    m_details[TVAspectUser] += other.m_details[TVAspectUser];
    return *this;
}

void TVErrDetails::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVErrDetails Object:\n";
    out << pad << " code = " << m_code << "\n";
    out << pad << " severity = " << m_severity << "\n";
    out << pad << " time = " << m_time.to_string("%D %H:%M:%U") << "\n";
    out << pad << " system details = " << m_details[TVAspectSystem] << "\n";
    out << pad << " user details = " << m_details[TVAspectUser] << "\n";
    out << pad << " location = " << m_location << "\n";
    out << pad << " extra = " << m_extra << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVErrDetails& details)
{
    const std::string time = details.get_time().to_string("%D %H:%M:%U");
    if (details.get_severity() == TVSevLog) {
        out << "Log: " << time << ":" << details.get_location() << ":"
            << details.get_details(TVAspectSystem) << std::endl;
        return out;
    }
    const TVErrCode& code = get_tverror()->get_code(details.get_code());
    out << " TVError Code (" << code.get_name() << ") at " << time << std::endl;
    out << "  \"" << code.get_description() << "\"" << std::endl;
    for (int aspect : {TVAspectSystem, TVAspectUser}) {
        const std::string& text = details.get_details(aspect);
        if (!text.empty())
            out << "  Aspect " << aspect << ": " << text << std::endl;
    }
    out << "  Location: " << details.get_location() << std::endl;
    out << "  Extra: " << details.get_extra() << std::endl;
    return out;
}
