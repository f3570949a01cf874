#include "LibGui/qt/tvimageviewerqt.h"

#include <gtest/gtest.h>

#include <QGraphicsView>
#include <QImage>
#include <QTemporaryDir>
#include <QWidget>
#include <cmath>

#include "LibGui/qt/tvgraphicssceneqt.h"
#include "TestSupport/tvraise.h"

namespace {

class ImageViewerTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
        m_host.resize(300, 300);
        m_viewer.get_view()->setGeometry(0, 0, 200, 100);
        m_host.show();
    }

    // A picture of width by height in a scratch file.
    std::string picture(int width, int height)
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::green);
        const QString path = m_dir.filePath("picture.png");
        EXPECT_TRUE(image.save(path));
        return path.toStdString();
    }

    // The image's corners as the view shows them.
    QRect shown() const
    {
        const QGraphicsView* view = m_viewer.get_view();
        return view->mapFromScene(view->sceneRect()).boundingRect();
    }

    QTemporaryDir m_dir;
    QWidget m_host;
    TVImageViewerQt m_viewer{&m_host};
};

TEST_F(ImageViewerTest, ZoomOutAllShowsTheWholeImageAndFillCoversTheView)
{
    ASSERT_EQ(m_viewer.load_image(picture(800, 200)), TVErrC_ok);
    EXPECT_EQ(m_viewer.get_image_size(), QSize(800, 200));
    const QRect viewport = m_viewer.get_view()->viewport()->rect();
    ASSERT_EQ(viewport.size(), QSize(200, 100));

    // Wide image, taller view: the width decides.
    m_viewer.zoom_out_all();
    EXPECT_DOUBLE_EQ(m_viewer.get_scene().get_scale(), 0.25);
    EXPECT_TRUE(viewport.adjusted(-1, -1, 1, 1).contains(shown())) << shown().x() << "," << shown().y();
    EXPECT_NEAR(shown().width(), 200, 1);

    // Filling: the height decides, and the sides run off.
    m_viewer.fill_view();
    EXPECT_DOUBLE_EQ(m_viewer.get_scene().get_scale(), 0.5);
    EXPECT_TRUE(shown().adjusted(-1, -1, 1, 1).contains(viewport));

    m_viewer.zoom_in();
    EXPECT_DOUBLE_EQ(m_viewer.get_scene().get_scale(), 0.6);
    m_viewer.zoom_out_all();
    EXPECT_DOUBLE_EQ(m_viewer.get_scene().get_scale(), 0.25);
}

TEST_F(ImageViewerTest, ResourcesLoadAndAFailedLoadLeavesTheViewEmpty)
{
    ASSERT_EQ(m_viewer.load_image(":/tvguiqt_tests/stripes.xpm"), TVErrC_ok);
    EXPECT_EQ(m_viewer.get_image_size(), QSize(8, 4));

    int result = TVErrC_ok;
    const TVRaised raised = tv_catch_raise([&] { result = m_viewer.load_image(m_dir.filePath("none.png").toStdString()); });
    EXPECT_FALSE(raised.thrown);
    EXPECT_EQ(result % 100000, TVErrC_FileOpen);
    EXPECT_TRUE(m_viewer.get_image_size().isEmpty());
    m_viewer.zoom_out_all(); // nothing to fit: no harm
    m_viewer.fill_view();
}

} // namespace
