#include "LibGui/qt/tvlineeditqt.h"

#include <QFocusEvent>
#include <QTimer>

TVLineEditQt::TVLineEditQt(QWidget* parent) : QLineEdit(parent) {}

TVLineEditQt::~TVLineEditQt() = default;

void TVLineEditQt::set_string(const std::string& text, bool quiet)
{
    const bool was = quiet ? blockSignals(true) : signalsBlocked();
    setText(QString::fromStdString(text));
    blockSignals(was);
}

void TVLineEditQt::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    // A mouse press after focusing would drop a selection made now.
    if (m_selectOnFocus)
        QTimer::singleShot(0, this, &QLineEdit::selectAll);
    emit sig_focus_in();
}

void TVLineEditQt::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    emit sig_focus_out();
}
