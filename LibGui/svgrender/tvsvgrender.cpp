// tvsvgrender: the build's own renderer of the program's artwork.
//
//   tvsvgrender <input.svg> <output.png|.jpg> <width> <height>
//
// Paints the SVG over the whole image and saves it; a ".jpg" gets a white
// ground (JPEG has no alpha) and quality 90. Exits 1 with a message on any
// failure, so that the build stops instead of packing a broken picture.
// Keep text out of the SVGs: glyphs would depend on the fonts installed.

#include <QCoreApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int C_JpegQuality = 90;
constexpr int C_MaxSide = 8192;
// A drawing stretched by more than this would come out visibly distorted.
constexpr double C_AspectTolerance = 0.01;

int fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "tvsvgrender: %s: %s\n", what, detail.toLocal8Bit().constData());
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: tvsvgrender <input.svg> <output.png|.jpg> <width> <height>\n");
        return 2;
    }
    // The artwork holds no text, so no fonts and no platform plugin are
    // needed: this runs on a build machine without a display, leak-free.
    QCoreApplication app(argc, argv);

    const QString input = QString::fromLocal8Bit(argv[1]);
    const QString output = QString::fromLocal8Bit(argv[2]);
    const int width = std::atoi(argv[3]);
    const int height = std::atoi(argv[4]);
    if (width < 1 || height < 1 || width > C_MaxSide || height > C_MaxSide)
        return fail("bad size", QString("%1 x %2").arg(argv[3], argv[4]));

    QSvgRenderer renderer(input);
    if (!renderer.isValid())
        return fail("cannot read", input);
    const QRectF box = renderer.viewBoxF();
    if (box.width() <= 0 || box.height() <= 0)
        return fail("no view box", input);
    const double stretch = (box.width() / box.height()) / (double(width) / height);
    if (std::fabs(stretch - 1.0) > C_AspectTolerance)
        return fail("view box and size differ in shape", input);

    const bool jpeg = output.endsWith(".jpg", Qt::CaseInsensitive);
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(jpeg ? Qt::white : Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        renderer.render(&painter, QRectF(0, 0, width, height));
    }

    QImageWriter writer(output);
    if (jpeg) {
        image = image.convertToFormat(QImage::Format_RGB32);
        writer.setQuality(C_JpegQuality);
    }
    if (!writer.write(image))
        return fail("cannot write", output + ": " + writer.errorString());
    return 0;
}
