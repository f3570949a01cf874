#include "LibGui/qt/tvnotifydialogqt.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "LibCore/application/tvapplication.h"

TVNotifyDialogQt::TVNotifyDialogQt(QWidget* parent) : TVDialogQt(parent)
{
    setObjectName("TVNotifyDialogQt");
    setWindowTitle(QString::fromStdString(tvapplication()->get_title()));
    QLabel* icon = new QLabel(this);
    icon->setObjectName("warningIcon");
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(32, 32));
    m_message = new QLabel(this);
    m_message->setObjectName("messageLabel");
    m_message->setWordWrap(true);
    m_message->setMinimumWidth(280);
    m_count = new QLabel(this);
    m_count->setObjectName("countLabel");

    const auto button = [this](const char* name, const char* text) {
        QPushButton* b = new QPushButton(text, this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton* closeButton = button("closeButton", "Close");
    QPushButton* closeAllButton = button("closeAllButton", "Close All");
    QPushButton* goButton = button("goButton", "Go");
    QPushButton* optionsButton = button("optionsButton", "Options");
    goButton->setDefault(true);
    connect(closeButton, &QPushButton::clicked, this, &TVNotifyDialogQt::close_single);
    connect(closeAllButton, &QPushButton::clicked, this, &TVNotifyDialogQt::close_all);
    connect(goButton, &QPushButton::clicked, this, &TVNotifyDialogQt::go);
    connect(optionsButton, &QPushButton::clicked, this, &TVNotifyDialogQt::options_pressed);

    QHBoxLayout* top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addWidget(m_message, 1);
    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(optionsButton);
    buttons->addWidget(m_count);
    buttons->addStretch(1);
    buttons->addWidget(closeAllButton);
    buttons->addWidget(closeButton);
    buttons->addWidget(goButton);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);
}

TVNotifyDialogQt::~TVNotifyDialogQt() = default;

void TVNotifyDialogQt::add(const TVNotifyItem& item)
{
    if (std::find(m_items.begin(), m_items.end(), item) == m_items.end())
        m_items.push_back(item);
    update_state();
}

void TVNotifyDialogQt::remove(const TVNotifyItem& item)
{
    m_items.erase(std::remove(m_items.begin(), m_items.end(), item), m_items.end());
    update_state();
}

void TVNotifyDialogQt::update_state()
{
    if (m_items.empty()) {
        hide();
        return;
    }
    m_message->setText(QString::fromStdString(m_items.front().get_message()));
    m_count->setText(m_items.size() > 1 ? QString("1 of %1").arg(m_items.size()) : QString());
    if (!isVisible())
        show_dialog();
}

void TVNotifyDialogQt::close_single()
{
    if (!m_items.empty())
        m_items.erase(m_items.begin());
    update_state();
}

void TVNotifyDialogQt::close_all()
{
    m_items.clear();
    update_state();
}

void TVNotifyDialogQt::go()
{
    if (m_items.empty())
        return;
    const TVId id = m_items.front().get_object_id();
    close_single();
    if (m_mainWindow != nullptr) {
        m_mainWindow->showNormal();
        m_mainWindow->raise();
        m_mainWindow->activateWindow();
    }
    emit go_pressed(id);
}

void TVNotifyDialogQt::reject()
{
    close_all();
}
