#include "LibGui/qt/tvnotifylistqt.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include "LibGui/qt/tvnotifybarqt.h"
#include "LibGui/qt/tvnotifydialogqt.h"
#include "LibGui/qt/tvtreewidgetqt.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

namespace {

const int C_Alert = 10;
const int C_Badge = 5;

// A window with the bar, its tree and the list wired as a program does.
class NotifyListQtTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        m_list.add_scheme(new TVNotifyScheme(C_Alert, "Alert", TVNotifyScheme::C_ResponseAlert, "", true, TVColour()));
        m_list.add_scheme(new TVNotifyScheme(C_Badge, "Badge", TVNotifyScheme::C_ResponseBadge, "", true, TVColour()));
        m_window.setCentralWidget(m_bar);
        ASSERT_EQ(m_list.initialise(m_bar->get_tree(), &m_window), TVErrC_ok);
        m_bar->set_notify_list(&m_list);
        m_window.show();
    }

    // One pass of a window's periodic update, with these reasons holding.
    void rebuild(const std::vector<TVNotifyItem>& items)
    {
        m_list.reset();
        for (const TVNotifyItem& item : items)
            m_list.add(item);
        m_list.update();
    }

    static TVNotifyItem item(const std::string& message, int id, int scheme, double priority)
    {
        return TVNotifyItem(message, TVId(id, -1, -1), scheme, priority, TVDate(TVDate::E_DateBlank));
    }

    template <class T>
    T* child(QWidget* parent, const char* name)
    {
        T* found = parent->findChild<T*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    TestClock m_clock{1795262400};
    QMainWindow m_window;
    TVNotifyBarQt* m_bar = new TVNotifyBarQt;
    TVNotifyListQt m_list;
};

TEST_F(NotifyListQtTest, AlertsReachTheDialogAndEveryItemTheBadgeTreeAndBar)
{
    QSignalSpy updated(&m_list, &TVNotifyListQt::updated);
    const TVNotifyItem alert = item("Check failed", 7, C_Alert, 300.0);
    const TVNotifyItem reminder = item("Reminder: 16:00 Maths Session", 800, C_Badge, 50.0);
    rebuild({reminder, alert});

    ASSERT_NE(m_list.get_dialog(), nullptr);
    TVNotifyDialogQt& dialog = *m_list.get_dialog();
    ASSERT_EQ(dialog.get_nitems(), 1);
    EXPECT_EQ(dialog.get_item(0), alert);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(m_list.get_shown_badge(), 2);
    EXPECT_EQ(m_bar->get_tree()->topLevelItemCount(), 2);
    EXPECT_EQ(TVTreeWidgetQt::get_item_id(*m_bar->get_tree()->topLevelItem(0)), TVId(7, -1, -1));
    EXPECT_TRUE(m_bar->isVisible());
    EXPECT_EQ(m_bar->get_message()->text().toStdString(), "Check failed\nAnd 1 more warnings.");
    EXPECT_EQ(updated.count(), 1);

    // The same reasons again: nothing new reaches the dialog.
    dialog.close_single();
    EXPECT_FALSE(dialog.isVisible());
    rebuild({reminder, alert});
    EXPECT_EQ(dialog.get_nitems(), 0);

    // The check passes: the alert leaves; the reminder stays.
    rebuild({reminder});
    EXPECT_EQ(m_list.get_shown_badge(), 1);
    EXPECT_EQ(m_bar->get_message()->text().toStdString(), "Reminder: 16:00 Maths Session");

    rebuild({});
    EXPECT_EQ(m_list.get_shown_badge(), 0);
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(NotifyListQtTest, RemovedAlertLeavesTheDialogAndGoSelectsItsObject)
{
    const TVNotifyItem first = item("First", 1, C_Alert, 2.0);
    const TVNotifyItem second = item("Second", 2, C_Alert, 1.0);
    rebuild({first, second});
    TVNotifyDialogQt& dialog = *m_list.get_dialog();
    ASSERT_EQ(dialog.get_nitems(), 2);
    EXPECT_EQ(child<QLabel>(&dialog, "countLabel")->text(), "1 of 2");

    rebuild({second});
    ASSERT_EQ(dialog.get_nitems(), 1);
    EXPECT_EQ(child<QLabel>(&dialog, "messageLabel")->text(), "Second");

    std::vector<TVId> selected;
    QObject::connect(&m_list, &TVNotifyListQt::item_selected, [&selected](const TVId& id) { selected.push_back(id); });
    QTest::mouseClick(child<QPushButton>(&dialog, "goButton"), Qt::LeftButton);
    EXPECT_EQ(selected, std::vector<TVId>{TVId(2, -1, -1)});
    EXPECT_EQ(dialog.get_nitems(), 0);
    EXPECT_FALSE(dialog.isVisible());

    QSignalSpy options(&m_list, &TVNotifyListQt::options_requested);
    rebuild({item("Third", 3, C_Alert, 1.0)});
    QTest::mouseClick(child<QPushButton>(&dialog, "optionsButton"), Qt::LeftButton);
    EXPECT_EQ(options.count(), 1);
    QTest::mouseClick(child<QPushButton>(&dialog, "closeAllButton"), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(NotifyListQtTest, TheBarSelectsAndStaysAwayUntilTheStateChanges)
{
    rebuild({item("Low", 1, C_Badge, 1.0), item("High", 2, C_Alert, 1.0)});
    m_list.get_dialog()->close_all();

    std::vector<std::vector<int>> selected;
    QObject::connect(m_bar, &TVNotifyBarQt::sig_selected,
                     [&selected](const TVIdList& ids) { selected.push_back(ids.get_ids()); });
    QTest::mouseClick(const_cast<QLabel*>(m_bar->get_message()), Qt::LeftButton);
    ASSERT_EQ(selected.size(), 1u);
    EXPECT_EQ(selected[0], std::vector<int>{2});

    // A row chosen in the expanded list selects its object.
    QTest::mouseClick(child<QToolButton>(m_bar, "expandButton"), Qt::LeftButton);
    EXPECT_TRUE(m_bar->is_expanded());
    m_bar->get_tree()->topLevelItem(0)->setSelected(true); // "Low": equal priorities keep their order
    ASSERT_EQ(selected.size(), 2u);
    EXPECT_EQ(selected[1], std::vector<int>{1});
    // A rebuild keeps the row selected without selecting it again.
    rebuild({item("Low", 1, C_Badge, 1.0), item("High", 2, C_Alert, 1.0)});
    EXPECT_EQ(m_bar->get_tree()->get_selected_ids().get_ids(), std::vector<int>{1});
    EXPECT_EQ(selected.size(), 2u);

    QTest::mouseClick(child<QToolButton>(m_bar, "closeButton"), Qt::LeftButton);
    EXPECT_FALSE(m_bar->isVisible());
    rebuild({item("Low", 1, C_Badge, 1.0), item("High", 2, C_Alert, 1.0)});
    EXPECT_FALSE(m_bar->isVisible());
    rebuild({item("High", 2, C_Alert, 1.0)});
    EXPECT_TRUE(m_bar->isVisible());
}

} // namespace
