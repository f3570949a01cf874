#include "LibGui/qt/tvdialogqt.h"

#include <gtest/gtest.h>

#include <QFrame>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvmainwindowqt.h"
#include "LibGui/qt/tvwidgetmgrqt.h"

namespace {

// A dialog that refuses to be accepted until told the fields are right.
class FormDialog : public TVDialogQt
{
public:
    using TVDialogQt::TVDialogQt;
    bool validate_display() override { return m_valid; }
    int read_display(bool store) override
    {
        if (store)
            ++m_reads;
        return TVErrC_ok;
    }
    void open_complete() override { ++m_opened; }
    bool m_valid = true;
    int m_reads = 0;
    int m_opened = 0;
};

void flush_deletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

} // namespace

TEST(DialogQt, TopLevelDialogClosesOnceWithTheFirstResult)
{
    FormDialog dialog;
    QSignalSpy closed(&dialog, &TVDialogQt::sig_closed);
    dialog.set_restore_geom(false);
    dialog.show_dialog();
    EXPECT_EQ(dialog.m_opened, 1);
    ASSERT_TRUE(dialog.isVisible());

    dialog.dialog_done(QDialog::Accepted, false);
    dialog.dialog_done(QDialog::Rejected, true); // already closing: ignored
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(dialog.is_closing());
    EXPECT_EQ(dialog.get_result(), QDialog::Accepted);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    ASSERT_EQ(closed.count(), 1);
    EXPECT_EQ(closed.at(0).at(0).toInt(), QDialog::Accepted);

    dialog.show_dialog(); // a new opening may close again
    dialog.close_dialog();
    EXPECT_EQ(dialog.get_result(), QDialog::Rejected);
    EXPECT_EQ(closed.count(), 2);
}

TEST(DialogQt, AcceptWaitsForValidFieldsAndReadsThem)
{
    FormDialog dialog;
    dialog.set_restore_geom(false);
    dialog.show_dialog();
    dialog.m_valid = false;
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.m_reads, 0);
    dialog.m_valid = true;
    dialog.accept();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.m_reads, 1);
    EXPECT_EQ(dialog.get_result(), QDialog::Accepted);
}

TEST(DialogQt, EscapeRejectsThroughDialogDone)
{
    FormDialog dialog;
    dialog.set_restore_geom(false);
    dialog.show_dialog();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.is_closing());
    EXPECT_EQ(dialog.get_result(), QDialog::Rejected);
}

TEST(DialogQt, DeleteOnCloseDeletesFromTheEventLoop)
{
    QPointer<FormDialog> dialog = new FormDialog;
    dialog->set_restore_geom(false);
    dialog->set_delete_close(true);
    dialog->show_dialog();
    dialog->dialog_done(QDialog::Accepted, true);
    ASSERT_FALSE(dialog.isNull()); // the caller may still read the result
    EXPECT_EQ(dialog->get_result(), QDialog::Accepted);
    flush_deletes();
    EXPECT_TRUE(dialog.isNull());
}

TEST(DialogQt, ExecDialogGivesTheResult)
{
    FormDialog dialog;
    dialog.set_restore_geom(false);
    QTimer::singleShot(0, &dialog, [&] { dialog.dialog_done(QDialog::Accepted, false); });
    EXPECT_EQ(dialog.exec_dialog(), QDialog::Accepted);
    EXPECT_EQ(dialog.m_opened, 1);
}

// Embedded: the manager's host shows the dialogs side by side.
class WidgetMgrTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_window.setObjectName("Main");
        m_host = new QWidget;
        m_window.setCentralWidget(m_host);
        m_manager = new TVWidgetMgrQt(m_host, &m_window);
        m_window.set_widgetmgr(m_manager);
        m_window.resize(800, 400);
        m_window.show();
    }

    FormDialog* open(const char* name)
    {
        auto* dialog = new FormDialog(&m_window);
        dialog->setObjectName(name);
        dialog->show_dialog();
        return dialog;
    }

    QRect placed(FormDialog* dialog) const
    {
        QFrame* frame = m_manager->frame_of(*dialog);
        return frame == nullptr ? QRect() : frame->geometry();
    }

    TVMainWindowQt m_window;
    QWidget* m_host = nullptr;
    TVWidgetMgrQt* m_manager = nullptr;
};

TEST_F(WidgetMgrTest, TwoDialogsSitSideBySideInsideTheWindow)
{
    FormDialog* first = open("first");
    FormDialog* second = open("second");
    EXPECT_TRUE(first->is_embedded());
    EXPECT_FALSE(first->isWindow());
    EXPECT_EQ(first->window(), &m_window);
    EXPECT_EQ(first->m_opened, 1);
    ASSERT_EQ(m_manager->count(), 2);
    EXPECT_EQ(m_manager->get_maxcolumns(), 2);

    const QRect a = placed(first);
    const QRect b = placed(second);
    EXPECT_EQ(a.top(), b.top());
    EXPECT_LT(a.right(), b.left());
    EXPECT_GT(a.width(), 300); // the two share the window's width

    // A third goes under the first.
    FormDialog* third = open("third");
    EXPECT_GT(placed(third).top(), a.top());
    EXPECT_EQ(placed(third).left(), placed(first).left());
    third->close_dialog();
}

TEST_F(WidgetMgrTest, ClosingOneRearrangesAndGivesTheDialogBack)
{
    FormDialog* first = open("first");
    FormDialog* second = open("second");
    const QRect left = placed(first);

    first->dialog_done(QDialog::Accepted, false);
    EXPECT_EQ(m_manager->count(), 1);
    EXPECT_FALSE(first->is_embedded());
    EXPECT_FALSE(first->isVisible());
    EXPECT_EQ(first->parentWidget(), &m_window); // its owner still owns it
    EXPECT_EQ(first->get_result(), QDialog::Accepted);

    EXPECT_EQ(placed(second).left(), left.left());
    EXPECT_GT(placed(second).width(), left.width()); // alone it takes the whole row
    flush_deletes();
}

TEST_F(WidgetMgrTest, OneColumnStacksAndCloseAllEmptiesTheHost)
{
    m_manager->set_maxcolumns(1);
    FormDialog* first = open("first");
    FormDialog* second = open("second");
    EXPECT_EQ(placed(first).left(), placed(second).left());
    EXPECT_LT(placed(first).bottom(), placed(second).top());

    QSignalSpy closed(second, &TVDialogQt::sig_closed);
    m_manager->close_all();
    EXPECT_EQ(m_manager->count(), 0);
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(second->get_result(), QDialog::Rejected);
}

TEST_F(WidgetMgrTest, ExecWaitsForTheEmbeddedDialog)
{
    auto* dialog = new FormDialog(&m_window);
    QTimer::singleShot(0, dialog, [dialog] { dialog->dialog_done(QDialog::Accepted, false); });
    EXPECT_EQ(dialog->exec_dialog(), QDialog::Accepted);
    EXPECT_EQ(m_manager->count(), 0);
}

TEST_F(WidgetMgrTest, ADialogDestroyedWhileEmbeddedLeavesTheManager)
{
    FormDialog* first = open("first");
    open("second");
    delete first;
    EXPECT_EQ(m_manager->count(), 1);
    flush_deletes();
}
