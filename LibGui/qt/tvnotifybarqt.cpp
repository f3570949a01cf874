#include "LibGui/qt/tvnotifybarqt.h"

#include <QEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "LibGui/qt/tvnotifylistqt.h"
#include "LibGui/qt/tvtreewidgetqt.h"

namespace {
const char* const C_WarningIcon = ":/LibGui/images/32/Warning.png";
}

TVNotifyBarQt::TVNotifyBarQt(QWidget* parent) : QFrame(parent)
{
    setObjectName("notifyBar");
    setFrameShape(QFrame::StyledPanel);
    m_icon = new QLabel(this);
    m_icon->setObjectName("warningIcon");
    set_icon("");
    m_message = new QLabel(this);
    m_message->setObjectName("notificationMessage");
    m_message->setWordWrap(true);
    m_message->setCursor(Qt::PointingHandCursor);
    m_message->installEventFilter(this);
    m_expand = new QToolButton(this);
    m_expand->setObjectName("expandButton");
    m_expand->setArrowType(Qt::DownArrow);
    m_expand->setToolTip("Show all notifications.");
    m_close = new QToolButton(this);
    m_close->setObjectName("closeButton");
    m_close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    m_close->setToolTip("Put the notifications away until something changes.");
    m_tree = new TVTreeWidgetQt(this);
    m_tree->setObjectName("notifyTree");
    m_tree->setHeaderHidden(true);
    m_tree->setRootIsDecorated(false);
    m_tree->setColumnCount(1);
    m_tree->hide();

    connect(m_expand, &QToolButton::clicked, this, &TVNotifyBarQt::expand_pressed);
    connect(m_close, &QToolButton::clicked, this, &TVNotifyBarQt::close_pressed);

    QHBoxLayout* strip = new QHBoxLayout;
    strip->addWidget(m_icon, 0, Qt::AlignTop);
    strip->addWidget(m_message, 1);
    strip->addWidget(m_expand, 0, Qt::AlignTop);
    strip->addWidget(m_close, 0, Qt::AlignTop);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(strip);
    layout->addWidget(m_tree);
    hide();
}

TVNotifyBarQt::~TVNotifyBarQt() = default;

void TVNotifyBarQt::set_notify_list(TVNotifyListQt* list)
{
    if (m_list != nullptr)
        disconnect(m_list, nullptr, this, nullptr);
    m_list = list;
    if (m_list != nullptr) {
        connect(m_list, &TVNotifyListQt::updated, this, &TVNotifyBarQt::update_display);
        connect(m_list, &TVNotifyListQt::item_selected, this, &TVNotifyBarQt::item_selected);
    }
    update_display();
}

void TVNotifyBarQt::update_display()
{
    std::string text;
    const int state = m_list != nullptr ? m_list->get_notify_state(text) : -1;
    if (state < 0 || text == m_dismissed) {
        if (state < 0)
            m_dismissed.clear();
        hide();
        return;
    }
    m_dismissed.clear();
    m_message->setText(QString::fromStdString(text));
    const TVNotifyScheme* scheme = m_list->get_scheme_id(state);
    set_icon(scheme != nullptr ? scheme->get_icon() : std::string());
    show();
}

// The leading scheme's own icon (a reminder's clock), else the warning sign.
void TVNotifyBarQt::set_icon(const std::string& path)
{
    QIcon icon;
    if (!path.empty() && QFile::exists(QString::fromStdString(path)))
        icon = QIcon(QString::fromStdString(path));
    else if (QFile::exists(C_WarningIcon))
        icon = QIcon(C_WarningIcon);
    else
        icon = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    m_icon->setPixmap(icon.pixmap(24, 24));
}

void TVNotifyBarQt::clear_selection()
{
    m_tree->clearSelection();
}

bool TVNotifyBarQt::is_expanded() const
{
    return !m_tree->isHidden();
}

void TVNotifyBarQt::expand_pressed()
{
    const bool expand = !is_expanded();
    m_tree->setVisible(expand);
    m_expand->setArrowType(expand ? Qt::UpArrow : Qt::DownArrow);
}

void TVNotifyBarQt::close_pressed()
{
    m_dismissed = m_message->text().toStdString();
    hide();
}

void TVNotifyBarQt::item_selected(const TVId& id)
{
    TVIdList ids;
    ids.add(id);
    emit sig_selected(ids);
}

bool TVNotifyBarQt::eventFilter(QObject* watched, QEvent* event)
{
    // The message is that of the first item at the highest scheme:
    // clicking it selects that one.
    if (watched == m_message && event->type() == QEvent::MouseButtonRelease && m_list != nullptr) {
        std::string text;
        const int state = m_list->get_notify_state(text);
        for (int i = 0; i < m_list->get_nitems(); ++i)
            if (m_list->get_item(i).get_scheme() == state) {
                TVIdList ids;
                ids.add(m_list->get_item(i).get_object_id());
                emit sig_selected(ids);
                return true;
            }
    }
    return QFrame::eventFilter(watched, event);
}
