#include "LibGui/qt/tvwidgetqt.h"

#include <QEvent>

TVWidgetQt::TVWidgetQt(QWidget* parent) : QWidget(parent) {}

TVWidgetQt::~TVWidgetQt()
{
    if (m_covered != nullptr)
        m_covered->removeEventFilter(this);
}

void TVWidgetQt::cover_window(QWidget* window)
{
    if (window == nullptr && parentWidget() != nullptr)
        window = parentWidget()->window();
    if (window == nullptr)
        return;
    if (m_covered != nullptr)
        m_covered->removeEventFilter(this);
    m_covered = window;
    if (parentWidget() != window)
        setParent(window);
    // Style sheets reach a plain QWidget's background only with this.
    setAttribute(Qt::WA_StyledBackground, true);
    setGeometry(window->rect());
    window->installEventFilter(this);
    raise();
    show();
}

bool TVWidgetQt::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_covered && event->type() == QEvent::Resize)
        setGeometry(m_covered->rect());
    return QWidget::eventFilter(watched, event);
}
