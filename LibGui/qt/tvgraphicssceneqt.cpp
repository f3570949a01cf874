#include "LibGui/qt/tvgraphicssceneqt.h"

#include <QGraphicsView>

TVGraphicsSceneQt::TVGraphicsSceneQt(QWidget* viewParent, QObject* parent)
    : QGraphicsScene(parent), m_view(new QGraphicsView(this, viewParent)), m_ownsView(viewParent == nullptr)
{
}

TVGraphicsSceneQt::~TVGraphicsSceneQt()
{
    if (m_view == nullptr)
        return;
    if (m_ownsView)
        delete m_view.data();
    else
        m_view->setScene(nullptr); // the view outlives us in its parent
}

void TVGraphicsSceneQt::zoom(double factor)
{
    if (m_view != nullptr && factor > 0.0)
        m_view->scale(factor, factor);
}

void TVGraphicsSceneQt::set_scale(double scale)
{
    if (m_view != nullptr && scale > 0.0)
        m_view->setTransform(QTransform::fromScale(scale, scale));
}

double TVGraphicsSceneQt::get_scale() const
{
    return m_view != nullptr ? m_view->transform().m11() : 1.0;
}
