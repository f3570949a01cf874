#include "LibGui/qt/tvswipegesturerecognizer.h"

#include <QSwipeGesture>
#include <QTouchEvent>
#include <QWidget>
#include <cmath>

Qt::GestureType TVSwipeGesture::C_TVSwipeGestureID = Qt::CustomGesture;

namespace {
const char* const C_StartX = "tvSwipeStartX";
const char* const C_StartY = "tvSwipeStartY";
} // namespace

QGesture* TVSwipeGestureRecognizer::create(QObject* target)
{
    if (auto* widget = qobject_cast<QWidget*>(target))
        widget->setAttribute(Qt::WA_AcceptTouchEvents);
    return new QSwipeGesture;
}

QGestureRecognizer::Result TVSwipeGestureRecognizer::recognize(QGesture* gesture, QObject* /*watched*/,
                                                               QEvent* event)
{
    auto* swipe = static_cast<QSwipeGesture*>(gesture);
    switch (event->type()) {
    case QEvent::TouchBegin: {
        const auto* touch = static_cast<QTouchEvent*>(event);
        if (touch->touchPoints().size() != 1)
            return Ignore;
        const QPointF start = touch->touchPoints().first().screenPos();
        swipe->setProperty(C_StartX, start.x());
        swipe->setProperty(C_StartY, start.y());
        swipe->setHotSpot(start);
        return MayBeGesture;
    }
    case QEvent::TouchUpdate:
        return MayBeGesture;
    case QEvent::TouchEnd: {
        const auto* touch = static_cast<QTouchEvent*>(event);
        if (touch->touchPoints().isEmpty() || !swipe->property(C_StartX).isValid())
            return CancelGesture;
        const QPointF end = touch->touchPoints().first().screenPos();
        const double dx = end.x() - swipe->property(C_StartX).toDouble();
        const double dy = end.y() - swipe->property(C_StartY).toDouble();
        if (std::hypot(dx, dy) < C_MinTravel)
            return CancelGesture;
        // The toolkit derives left/right and up/down from the angle, counted
        // anticlockwise from the right with screen y pointing down.
        double angle = std::atan2(-dy, dx) * 180.0 / M_PI;
        if (angle < 0)
            angle += 360.0;
        swipe->setSwipeAngle(angle);
        return FinishGesture;
    }
    default:
        return Ignore;
    }
}

void TVSwipeGestureRecognizer::reset(QGesture* gesture)
{
    gesture->setProperty(C_StartX, QVariant());
    gesture->setProperty(C_StartY, QVariant());
    QGestureRecognizer::reset(gesture);
}
