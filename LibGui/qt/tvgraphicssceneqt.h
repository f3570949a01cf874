#ifndef TVGRAPHICSSCENEQT_H
#define TVGRAPHICSSCENEQT_H

// TVGraphicsSceneQt: a scene together with the one view that shows it, so
// that a window can zoom "the picture" without knowing which of the two
// holds the scale. The view is made in the given parent widget, which
// owns it as usual; with no parent the scene owns it.

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QPointer>

class TVGraphicsSceneQt : public QGraphicsScene
{
    Q_OBJECT

public:
    // The view's steps for zooming in and out; they undo each other only
    // roughly, as the buttons always have.
    static constexpr double C_ZoomIn = 1.2;
    static constexpr double C_ZoomOut = 0.8;

    explicit TVGraphicsSceneQt(QWidget* viewParent, QObject* parent = nullptr);
    ~TVGraphicsSceneQt() override;
    TVGraphicsSceneQt(const TVGraphicsSceneQt&) = delete;
    TVGraphicsSceneQt& operator=(const TVGraphicsSceneQt&) = delete;

    // Null once the parent widget has deleted the view.
    QGraphicsView* get_view() const { return m_view; }

    // Multiplies the view's scale by factor (> 0; others are ignored).
    void zoom(double factor);
    // Sets the view's scale outright.
    void set_scale(double scale);
    // The view's present horizontal scale, 1 if there is no view.
    double get_scale() const;

private:
    QPointer<QGraphicsView> m_view;
    bool m_ownsView;
};

#endif // TVGRAPHICSSCENEQT_H
