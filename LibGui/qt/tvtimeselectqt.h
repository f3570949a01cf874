#ifndef TVTIMESELECTQT_H
#define TVTIMESELECTQT_H

// TVTimeSelectQt: a time of day as seconds since midnight, typed as
// "7:30", "07:30:15", "19" or "7:30 pm". A blank field is no time: it reads
// back as C_Blank, which lies outside the day, as does anything that isn't a
// time of day; a value outside 0..86399 shows as blank.

#include <QLineEdit>

class TVTimeSelectQt : public QLineEdit
{
    Q_OBJECT

public:
    static constexpr int C_DaySecs = 86400;
    // What a blank or unreadable field gives: one above the day's seconds.
    static constexpr int C_Blank = C_DaySecs + 1;

    explicit TVTimeSelectQt(QWidget* parent = nullptr);
    ~TVTimeSelectQt() override;

    // Shows "HH:MM", or "HH:MM:SS" when the seconds aren't 0.
    void set_duration(int seconds);
    int get_duration() const;

    // Seconds since midnight of a text, or C_Blank.
    static int parse(const std::string& text);
    static std::string format(int seconds);

signals:
    // After each edit by the user, with the new value.
    void sig_duration_changed(int seconds);
};

#endif
