#ifndef TVWIDGETQT_H
#define TVWIDGETQT_H

// TVWidgetQt: a plain widget with the window statics, for the flows that
// lie over the whole of their window while they work (loading, closing).

#include <QPointer>
#include <QWidget>

#include "LibGui/qt/tvwindowqt.h"

class TVWidgetQt : public QWidget, public TVWindowQt
{
    Q_OBJECT

public:
    explicit TVWidgetQt(QWidget* parent = nullptr);
    ~TVWidgetQt() override;
    TVWidgetQt(const TVWidgetQt&) = delete;
    TVWidgetQt& operator=(const TVWidgetQt&) = delete;

    // Lies over the whole of window (the parent's window if null), on top,
    // and keeps doing so as the window is resized.
    void cover_window(QWidget* window = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> m_covered;
};

#endif
