#ifndef TVNOTIFYSCHEME_H
#define TVNOTIFYSCHEME_H

// TVNotifyScheme: how far the items of one kind may push themselves on
// the user, from nothing up to an alert dialog. Each item names its scheme
// by id; the user picks the response of each scheme in the settings, and
// the choice is kept as the system value named scheme_name().
//
// Responses are levels, each including those below it: a scheme at 80
// pops up a message, sets the badge and lists the item. The stored
// response is always one the platform can give (see set_response).

#include <iosfwd>
#include <string>

#include "LibCore/ptrarray/tvidstring.h"
#include "LibGui/base/tvcolour.h"

class TVNotifyScheme
{
public:
    static constexpr int C_ResponseAlert = 100;
    static constexpr int C_ResponsePopup = 80;
    static constexpr int C_ResponseBadge = 60;
    static constexpr int C_ResponseList = 40;
    static constexpr int C_ResponseNone = 20;

    TVNotifyScheme();
    TVNotifyScheme(int id, const std::string& name, int response, const std::string& icon, bool canList,
                   const TVColour& colour);
    TVNotifyScheme(const TVNotifyScheme&) = default;
    TVNotifyScheme& operator=(const TVNotifyScheme&) = default;
    virtual ~TVNotifyScheme() = default;

    virtual void dump(std::ostream& out, int indent) const;
    bool operator==(const TVNotifyScheme& other) const;
    bool operator!=(const TVNotifyScheme& other) const { return !(*this == other); }

    int get_id() const { return m_id; }
    const std::string& get_name() const { return m_name; }
    const std::string& get_icon() const { return m_icon; }
    bool get_can_list() const { return m_canList; }
    const TVColour& get_colour() const { return m_colour; }
    int get_response() const { return m_response; }
    // Normalised: 40 without can_list becomes 20, 80 where the tray can't
    // show messages becomes 60.
    void set_response(int response);

    bool get_prompt() const { return m_response >= C_ResponseAlert; }
    bool get_popup() const { return m_response >= C_ResponsePopup && s_trayMessages; }
    bool get_badge() const { return m_response >= C_ResponseBadge; }
    bool get_list() const { return m_response >= C_ResponseList && m_canList; }

    // The levels this scheme offers, highest first, as (TVId(level, -1, -1),
    // text): without tray messages there is no 80, without can_list no 40.
    TVIdString get_responses() const;
    // "NotifyScheme" and the id: the key of the stored response.
    std::string scheme_name() const;
    // The settings form's text of a level; "" for a value that is none.
    static std::string response_text(int response);

    // Whether the platform's tray shows messages. A fact of the platform,
    // so process-wide: the widget layer sets it before schemes are made
    // (TVNotifyListQt's constructor); false until then.
    static void set_tray_messages(bool supported) { s_trayMessages = supported; }
    static bool get_tray_messages() { return s_trayMessages; }

private:
    int m_id = 0;
    std::string m_name;
    int m_response = C_ResponseNone;
    std::string m_icon;
    bool m_canList = true;
    TVColour m_colour;

    static inline bool s_trayMessages = false;
};

std::ostream& operator<<(std::ostream& out, const TVNotifyScheme& scheme);

#endif // TVNOTIFYSCHEME_H
