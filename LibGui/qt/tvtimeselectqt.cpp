#include "LibGui/qt/tvtimeselectqt.h"

#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "LibCore/textstr/tvtextstr.h"

TVTimeSelectQt::TVTimeSelectQt(QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText("hh:mm");
    connect(this, &QLineEdit::textEdited, this, [this] { emit sig_duration_changed(get_duration()); });
}

TVTimeSelectQt::~TVTimeSelectQt() = default;

void TVTimeSelectQt::set_duration(int seconds) { setText(QString::fromStdString(format(seconds))); }

int TVTimeSelectQt::get_duration() const { return parse(text().toStdString()); }

std::string TVTimeSelectQt::format(int seconds)
{
    if (seconds < 0 || seconds >= C_DaySecs)
        return std::string();
    char buffer[16];
    const int h = seconds / 3600, m = seconds / 60 % 60, s = seconds % 60;
    if (s == 0)
        std::snprintf(buffer, sizeof buffer, "%02d:%02d", h, m);
    else
        std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", h, m, s);
    return buffer;
}

int TVTimeSelectQt::parse(const std::string& input)
{
    std::string text = tv_tolower(input);
    // An "am" or "pm" at the end takes the hours as 1 to 12.
    int half = 0;
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    if (text.size() >= 2 && (text.compare(text.size() - 2, 2, "am") == 0 || text.compare(text.size() - 2, 2, "pm") == 0)) {
        half = text[text.size() - 2] == 'a' ? 1 : 2;
        text.erase(text.size() - 2);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.erase(0, 1);
    if (text.empty())
        return C_Blank;
    const std::vector<std::string> parts = tv_tokenise(text, ':');
    if (parts.empty() || parts.size() > 3)
        return C_Blank;
    int values[3] = {0, 0, 0};
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string& part = parts[i];
        if (part.empty() || part.size() > 2)
            return C_Blank;
        for (char c : part) {
            if (!std::isdigit(static_cast<unsigned char>(c)))
                return C_Blank;
        }
        values[i] = std::stoi(part);
    }
    int hours = values[0];
    if (half != 0) {
        if (hours < 1 || hours > 12)
            return C_Blank;
        hours = hours % 12 + (half == 2 ? 12 : 0);
    }
    if (hours > 23 || values[1] > 59 || values[2] > 59)
        return C_Blank;
    return hours * 3600 + values[1] * 60 + values[2];
}
