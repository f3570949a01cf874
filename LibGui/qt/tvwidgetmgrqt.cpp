#include "LibGui/qt/tvwidgetmgrqt.h"

#include <QDialog>
#include <QEventLoop>
#include <QFrame>
#include <QGridLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "LibGui/qt/tvdialogqt.h"

TVWidgetMgrQt::TVWidgetMgrQt(QWidget* host, QObject* parent)
    : QObject(parent), m_host(host), m_maxColumns(TVWindowQt::is_mobile() ? 1 : 2)
{
    m_layout = new QGridLayout(host);
    m_layout->setContentsMargins(4, 4, 4, 4);
    m_layout->setSpacing(4);
}

TVWidgetMgrQt::~TVWidgetMgrQt()
{
    // Dialogs still open go back to their owners and forget us.
    for (Entry& entry : m_entries) {
        entry.dialog->set_widgetmgr(nullptr);
        release(entry, true);
    }
    m_entries.clear();
}

std::vector<TVWidgetMgrQt::Entry>::iterator TVWidgetMgrQt::find(const TVDialogQt& dialog)
{
    return std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.dialog == &dialog; });
}

std::vector<TVWidgetMgrQt::Entry>::const_iterator TVWidgetMgrQt::find(const TVDialogQt& dialog) const
{
    return std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.dialog == &dialog; });
}

bool TVWidgetMgrQt::contains(const TVDialogQt& dialog) const { return find(dialog) != m_entries.end(); }

std::vector<TVDialogQt*> TVWidgetMgrQt::dialogs() const
{
    std::vector<TVDialogQt*> list;
    for (const Entry& entry : m_entries)
        list.push_back(entry.dialog);
    return list;
}

QFrame* TVWidgetMgrQt::frame_of(const TVDialogQt& dialog) const
{
    const auto it = find(dialog);
    return it == m_entries.end() ? nullptr : it->frame;
}

void TVWidgetMgrQt::set_maxcolumns(int columns)
{
    m_maxColumns = std::max(1, columns);
    rearrange(false);
}

void TVWidgetMgrQt::embed_dialog(TVDialogQt& dialog, bool atFront)
{
    if (contains(dialog) || m_host.isNull())
        return;
    Entry entry;
    entry.dialog = &dialog;
    entry.owner = dialog.parentWidget();
    entry.flags = dialog.windowFlags();
    entry.frame = new QFrame(m_host);
    entry.frame->setFrameShape(QFrame::StyledPanel);
    entry.frame->setObjectName(dialog.objectName() + "Frame");
    auto* inner = new QVBoxLayout(entry.frame);
    inner->setContentsMargins(2, 2, 2, 2);
    dialog.setParent(entry.frame, Qt::Widget);
    inner->addWidget(&dialog);
    if (atFront)
        m_entries.insert(m_entries.begin(), entry);
    else
        m_entries.push_back(entry);
}

void TVWidgetMgrQt::embed(TVDialogQt& dialog, bool atFront, bool show)
{
    embed_dialog(dialog, atFront);
    rearrange(false);
    if (!show)
        return;
    const auto it = find(dialog);
    if (it == m_entries.end())
        return;
    it->frame->show();
    dialog.show();
}

void TVWidgetMgrQt::show_dialog(TVDialogQt& dialog)
{
    embed(dialog, false, true);
    open_finished(dialog);
}

int TVWidgetMgrQt::exec_dialog(TVDialogQt& dialog)
{
    QPointer<TVDialogQt> watch(&dialog);
    int result = QDialog::Rejected;
    QEventLoop loop;
    const auto connection = connect(&dialog, &TVDialogQt::sig_closed, &loop, [&](int value) {
        result = value;
        loop.quit();
    });
    show_dialog(dialog);
    if (contains(dialog))
        loop.exec();
    if (!watch.isNull())
        disconnect(connection);
    return result;
}

void TVWidgetMgrQt::open_finished(TVDialogQt& dialog) { dialog.open_complete(); }

void TVWidgetMgrQt::start_closing(TVDialogQt& dialog)
{
    const auto it = find(dialog);
    if (it != m_entries.end())
        it->closing = true;
}

void TVWidgetMgrQt::dialog_closed(TVDialogQt& dialog)
{
    const auto it = find(dialog);
    if (it == m_entries.end())
        return;
    Entry entry = *it;
    m_entries.erase(it);
    release(entry, true);
    rearrange(false);
}

void TVWidgetMgrQt::forget(TVDialogQt& dialog)
{
    const auto it = find(dialog);
    if (it == m_entries.end())
        return;
    Entry entry = *it;
    m_entries.erase(it);
    release(entry, false);
    rearrange(false);
}

void TVWidgetMgrQt::release(Entry& entry, bool giveBack)
{
    if (giveBack) {
        entry.dialog->hide();
        entry.dialog->setParent(entry.owner.data(), entry.flags);
    }
    // A frame deleted now would take a dialog that is being destroyed with
    // it; deleteLater also lets the dialog's own closing finish first.
    entry.frame->hide();
    entry.frame->deleteLater();
}

void TVWidgetMgrQt::rearrange(bool /*animate*/)
{
    // While the host is being destroyed its dialogs leave one by one.
    if (m_layout.isNull() || m_host.isNull())
        return;
    for (const Entry& entry : m_entries)
        m_layout->removeWidget(entry.frame);
    int place = 0;
    for (const Entry& entry : m_entries) {
        if (entry.closing)
            continue;
        m_layout->addWidget(entry.frame, place / m_maxColumns, place % m_maxColumns);
        ++place;
    }
    // Columns and rows left from a wider or longer arrangement take no room.
    for (int c = 0; c < m_layout->columnCount(); ++c)
        m_layout->setColumnStretch(c, c < std::min(place, m_maxColumns) ? 1 : 0);
    const int rows = (place + m_maxColumns - 1) / m_maxColumns;
    for (int r = 0; r < m_layout->rowCount(); ++r)
        m_layout->setRowStretch(r, r < rows ? 1 : 0);
    m_layout->activate();
}

void TVWidgetMgrQt::close_all()
{
    // Closing changes the list, so walk a copy.
    for (TVDialogQt* dialog : dialogs()) {
        if (contains(*dialog))
            dialog->dialog_done(QDialog::Rejected, true);
    }
}
