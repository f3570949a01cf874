#ifndef TVAPPSTATUSSETTER_H
#define TVAPPSTATUSSETTER_H

#include <string>

// Shows a status text on the application for the life of a scope. The text
// appears only after delayMicroseconds, so that quick work shows nothing.
class TVAppStatusSetter
{
public:
    TVAppStatusSetter(const std::string& text, bool foreground, int delayMicroseconds);
    TVAppStatusSetter(const TVAppStatusSetter&) = delete;
    TVAppStatusSetter& operator=(const TVAppStatusSetter&) = delete;
    ~TVAppStatusSetter();

private:
    std::string m_text;
    bool m_foreground;
};

#endif
