#include "LibGui/qt/tvtreewidgetqt.h"

#include <QLine>
#include <QSignalBlocker>
#include <QTreeWidgetItemIterator>

TVTreeWidgetQt::TVTreeWidgetQt(QWidget* parent) : QTreeWidget(parent)
{
}

void TVTreeWidgetQt::set_item_id(QTreeWidgetItem& item, const TVId& id)
{
    item.setData(0, Qt::UserRole, id.to_qline());
}

TVId TVTreeWidgetQt::get_item_id(const QTreeWidgetItem& item)
{
    const QVariant data = item.data(0, Qt::UserRole);
    if (!data.canConvert<QLine>())
        return TVId::C_Empty;
    TVId id;
    id.from_qline(data.toLine());
    return id;
}

QTreeWidgetItem* TVTreeWidgetQt::find_id(const TVId& id) const
{
    for (QTreeWidgetItemIterator it(const_cast<TVTreeWidgetQt*>(this)); *it != nullptr; ++it)
        if (get_item_id(**it) == id)
            return *it;
    return nullptr;
}

TVIdList TVTreeWidgetQt::get_selected_ids() const
{
    TVIdList ids;
    for (const QTreeWidgetItem* item : selectedItems())
        ids.add(get_item_id(*item));
    return ids;
}

void TVTreeWidgetQt::set_selected_ids(const TVIdList& ids)
{
    const QSignalBlocker blocker(this);
    clearSelection();
    for (QTreeWidgetItemIterator it(this); *it != nullptr; ++it)
        if (ids.is_marked(get_item_id(**it)))
            (*it)->setSelected(true);
}
