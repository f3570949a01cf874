#include "LibGui/qt/tvnotifysettingsqt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "LibCore/error/tverror.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibGui/qt/tvwindowqt.h"

TVNotifySettingsQt::TVNotifySettingsQt(TVNotifyList& list, QWidget* parent)
    : TVSettingsFormQt(parent), m_list(list)
{
    setObjectName("TVNotifySettingsQt");
    setWindowTitle("Notifications");
    m_schemes = new QTreeWidget(this);
    m_schemes->setObjectName("schemeList");
    m_schemes->setColumnCount(2);
    m_schemes->setHeaderLabels({"Notification", "Response"});
    m_schemes->setRootIsDecorated(false);
    m_schemes->setSelectionMode(QAbstractItemView::NoSelection);
    m_schemes->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_tray = new QCheckBox("Show system tray icon", this);
    m_tray->setObjectName("systemTrayCheck");

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_schemes, 1);
    layout->addWidget(m_tray);
}

TVNotifySettingsQt::~TVNotifySettingsQt() = default;

void TVNotifySettingsQt::update_display()
{
    m_schemes->clear();
    for (int i = 0; i < m_list.get_nschemes(); ++i) {
        const TVNotifyScheme* scheme = m_list.get_scheme_no(i);
        QTreeWidgetItem* row = new QTreeWidgetItem(m_schemes);
        row->setText(0, QString::fromStdString(scheme->get_name()));
        if (!scheme->get_icon().empty())
            row->setIcon(0, QIcon(QString::fromStdString(scheme->get_icon())));
        QComboBox* combo = new QComboBox(m_schemes);
        const TVIdString responses = scheme->get_responses();
        TVWindowQt::load_combo(combo, responses, responses.get_id_row(TVId(scheme->get_response(), -1, -1)));
        m_schemes->setItemWidget(row, 1, combo);
    }
    m_tray->setChecked(m_list.get_usetray());
    m_tray->setEnabled(m_list.systray_available());
}

QComboBox* TVNotifySettingsQt::response_combo(int row) const
{
    QTreeWidgetItem* item = m_schemes->topLevelItem(row);
    return item != nullptr ? qobject_cast<QComboBox*>(m_schemes->itemWidget(item, 1)) : nullptr;
}

int TVNotifySettingsQt::read_form() const
{
    for (int i = 0; i < m_list.get_nschemes() && i < m_schemes->topLevelItemCount(); ++i) {
        const QComboBox* combo = response_combo(i);
        const std::string id = TVWindowQt::combo_id(combo);
        if (!id.empty())
            m_list.get_scheme_no(i)->set_response(TVId::from_string(id).get_id());
    }
    m_list.set_usetray(m_tray->isChecked());
    TV_PASS_ON(m_list.write_settings());
    return TVErrC_ok;
}
