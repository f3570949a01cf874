#include "LibGui/qt/tvsettingsqt.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

#include "LibDate/core/tvlocale.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibGui/qt/tvlocaleqt.h"
#include "LibGui/qt/tvnotifysettingsqt.h"
#include "LibGui/qt/tvsettingsformqt.h"
#include "TestSupport/tvparamtest.h"

namespace {

// A page that writes down what the window asks of it.
class LogForm : public TVSettingsFormQt
{
public:
    LogForm(const char* title, std::vector<std::string>& log, int result = TVErrC_ok)
        : m_log(log), m_result(result)
    {
        setWindowTitle(title);
    }
    void update_display() override { m_log.push_back("show " + get_title()); }
    int read_form() const override
    {
        m_log.push_back("read " + get_title());
        return m_result;
    }

private:
    std::vector<std::string>& m_log;
    int m_result;
};

class SettingsTest : public TVParamTest
{
protected:
    // Opens a settings window of these pages; the window deletes itself.
    TVSettingsQt* open(const std::vector<TVSettingsFormQt*>& forms)
    {
        TVSettingsQt* settings = new TVSettingsQt;
        for (TVSettingsFormQt* form : forms)
            settings->add_form(form, "");
        settings->start();
        m_settings = settings;
        return settings;
    }
    void press(QDialogButtonBox::StandardButton which)
    {
        QTest::mouseClick(m_settings->get_button_box()->button(which), Qt::LeftButton);
    }
    void TearDown() override
    {
        delete m_settings.data();
        TVParamTest::TearDown();
    }

    std::vector<std::string> m_log;
    QPointer<TVSettingsQt> m_settings;
};

TEST_F(SettingsTest, OkReadsEveryPageInOrderAndCancelNone)
{
    TVSettingsQt* settings = open({new LogForm("One", m_log), new LogForm("Two", m_log)});
    EXPECT_EQ(m_log, (std::vector<std::string>{"show One", "show Two"}));
    QSignalSpy changed(settings, &TVSettingsQt::settings_changed);
    press(QDialogButtonBox::Ok);
    EXPECT_EQ(m_log, (std::vector<std::string>{"show One", "show Two", "read One", "read Two"}));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(settings->is_closing());

    m_log.clear();
    settings = open({new LogForm("One", m_log), new LogForm("Two", m_log)});
    QSignalSpy cancelled(settings, &TVSettingsQt::settings_changed);
    press(QDialogButtonBox::Cancel);
    EXPECT_EQ(m_log, (std::vector<std::string>{"show One", "show Two"}));
    EXPECT_EQ(cancelled.count(), 0);
    EXPECT_TRUE(settings->is_closing());
}

TEST_F(SettingsTest, APageThatFailsKeepsTheWindowOpenOnIt)
{
    const int failure = tvwarning(TVErrC_InvalidValue, TVLOCATION, "Not a folder.");
    get_tverror()->clear_all();
    TVSettingsQt* settings = open({new LogForm("One", m_log), new LogForm("Two", m_log, failure),
                                   new LogForm("Three", m_log)});
    settings->select_form(0);
    press(QDialogButtonBox::Ok);
    EXPECT_EQ(m_log.back(), "read Two");
    EXPECT_FALSE(settings->is_closing());
    EXPECT_EQ(settings->findChild<QStackedWidget*>("pageStack")->currentIndex(), 1);
}

TEST_F(SettingsTest, NotificationPageStoresTheChosenResponses)
{
    TVParam* param = make_param({});
    param->add_config_file(user_file());
    ASSERT_EQ(param->parse(nullptr), TVErrC_ok);
    TVNotifyScheme::set_tray_messages(false);
    TVNotifyList list;
    list.add_scheme(new TVNotifyScheme(3, "Checks", 60, "", true, TVColour()));
    list.add_scheme(new TVNotifyScheme(4, "Notes", 40, "", false, TVColour())); // can't list: 20

    TVNotifySettingsQt* page = new TVNotifySettingsQt(list);
    open({page});
    QComboBox* checks = page->response_combo(0);
    ASSERT_NE(checks, nullptr);
    EXPECT_EQ(checks->currentText(), "Set the badge icon number");
    EXPECT_EQ(checks->count(), 4); // no pop-up without tray messages
    EXPECT_EQ(page->response_combo(1)->currentText(), "Don't show a warning");
    EXPECT_EQ(page->response_combo(1)->count(), 3);

    checks->setCurrentIndex(checks->findText("Show an alert dialog"));
    page->findChild<QCheckBox*>("systemTrayCheck")->setChecked(false);
    press(QDialogButtonBox::Ok);
    EXPECT_EQ(list.get_scheme_id(3)->get_response(), 100);
    EXPECT_FALSE(list.get_usetray());
    EXPECT_EQ(tvparam()->get_system_value("NotifyScheme3"), "100");
    EXPECT_EQ(tvparam()->get_system_value("NotifyScheme4"), "20");
}

TEST_F(SettingsTest, LocalePageTriesFormatsAndSetsThemOnlyOnOk)
{
    TVParam* param = make_param({});
    param->add_config_file(user_file());
    ASSERT_EQ(param->parse(nullptr), TVErrC_ok);
    const TVLocale saved(*tvlocale());
    tvlocale()->set_day_format(0);
    tvlocale()->set_24hour_clock(true);

    TVLocaleQt* page = new TVLocaleQt;
    open({page});
    QLabel* example = page->findChild<QLabel*>("exampleLabel");
    const QString before = example->text();
    page->findChild<QComboBox*>("dayFormatCombo")->setCurrentIndex(7); // "yyyy-mm-dd"
    page->findChild<QCheckBox*>("clock24Check")->setChecked(false);
    EXPECT_NE(example->text(), before);
    EXPECT_EQ(tvlocale()->get_format_number(), 0);

    press(QDialogButtonBox::Ok);
    EXPECT_EQ(tvlocale()->get_format_number(), 7);
    EXPECT_FALSE(tvlocale()->is_24hour_clock());
    EXPECT_EQ(tvparam()->get_system_value(TVLocale::C_SysDayFormat), "7");
    *tvlocale() = saved;
}

} // namespace
