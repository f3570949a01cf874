#include "LibGui/qt/tvsettingsqt.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvhelpqt.h"
#include "LibGui/qt/tvsettingsformqt.h"

TVSettingsQt::TVSettingsQt(QWidget* parent) : TVDialogQt(parent)
{
    setObjectName("TVSettingsQt");
    setWindowTitle("Settings");
    m_list = new QListWidget(this);
    m_list->setObjectName("pageList");
    m_list->setIconSize(QSize(32, 32));
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_stack = new QStackedWidget(this);
    m_stack->setObjectName("pageStack");
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help, this);
    m_buttons->setObjectName("buttonBox");
    connect(m_buttons, &QDialogButtonBox::accepted, this, &TVSettingsQt::ok_pressed);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &TVSettingsQt::cancel_pressed);
    connect(m_buttons, &QDialogButtonBox::helpRequested, this, &TVSettingsQt::help_pressed);
    connect(m_list, &QListWidget::currentRowChanged, m_stack, &QStackedWidget::setCurrentIndex);

    QHBoxLayout* pages = new QHBoxLayout;
    pages->addWidget(m_list);
    pages->addWidget(m_stack, 1);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(pages, 1);
    layout->addWidget(m_buttons);
    resize(720, 480);
    set_delete_close(true);
}

TVSettingsQt::~TVSettingsQt() = default;

void TVSettingsQt::add_form(TVSettingsFormQt* form, const std::string& icon)
{
    if (form == nullptr)
        return;
    m_forms.push_back(form);
    m_stack->addWidget(form);
    QListWidgetItem* item = new QListWidgetItem(QString::fromStdString(form->get_title()), m_list);
    if (!icon.empty())
        item->setIcon(QIcon(QString::fromStdString(icon)));
    // Every title whole: icon, gap and text, with room for a scroll bar.
    int wanted = 160;
    for (int i = 0; i < m_list->count(); ++i)
        wanted = std::max(wanted, m_list->iconSize().width() +
                                      m_list->fontMetrics().horizontalAdvance(m_list->item(i)->text()) + 48);
    m_list->setFixedWidth(wanted);
    if (m_forms.size() == 1)
        m_list->setCurrentRow(0);
}

TVSettingsFormQt* TVSettingsQt::get_form(int index) const
{
    if (index < 0 || index >= get_nforms())
        return nullptr;
    return m_forms[static_cast<size_t>(index)];
}

void TVSettingsQt::select_form(int index)
{
    if (index >= 0 && index < get_nforms())
        m_list->setCurrentRow(index);
}

void TVSettingsQt::update_display()
{
    for (TVSettingsFormQt* form : m_forms)
        form->update_display();
}

void TVSettingsQt::start()
{
    update_display();
    show_dialog();
}

void TVSettingsQt::ok_pressed()
{
    int value = TVErrC_ok;
    try {
        for (size_t i = 0; i < m_forms.size(); ++i) {
            value = m_forms[i]->read_form();
            if (istvwarn(value)) {
                select_form(static_cast<int>(i));
                tvsysinfo_append(TVLOCATION, "");
                break;
            }
        }
    } catch (const TVErrDetails&) {
        value = tverrorvalue();
        tvsysinfo_append(TVLOCATION, "");
    }
    if (istvwarn(value)) {
        tvhandle_error(value, TVSevWarning);
        return;
    }
    emit settings_changed();
    dialog_done(QDialog::Accepted, false);
}

void TVSettingsQt::cancel_pressed()
{
    dialog_done(QDialog::Rejected, false);
}

void TVSettingsQt::help_pressed()
{
    TVHelpQt::show_manual(this);
}
