#include "LibGui/qt/tvdialogqt.h"

#include <QTimer>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibGui/qt/tvwidgetmgrqt.h"

TVDialogQt::TVDialogQt(QWidget* parent) : QDialog(parent)
{
    // A dialog of a window with a manager opens in the manager's host.
    if (TVWindowQt* window = parent_window(parent))
        set_widgetmgr(window->get_widgetmgr());
}

TVDialogQt::~TVDialogQt()
{
    if (TVWidgetMgrQt* manager = get_widgetmgr())
        manager->forget(*this);
}

bool TVDialogQt::is_embedded() const
{
    const TVWidgetMgrQt* manager = get_widgetmgr();
    return manager != nullptr && manager->contains(*this);
}

void TVDialogQt::show_dialog()
{
    m_closing = false;
    if (TVWidgetMgrQt* manager = get_widgetmgr()) {
        manager->show_dialog(*this);
        return;
    }
    if (m_restoreGeom)
        restore_geometry(*this);
    show();
    open_complete();
}

void TVDialogQt::open_complete() {}

int TVDialogQt::exec_dialog()
{
    m_closing = false;
    if (TVWidgetMgrQt* manager = get_widgetmgr())
        return manager->exec_dialog(*this);
    if (m_restoreGeom)
        restore_geometry(*this);
    QTimer::singleShot(0, this, [this] { open_complete(); });
    exec();
    return m_result;
}

void TVDialogQt::hide_dialog() { hide(); }

void TVDialogQt::close_dialog() { dialog_done(QDialog::Rejected, true); }

void TVDialogQt::dialog_done(int result, bool /*immediate*/)
{
    if (m_closing)
        return; // one close per opening
    m_result = result;
    m_closing = true;
    if (!is_embedded()) {
        if (m_restoreGeom && isWindow() && TVParam::has_object() && tvparam()->get_user_config() != nullptr) {
            if (istvwarn(store_geometry(*this)))
                get_tverror()->clear_last_error(); // a lost position isn't worth a dialog
        }
        done(result);
        finished_closing();
        return;
    }
    start_closing();
    closed_dialog();
    done(result);
    finished_closing();
}

void TVDialogQt::start_closing()
{
    if (TVWidgetMgrQt* manager = get_widgetmgr())
        manager->start_closing(*this);
}

void TVDialogQt::closed_dialog()
{
    if (TVWidgetMgrQt* manager = get_widgetmgr())
        manager->dialog_closed(*this);
}

void TVDialogQt::finished_closing()
{
    emit sig_closed(m_result);
    if (m_deleteClose)
        deleteLater();
}

void TVDialogQt::accept()
{
    if (!validate_display())
        return;
    if (istvwarn(read_display(true))) {
        tvhandle_error(tverrorvalue(), TVSevWarning);
        return;
    }
    dialog_done(QDialog::Accepted, false);
}

void TVDialogQt::reject()
{
    cancel_display();
    dialog_done(QDialog::Rejected, false);
}

void TVDialogQt::update_display() {}

void TVDialogQt::mark_update_display()
{
    m_updateMarked = true;
    if (m_updateArmed)
        return;
    m_updateArmed = true;
    QTimer::singleShot(0, this, &TVDialogQt::window_update_due);
}

bool TVDialogQt::validate_display() { return true; }

int TVDialogQt::read_display(bool /*store*/) { return TVErrC_ok; }

void TVDialogQt::cancel_display() { m_updateMarked = false; }

void TVDialogQt::update_all_display()
{
    update_display();
    for (TVDialogQt* dialog : findChildren<TVDialogQt*>())
        dialog->update_display();
}

void TVDialogQt::do_window_update()
{
    if (!m_updateMarked)
        return;
    m_updateMarked = false;
    update_display();
}

void TVDialogQt::window_update_due()
{
    m_updateArmed = false;
    do_window_update();
}

void TVDialogQt::raise_window(int delayMs)
{
    auto bring = [this] {
        raise();
        activateWindow();
    };
    if (delayMs <= 0)
        bring();
    else
        QTimer::singleShot(delayMs, this, bring);
}

void TVDialogQt::set_window_theme(const std::string& styleSheet) { setStyleSheet(QString::fromStdString(styleSheet)); }
