#include "LibCore/application/tvappstatussetter.h"

#include <cstdlib>

#include "LibCore/application/tvapplication.h"

// A status text that can't be pushed or popped leaves the screen wrong for
// the rest of the run; nothing sensible can go on from there.
TVAppStatusSetter::TVAppStatusSetter(const std::string& text, bool foreground, int delayMicroseconds)
    : m_text(text), m_foreground(foreground)
{
    try {
        tvapplication()->push_status(text, 0, foreground, delayMicroseconds);
    } catch (...) {
        std::abort();
    }
}

TVAppStatusSetter::~TVAppStatusSetter()
{
    try {
        tvapplication()->pop_status(m_text, m_foreground);
    } catch (...) {
        std::abort();
    }
}
