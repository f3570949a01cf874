#ifndef TVSETTINGSQT_H
#define TVSETTINGSQT_H

// TVSettingsQt: the settings window: a list of pages on the left
// (pageList), the page chosen on the right (pageStack), and Ok, Cancel and
// Help below (buttonBox). Ok reads every page in the order they were added
// and closes; Cancel closes without reading any. The help page is the
// window's manual (set_manual).
//
// The window owns its pages and deletes itself when closed.

#include <string>
#include <vector>

#include "LibGui/qt/tvdialogqt.h"

class QDialogButtonBox;
class QListWidget;
class QStackedWidget;
class TVSettingsFormQt;

class TVSettingsQt : public TVDialogQt
{
    Q_OBJECT

public:
    explicit TVSettingsQt(QWidget* parent = nullptr);
    ~TVSettingsQt() override;

    // Takes ownership. icon is a resource path; empty for none.
    void add_form(TVSettingsFormQt* form, const std::string& icon);
    int get_nforms() const { return static_cast<int>(m_forms.size()); }
    TVSettingsFormQt* get_form(int index) const;
    void select_form(int index);

    // update_display on every page, then shows the window.
    void start();
    void update_display() override;

    QDialogButtonBox* get_button_box() const { return m_buttons; }

signals:
    // After Ok has read every page.
    void settings_changed();

public slots:
    void ok_pressed();
    void cancel_pressed();
    void help_pressed();

private:
    std::vector<TVSettingsFormQt*> m_forms;
    QListWidget* m_list;
    QStackedWidget* m_stack;
    QDialogButtonBox* m_buttons;
};

#endif // TVSETTINGSQT_H
