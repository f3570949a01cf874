#ifndef TVSWIPEGESTURERECOGNIZER_H
#define TVSWIPEGESTURERECOGNIZER_H

#include <QGestureRecognizer>

// The id under which the swipe recogniser is registered with the toolkit.
struct TVSwipeGesture {
    static Qt::GestureType C_TVSwipeGestureID;
};

// Recognises a one-finger horizontal or vertical swipe from touch events,
// as the toolkit's own swipe needs three fingers.
class TVSwipeGestureRecognizer : public QGestureRecognizer
{
public:
    // Travel, in pixels, that makes a swipe.
    static const int C_MinTravel = 60;

    QGesture* create(QObject* target) override;
    Result recognize(QGesture* gesture, QObject* watched, QEvent* event) override;
    void reset(QGesture* gesture) override;
};

#endif
