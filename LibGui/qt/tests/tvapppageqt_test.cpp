#include "LibGui/qt/tvapppageqt.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "LibCore/application/tvapplication.h"
#include "TestSupport/tvraise.h"

namespace {

// Stands for a window whose settings the page opens.
class Opener : public QWidget
{
    Q_OBJECT

public:
    int m_settings = 0;

public slots:
    void preferences_selected() { ++m_settings; }
};

class AppPageTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        TVAppIdentity id;
        id.m_application = "TarvelloMaths";
        id.m_title = "Tarvello Maths";
        id.m_release = "2.0.1";
        id.m_company = "Tarvello & Co";
        TVApplication::release();
        m_app = std::make_unique<TVApplication>(1, m_argv, id);
    }
    void TearDown() override
    {
        m_app.reset();
        TVApplication::release();
        TVQuietErrorTest::TearDown();
    }

    char m_name[8] = "program";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<TVApplication> m_app;
    Opener m_opener;
};

TEST_F(AppPageTest, AboutShowsTheIdentityAndSettingsCallsTheWindowBack)
{
    QPointer<TVAppPageQt> page = TVAppPageQt::start(&m_opener, TVSlotQt(&m_opener, SLOT(preferences_selected())));
    QLabel* about = page->findChild<QLabel*>("aboutText");
    EXPECT_TRUE(about->isHidden());
    QTest::mouseClick(page->findChild<QPushButton*>("aboutButton"), Qt::LeftButton);
    EXPECT_FALSE(about->isHidden());
    EXPECT_TRUE(about->text().contains("Tarvello Maths"));
    EXPECT_TRUE(about->text().contains("Release 2.0.1"));
    EXPECT_TRUE(about->text().contains("Tarvello &amp; Co"));

    QTest::mouseClick(page->findChild<QPushButton*>("settingsButton"), Qt::LeftButton);
    EXPECT_TRUE(page == nullptr || page->is_closing());
    QCoreApplication::processEvents(); // the slot is called from the event loop
    EXPECT_EQ(m_opener.m_settings, 1);
}

} // namespace

#include "tvapppageqt_test.moc"
