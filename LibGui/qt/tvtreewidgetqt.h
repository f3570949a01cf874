#ifndef TVTREEWIDGETQT_H
#define TVTREEWIDGETQT_H

// TVTreeWidgetQt: a tree whose rows stand for objects. Each row carries its
// object's TVId as Qt::UserRole data of column 0 (as TVId::to_qline), so a
// selection reads back as ids and survives a rebuild of the rows.

#include <QTreeWidget>

#include "LibObject/core/tvid.h"
#include "LibObject/core/tvidlist.h"

class TVTreeWidgetQt : public QTreeWidget
{
    Q_OBJECT

public:
    explicit TVTreeWidgetQt(QWidget* parent = nullptr);

    static void set_item_id(QTreeWidgetItem& item, const TVId& id);
    // TVId::C_Empty for a row without one.
    static TVId get_item_id(const QTreeWidgetItem& item);

    // The first row, at any depth, of that id; null if none.
    QTreeWidgetItem* find_id(const TVId& id) const;
    TVIdList get_selected_ids() const;
    // Selects exactly the rows of these ids, without signals.
    void set_selected_ids(const TVIdList& ids);
};

#endif // TVTREEWIDGETQT_H
