#include "LibGui/base/tvnotifyscheme.h"

#include <ostream>

#include "LibCore/log/tvdump.h"
#include "LibObject/core/tvid.h"

namespace {

struct ResponseRow {
    int m_value;
    const char* m_text;
};

// Highest first, the order the settings form offers them.
const ResponseRow C_Responses[] = {
    {TVNotifyScheme::C_ResponseAlert, "Show an alert dialog"},
    {TVNotifyScheme::C_ResponsePopup, "Pop up a warning message"},
    {TVNotifyScheme::C_ResponseBadge, "Set the badge icon number"},
    {TVNotifyScheme::C_ResponseList, "Show in the notification list"},
    {TVNotifyScheme::C_ResponseNone, "Don't show a warning"},
};

} // namespace

TVNotifyScheme::TVNotifyScheme() = default;

TVNotifyScheme::TVNotifyScheme(int id, const std::string& name, int response, const std::string& icon,
                               bool canList, const TVColour& colour)
    : m_id(id), m_name(name), m_icon(icon), m_canList(canList), m_colour(colour)
{
    set_response(response);
}

void TVNotifyScheme::set_response(int response)
{
    if (response == C_ResponseList && !m_canList)
        response = C_ResponseNone;
    else if (response == C_ResponsePopup && !s_trayMessages)
        response = C_ResponseBadge;
    m_response = response;
}

TVIdString TVNotifyScheme::get_responses() const
{
    TVIdString rows;
    for (const ResponseRow& row : C_Responses) {
        if (row.m_value == C_ResponsePopup && !s_trayMessages)
            continue;
        if (row.m_value == C_ResponseList && !m_canList)
            continue;
        rows.add(TVId(row.m_value, -1, -1), row.m_text);
    }
    return rows;
}

std::string TVNotifyScheme::scheme_name() const
{
    return "NotifyScheme" + std::to_string(m_id);
}

std::string TVNotifyScheme::response_text(int response)
{
    for (const ResponseRow& row : C_Responses)
        if (row.m_value == response)
            return row.m_text;
    return std::string();
}

bool TVNotifyScheme::operator==(const TVNotifyScheme& other) const
{
    return m_id == other.m_id && m_name == other.m_name && m_response == other.m_response &&
           m_icon == other.m_icon && m_canList == other.m_canList && m_colour == other.m_colour;
}

void TVNotifyScheme::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVNotifyScheme " << m_id << " \"" << m_name << "\" response "
        << m_response << " icon \"" << m_icon << "\" canList " << m_canList << " colour " << m_colour << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVNotifyScheme& scheme)
{
    scheme.dump(out, 0);
    return out;
}
