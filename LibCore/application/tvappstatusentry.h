#ifndef TVAPPSTATUSENTRY_H
#define TVAPPSTATUSENTRY_H

#include <string>

#include "LibDate/core/tvdate.h"

// One message on a status stack: the text, a percentage done, and the
// moment from which it may be shown (so that short operations never flicker
// a message on the screen).
struct TVAppStatusEntry {
    std::string m_status;
    double m_percentage = 0.0;
    TVDate m_showFrom;
};

#endif
