#include "LibGui/qt/tvnotifylistqt.h"

#include <QApplication>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QStyle>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdateutils.h"
#include "LibGui/qt/tvapplicationqt.h"
#include "LibGui/qt/tvnotifydialogqt.h"
#include "LibGui/qt/tvtreewidgetqt.h"

TVNotifyListQt::TVNotifyListQt(QObject* parent) : QObject(parent)
{
    TVNotifyScheme::set_tray_messages(QSystemTrayIcon::isSystemTrayAvailable() &&
                                      QSystemTrayIcon::supportsMessages());
}

TVNotifyListQt::~TVNotifyListQt()
{
    delete m_dialog.data();
}

bool TVNotifyListQt::systray_available() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

int TVNotifyListQt::initialise(TVTreeWidgetQt* tree, QMainWindow* window)
{
    m_tree = tree;
    m_window = window;
    if (m_tree != nullptr) {
        m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(m_tree, &QTreeWidget::itemSelectionChanged, this, &TVNotifyListQt::tree_selection_changed,
                Qt::UniqueConnection);
        connect(m_tree, &QWidget::customContextMenuRequested, this, &TVNotifyListQt::tree_context_menu,
                Qt::UniqueConnection);
    }
    TV_PASS_ON(TVNotifyList::initialise());
    if (systray_available() && m_tray == nullptr) {
        m_tray = new QSystemTrayIcon(this);
        connect(m_tray, &QSystemTrayIcon::activated, this, &TVNotifyListQt::tray_activated);
    }
    return TVErrC_ok;
}

TVNotifyDialogQt* TVNotifyListQt::dialog()
{
    if (m_dialog == nullptr) {
        m_dialog = new TVNotifyDialogQt(m_window);
        m_dialog->set_mainwindow(m_window);
        connect(m_dialog, &TVNotifyDialogQt::go_pressed, this, &TVNotifyListQt::item_selected);
        connect(m_dialog, &TVNotifyDialogQt::options_pressed, this, &TVNotifyListQt::options_requested);
    }
    return m_dialog;
}

void TVNotifyListQt::update()
{
    TVNotifyList::update();
    update_tree();
    while (std::unique_ptr<TVNotifyItem> item = pop_new()) {
        const TVNotifyScheme* scheme = get_scheme_id(item->get_scheme());
        if (scheme != nullptr && scheme->get_prompt())
            dialog()->add(*item);
        report_system_tray(*item);
    }
    while (std::unique_ptr<TVNotifyItem> item = pop_removed())
        if (m_dialog != nullptr)
            m_dialog->remove(*item);
    update_tray();
    m_shownBadge = get_badge_count();
    if (has_tvapplicationqt())
        tvapplicationqt()->display_badge_count(m_shownBadge);
    emit updated();
}

void TVNotifyListQt::update_tree()
{
    if (m_tree == nullptr)
        return;
    const TVIdList selected = m_tree->get_selected_ids();
    const QSignalBlocker blocker(m_tree.data());
    m_tree->clear();
    for (int i = 0; i < get_nitems(); ++i) {
        const TVNotifyItem& item = get_item(i);
        const TVNotifyScheme* scheme = get_scheme_id(item.get_scheme());
        if (scheme == nullptr || !scheme->get_list())
            continue;
        QTreeWidgetItem* row = new QTreeWidgetItem(m_tree.data());
        row->setText(0, QString::fromStdString(item.get_message()));
        row->setToolTip(0, row->text(0));
        if (!scheme->get_icon().empty())
            row->setIcon(0, QIcon(QString::fromStdString(scheme->get_icon())));
        const TVColour& colour = scheme->get_colour();
        if (colour != TVColour())
            row->setForeground(0, QColor(colour.red(), colour.green(), colour.blue(), colour.alpha()));
        TVTreeWidgetQt::set_item_id(*row, item.get_object_id());
    }
    m_tree->set_selected_ids(selected);
}

void TVNotifyListQt::report_system_tray(const TVNotifyItem& item)
{
    if (m_tray == nullptr || !get_usetray())
        return;
    const TVNotifyScheme* scheme = get_scheme_id(item.get_scheme());
    if (scheme == nullptr || !scheme->get_popup())
        return;
    // A dated item is news only once its time has come; its owner adds the
    // item that is due then (a late reminder has a blank date).
    const TVDate& schedule = item.get_schedule();
    if (!schedule.is_blank() && TVDateUtils::unow() < schedule)
        return;
    m_tray->showMessage(QString::fromStdString(tvapplication()->get_title()),
                        QString::fromStdString(item.get_message()), QSystemTrayIcon::Warning);
}

void TVNotifyListQt::clear_system_tray()
{
    if (m_tray != nullptr)
        m_tray->hide();
}

void TVNotifyListQt::update_tray()
{
    if (m_tray == nullptr)
        return;
    std::string text;
    const int state = get_notify_state(text);
    if (state < 0 || !get_usetray()) {
        clear_system_tray();
        return;
    }
    const TVNotifyScheme* scheme = get_scheme_id(state);
    QIcon icon;
    if (scheme != nullptr && !scheme->get_icon().empty())
        icon = QIcon(QString::fromStdString(scheme->get_icon()));
    if (icon.isNull())
        icon = QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
    m_tray->setIcon(icon);
    m_tray->setToolTip(QString::fromStdString(text));
    m_tray->show();
}

void TVNotifyListQt::set_selected(const TVIdList& ids)
{
    if (m_tree != nullptr)
        m_tree->set_selected_ids(ids);
}

void TVNotifyListQt::tree_selection_changed()
{
    if (m_tree == nullptr)
        return;
    const QList<QTreeWidgetItem*> rows = m_tree->selectedItems();
    if (!rows.isEmpty())
        emit item_selected(TVTreeWidgetQt::get_item_id(*rows.first()));
}

void TVNotifyListQt::tree_context_menu(const QPoint& pos)
{
    if (m_tree == nullptr)
        return;
    const QTreeWidgetItem* row = m_tree->itemAt(pos);
    if (row != nullptr)
        emit item_context(TVTreeWidgetQt::get_item_id(*row), m_tree->viewport()->mapToGlobal(pos));
}

void TVNotifyListQt::tray_activated(QSystemTrayIcon::ActivationReason)
{
    if (m_window == nullptr)
        return;
    m_window->showNormal();
    m_window->raise();
    m_window->activateWindow();
}
