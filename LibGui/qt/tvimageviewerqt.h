#ifndef TVIMAGEVIEWERQT_H
#define TVIMAGEVIEWERQT_H

// TVImageViewerQt: one picture in a graphics view, zoomed and dragged
// about with the hand, without scroll bars, as a window's background or a
// plain viewer. The view sits in the parent widget given; place it with
// get_view()->setGeometry or a layout. The viewer is a child of parent and
// goes with it, unless its owner deletes it first (a window's member).

#include <QObject>
#include <QSize>
#include <string>

class QGraphicsPixmapItem;
class QGraphicsView;
class QWidget;
class TVGraphicsSceneQt;

class TVImageViewerQt : public QObject
{
    Q_OBJECT

public:
    explicit TVImageViewerQt(QWidget* parent);
    ~TVImageViewerQt() override;
    TVImageViewerQt(const TVImageViewerQt&) = delete;
    TVImageViewerQt& operator=(const TVImageViewerQt&) = delete;

    // Shows the image of a file or a ":/" resource, at scale 1. A picture
    // that can't be read gives the warning TVErrC_FileOpen and leaves the
    // view empty.
    [[nodiscard]] int load_image(const std::string& path);
    const std::string& get_path() const { return m_path; }
    // The image's size in pixels; empty with no image.
    QSize get_image_size() const;

    // The largest scale that shows the whole image, centred.
    void zoom_out_all();
    // The smallest scale that covers the whole view, centred: no bare edge.
    void fill_view();
    void zoom_in();
    void zoom_out();

    TVGraphicsSceneQt& get_scene() const { return *m_scene; }
    QGraphicsView* get_view() const;

private:
    // The view's inside, where the picture shows.
    QSize viewport_size() const;

    TVGraphicsSceneQt* m_scene;
    QGraphicsPixmapItem* m_item = nullptr;
    std::string m_path;
};

#endif // TVIMAGEVIEWERQT_H
