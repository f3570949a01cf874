#include "LibGui/base/tvcolour.h"

#include <cstdio>
#include <ostream>

std::string TVColour::to_string() const
{
    char text[16];
    if (m_alpha == 255)
        std::snprintf(text, sizeof(text), "#%02x%02x%02x", m_red & 0xff, m_green & 0xff, m_blue & 0xff);
    else
        std::snprintf(text, sizeof(text), "#%02x%02x%02x%02x", m_red & 0xff, m_green & 0xff,
                      m_blue & 0xff, m_alpha & 0xff);
    return text;
}

bool TVColour::from_string(const std::string& text)
{
    if ((text.size() != 7 && text.size() != 9) || text[0] != '#')
        return false;
    int parts[4] = {0, 0, 0, 255};
    for (size_t i = 1; i < text.size(); i += 2) {
        int value = 0;
        for (size_t j = i; j < i + 2; ++j) {
            const char c = text[j];
            int digit;
            if (c >= '0' && c <= '9')
                digit = c - '0';
            else if (c >= 'a' && c <= 'f')
                digit = c - 'a' + 10;
            else if (c >= 'A' && c <= 'F')
                digit = c - 'A' + 10;
            else
                return false;
            value = value * 16 + digit;
        }
        parts[i / 2] = value;
    }
    m_red = parts[0];
    m_green = parts[1];
    m_blue = parts[2];
    m_alpha = parts[3];
    return true;
}

std::ostream& operator<<(std::ostream& out, const TVColour& colour)
{
    return out << colour.to_string();
}
