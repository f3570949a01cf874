#ifndef TVAPPPAGEQT_H
#define TVAPPPAGEQT_H

// TVAppPageQt: the small utility page of a program: Settings, User Manual
// and About. Settings closes the page and calls the slot given (the window
// builds its own settings); User Manual opens the help at the manual page
// of the window that opened the page; About shows the program's identity,
// from the application object, in the page (aboutText).
//
// The page deletes itself when closed.

#include <string>

#include "LibGui/qt/tvdialogqt.h"
#include "LibGui/qt/tvslotqt.h"

class QLabel;
class QPushButton;

class TVAppPageQt : public TVDialogQt
{
    Q_OBJECT

public:
    TVAppPageQt(QWidget* parent, const TVSlotQt& settings);
    ~TVAppPageQt() override;

    // Opens the page over parent; settings is called by the Settings
    // button, e.g. TVSlotQt(window, SLOT(preferences_selected())).
    static TVAppPageQt* start(QWidget* parent, const TVSlotQt& settings);

    // The identity of the program: its title, release, date, company,
    // copyright and web site, as HTML lines (empty parts left out).
    static std::string about_text();

public slots:
    void settings_pressed();
    void manual_pressed();
    void about_pressed();

private:
    TVSlotQt m_settings;
    QLabel* m_about;
};

#endif // TVAPPPAGEQT_H
