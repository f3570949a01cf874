#include "LibGui/qt/tvlocaleqt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>

#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

TVLocaleQt::TVLocaleQt(QWidget* parent) : TVSettingsFormQt(parent)
{
    setObjectName("TVLocaleQt");
    setWindowTitle("Date and Time");
    m_dayFormat = new QComboBox(this);
    m_dayFormat->setObjectName("dayFormatCombo");
    for (const TVDayFormatOption& option : TVLocale::C_Option)
        m_dayFormat->addItem(option.m_name);
    m_clock24 = new QCheckBox("24-hour clock", this);
    m_clock24->setObjectName("clock24Check");
    m_firstDay = new QComboBox(this);
    m_firstDay->setObjectName("firstDayCombo");
    for (int day = 0; day < 7; ++day)
        m_firstDay->addItem(QString::fromStdString(tvlocale()->weekday_name(day, false)));
    m_example = new QLabel(this);
    m_example->setObjectName("exampleLabel");

    QFormLayout* layout = new QFormLayout(this);
    layout->addRow("Dates:", m_dayFormat);
    layout->addRow("", m_clock24);
    layout->addRow("Weeks begin on:", m_firstDay);
    layout->addRow("Example:", m_example);

    connect(m_dayFormat, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &TVLocaleQt::update_example);
    connect(m_clock24, &QCheckBox::toggled, this, &TVLocaleQt::update_example);
}

TVLocaleQt::~TVLocaleQt() = default;

void TVLocaleQt::update_display()
{
    const TVLocale* locale = tvlocale();
    const QSignalBlocker blockFormat(m_dayFormat);
    const QSignalBlocker blockClock(m_clock24);
    m_dayFormat->setCurrentIndex(locale->get_format_number());
    m_clock24->setChecked(locale->is_24hour_clock());
    m_firstDay->setCurrentIndex(locale->get_firstday());
    update_example();
}

void TVLocaleQt::update_example()
{
    // A scratch copy, so that trying a format changes nothing until Ok.
    TVLocale trial(*tvlocale());
    trial.set_day_format(m_dayFormat->currentIndex());
    trial.set_24hour_clock(m_clock24->isChecked());
    const TVDate now = TVDateUtils::now();
    std::string format = trial.date_format();
    m_example->setText(QString::fromStdString(now.to_string(format)));
}

int TVLocaleQt::read_form() const
{
    TVLocale* locale = tvlocale();
    locale->set_day_format(m_dayFormat->currentIndex());
    locale->set_24hour_clock(m_clock24->isChecked());
    locale->set_firstday(m_firstDay->currentIndex());
    TV_PASS_ON(locale->write_config());
    return TVErrC_ok;
}
