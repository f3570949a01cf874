#ifndef TVSETTINGSFORMQT_H
#define TVSETTINGSFORMQT_H

// TVSettingsFormQt: one page of the settings window. The page's title is
// its window title. The window calls update_display when it opens, and
// read_form on each page when the user presses Ok; Cancel reads none.
// read_form is const towards the page: it takes what the fields hold into
// the program (the database, the parameters), not into the page.

#include <QWidget>
#include <string>

class TVSettingsFormQt : public QWidget
{
    Q_OBJECT

public:
    explicit TVSettingsFormQt(QWidget* parent = nullptr);
    ~TVSettingsFormQt() override;

    // Fills the fields from the program's present values.
    virtual void update_display();
    // Stores the fields; an error value stops the window's Ok, which then
    // stays open on this page.
    [[nodiscard]] virtual int read_form() const;

    std::string get_title() const { return windowTitle().toStdString(); }
};

#endif // TVSETTINGSFORMQT_H
