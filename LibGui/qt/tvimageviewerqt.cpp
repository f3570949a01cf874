#include "LibGui/qt/tvimageviewerqt.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QImageReader>
#include <QPixmap>
#include <algorithm>

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvgraphicssceneqt.h"

TVImageViewerQt::TVImageViewerQt(QWidget* parent) : QObject(parent), m_scene(new TVGraphicsSceneQt(parent, this))
{
    QGraphicsView* view = m_scene->get_view();
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setDragMode(QGraphicsView::ScrollHandDrag);
    view->setTransformationAnchor(QGraphicsView::AnchorViewCenter);
    view->setResizeAnchor(QGraphicsView::AnchorViewCenter);
    view->setRenderHint(QPainter::SmoothPixmapTransform);
    view->setFrameShape(QFrame::NoFrame);
}

TVImageViewerQt::~TVImageViewerQt() = default;

QGraphicsView* TVImageViewerQt::get_view() const
{
    return m_scene->get_view();
}

int TVImageViewerQt::load_image(const std::string& path)
{
    m_scene->clear();
    m_item = nullptr;
    m_path = path;
    m_scene->set_scale(1.0);

    QImageReader reader(QString::fromStdString(path));
    reader.setAutoTransform(true); // camera pictures stand the right way up
    const QImage image = reader.read();
    if (image.isNull())
        return tvwarning(TVErrC_FileOpen, TVLOCATION, "Can't load the image %s: %s", path.c_str(),
                         reader.errorString().toUtf8().constData());
    m_item = m_scene->addPixmap(QPixmap::fromImage(image));
    m_item->setTransformationMode(Qt::SmoothTransformation);
    m_scene->setSceneRect(m_item->boundingRect());
    return TVErrC_ok;
}

QSize TVImageViewerQt::get_image_size() const
{
    return m_item != nullptr ? m_item->pixmap().size() : QSize();
}

QSize TVImageViewerQt::viewport_size() const
{
    const QGraphicsView* view = get_view();
    return view != nullptr ? view->viewport()->size() : QSize();
}

void TVImageViewerQt::zoom_out_all()
{
    const QSize image = get_image_size();
    const QSize view = viewport_size();
    if (image.isEmpty() || view.isEmpty())
        return;
    m_scene->set_scale(std::min(double(view.width()) / image.width(), double(view.height()) / image.height()));
    get_view()->centerOn(m_item);
}

void TVImageViewerQt::fill_view()
{
    const QSize image = get_image_size();
    const QSize view = viewport_size();
    if (image.isEmpty() || view.isEmpty())
        return;
    // Fit first, then zoom by the ratio of the two directions' ratios: the
    // direction that fitted with room to spare now fills as well.
    zoom_out_all();
    const double across = double(image.width()) / view.width();
    const double down = double(image.height()) / view.height();
    m_scene->zoom(std::max(across, down) / std::min(across, down));
    get_view()->centerOn(m_item);
}

void TVImageViewerQt::zoom_in()
{
    m_scene->zoom(TVGraphicsSceneQt::C_ZoomIn);
}

void TVImageViewerQt::zoom_out()
{
    m_scene->zoom(TVGraphicsSceneQt::C_ZoomOut);
}
