#ifndef TVNOTIFYSETTINGSQT_H
#define TVNOTIFYSETTINGSQT_H

// TVNotifySettingsQt: the settings page of the notifications: each scheme
// with the responses it offers (schemeList), and whether to use the
// system tray (systemTrayCheck). read_form sets the list's schemes and
// stores them.

#include "LibGui/qt/tvsettingsformqt.h"

class QCheckBox;
class QComboBox;
class QTreeWidget;
class TVNotifyList;

class TVNotifySettingsQt : public TVSettingsFormQt
{
    Q_OBJECT

public:
    // list must outlive the page.
    explicit TVNotifySettingsQt(TVNotifyList& list, QWidget* parent = nullptr);
    ~TVNotifySettingsQt() override;

    void update_display() override;
    [[nodiscard]] int read_form() const override;

    // The response chooser of the scheme in that row; null out of range.
    QComboBox* response_combo(int row) const;

private:
    TVNotifyList& m_list;
    QTreeWidget* m_schemes;
    QCheckBox* m_tray;
};

#endif // TVNOTIFYSETTINGSQT_H
