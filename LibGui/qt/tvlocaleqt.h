#ifndef TVLOCALEQT_H
#define TVLOCALEQT_H

// TVLocaleQt: the settings page of the locale's dates and times: the day
// format (dayFormatCombo, the locale's table of formats), the 24-hour
// clock (clock24Check), the first day of the week (firstDayCombo), with an
// example of the present moment (exampleLabel) that follows the fields.
// read_form sets tvlocale() and stores it in the user's file.

#include "LibGui/qt/tvsettingsformqt.h"

class QCheckBox;
class QComboBox;
class QLabel;

class TVLocaleQt : public TVSettingsFormQt
{
    Q_OBJECT

public:
    explicit TVLocaleQt(QWidget* parent = nullptr);
    ~TVLocaleQt() override;

    void update_display() override;
    [[nodiscard]] int read_form() const override;

private slots:
    void update_example();

private:
    QComboBox* m_dayFormat;
    QCheckBox* m_clock24;
    QComboBox* m_firstDay;
    QLabel* m_example;
};

#endif // TVLOCALEQT_H
