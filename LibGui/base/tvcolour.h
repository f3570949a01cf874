#ifndef TVCOLOUR_H
#define TVCOLOUR_H

// TVColour: a colour as plain red, green, blue and alpha, each 0-255, so
// that toolkit-free code (a notification scheme) can carry one. The text
// form is "#rrggbb", or "#rrggbbaa" when not opaque.

#include <iosfwd>
#include <string>

class TVColour
{
public:
    constexpr TVColour() = default;
    constexpr TVColour(int red, int green, int blue, int alpha = 255)
        : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha)
    {
    }

    int red() const { return m_red; }
    int green() const { return m_green; }
    int blue() const { return m_blue; }
    int alpha() const { return m_alpha; }

    std::string to_string() const;
    // False, and the colour unchanged, for a text not of the form above.
    bool from_string(const std::string& text);

    bool operator==(const TVColour& other) const
    {
        return m_red == other.m_red && m_green == other.m_green && m_blue == other.m_blue &&
               m_alpha == other.m_alpha;
    }
    bool operator!=(const TVColour& other) const { return !(*this == other); }

private:
    int m_red = 0;
    int m_green = 0;
    int m_blue = 0;
    int m_alpha = 255;
};

std::ostream& operator<<(std::ostream& out, const TVColour& colour);

#endif // TVCOLOUR_H
