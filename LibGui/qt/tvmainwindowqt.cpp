#include "LibGui/qt/tvmainwindowqt.h"

#include <QCloseEvent>
#include <QStatusBar>
#include <QTimer>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibGui/qt/tvapplicationqt.h"
#include "LibGui/qt/tvdialogqt.h"

TVMainWindowQt::TVMainWindowQt(QWidget* parent) : QMainWindow(parent) {}

TVMainWindowQt::~TVMainWindowQt()
{
    if (has_tvapplicationqt())
        tvapplicationqt()->remove_window(this);
}

void TVMainWindowQt::show_dialog()
{
    restore_geometry(*this);
    show();
}

void TVMainWindowQt::update_display() {}

void TVMainWindowQt::mark_update_display()
{
    m_updateMarked = true;
    if (m_updateArmed)
        return;
    m_updateArmed = true;
    QTimer::singleShot(0, this, &TVMainWindowQt::window_update_due);
}

void TVMainWindowQt::cancel_display() { m_updateMarked = false; }

void TVMainWindowQt::update_all_display()
{
    update_display();
    for (TVDialogQt* dialog : findChildren<TVDialogQt*>())
        dialog->update_display();
}

void TVMainWindowQt::do_window_update()
{
    if (!m_updateMarked)
        return;
    m_updateMarked = false;
    update_display();
}

void TVMainWindowQt::window_update_due()
{
    m_updateArmed = false;
    do_window_update();
}

void TVMainWindowQt::app_status()
{
    const std::string text = TVApplication::has_object() ? tvapplication()->foreground_status() : std::string();
    if (text.empty())
        statusBar()->clearMessage();
    else
        statusBar()->showMessage(QString::fromStdString(text));
}

void TVMainWindowQt::url_called(const std::string&, const std::string&, const TVTagValue&) {}

TVSlotQt TVMainWindowQt::mkslot(const std::string& name)
{
    const std::string signature = name.find('(') == std::string::npos ? name + "()" : name;
    return TVSlotQt(this, "1" + signature);
}

void TVMainWindowQt::closeEvent(QCloseEvent* event)
{
    if (TVParam::has_object() && tvparam()->get_user_config() != nullptr) {
        if (istvwarn(store_geometry(*this)))
            get_tverror()->clear_last_error(); // a lost position isn't worth a dialog
    }
    QMainWindow::closeEvent(event);
}
