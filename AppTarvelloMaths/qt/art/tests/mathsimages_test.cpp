#include "AppTarvelloMaths/qt/art/mathsimages.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>

#include <string>
#include <vector>

#include "AppTarvelloMaths/main/appmaths.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "LibGui/images/tvguiimages.h"

namespace {

class ResourcesTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        tv_init_gui_images();
        maths_init_images();
    }

    static QImage load(const std::string& path)
    {
        QImage image(QString::fromStdString(path));
        EXPECT_FALSE(image.isNull()) << path;
        return image;
    }

    // Share of sampled pixels with clear colour: a grey or blank stand-in
    // scores near nothing, a painted scene well above a third.
    static double colourful_share(const QImage& image)
    {
        int coloured = 0, total = 0;
        for (int y = 5; y < image.height(); y += 20)
            for (int x = 5; x < image.width(); x += 20, ++total)
                coloured += image.pixelColor(x, y).hsvSaturation() > 50 ? 1 : 0;
        return total == 0 ? 0.0 : double(coloured) / total;
    }
};

TEST_F(ResourcesTest, BackgroundPicturesFillAWindowAndAreAllDifferent)
{
    QSet<QByteArray> seen;
    for (const char* path : MathsDB::C_BuiltinImages) {
        const QImage image = load(path);
        EXPECT_GE(image.width(), 1200) << path;
        EXPECT_GT(image.width(), image.height()) << path;
        EXPECT_GT(colourful_share(image), 0.35) << path;
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path;
        seen.insert(file.readAll());
    }
    EXPECT_EQ(seen.size(), MathsDB::C_NBuiltinImages);
}

TEST_F(ResourcesTest, IconsLoadAtTheirSizeOnAClearGround)
{
    struct Icon
    {
        std::string path;
        int side;
    };
    const std::vector<Icon> icons = {
        {":/TarvelloMathsImages/images/16/Tick.png", 16},
        {":/TarvelloMathsImages/images/16/Cross.png", 16},
        {":/TarvelloMathsImages/images/16/Runner.png", 16},
        {":/TarvelloMathsImages/images/16/Undo.png", 16},
        {":/TarvelloMathsImages/images/32/SetExercise.png", 32},
        {":/TarvelloMathsImages/images/32/ZoomIn.png", 32},
        {":/TarvelloMathsImages/images/32/ZoomOut.png", 32},
        {":/TarvelloMathsImages/images/32/ZoomAll.png", 32},
        {":/TarvelloMathsImages/images/original/Finished.png", 80},
        {":/TarvelloMathsImages/images/original/TarvelloMaths.png", 256},
        {":/TarvelloMathsImages/images/128/TarvelloMaths.png", 128},
        // The identity writes its logo with three slashes.
        {AppMaths::identity().m_logo, 128},
        {":/LibGui/images/32/Menu.png", 32},
        {":/LibGui/images/32/Clock.png", 32},
        {":/LibGui/images/32/Warning.png", 32},
        {":/LibGui/images/32/CloudOK.png", 32},
        {":/LibGui/images/32/CloudPush.png", 32},
        {":/LibGui/images/32/CloudUp.png", 32},
        {":/LibGui/images/32/CloudDown.png", 32},
        {":/LibGui/images/32/CloudInit.png", 32},
        {":/LibGui/images/32/CloudOff.png", 32},
    };
    for (const Icon& icon : icons) {
        const QImage image = load(icon.path);
        EXPECT_EQ(image.size(), QSize(icon.side, icon.side)) << icon.path;
        EXPECT_TRUE(image.hasAlphaChannel()) << icon.path;
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0) << icon.path;
        int drawn = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                drawn += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
        EXPECT_GT(drawn, image.width() * image.height() / 12) << icon.path;
    }
}

// As the help viewer shows them: by a qrc: address, so that links between
// pages resolve, with each picture fetched through the browser.
TEST_F(ResourcesTest, HelpPagesShowTheirTitleAndEveryPictureAndLinkResolves)
{
    const std::vector<std::pair<QString, QString>> pages = {
        {"TarvelloMaths.html", "Tarvello Maths"},
        {"Running.html", "Running an exercise"},
        {"SetExercise.html", "Setting up exercises"},
        {"Preferences.html", "Preferences"},
        {"maths_welcome.html", "Welcome to Tarvello Maths"},
        {"guide_exercise_list.html", "Your first exercise"},
    };
    const QRegularExpression image("<img src=\"([^\"]+)\"");
    const QRegularExpression link("<a href=\"([^\"]+)\"");
    for (const auto& [name, title] : pages) {
        const std::string page = name.toStdString();
        QFile file(":/TarvelloMathsHelp/" + name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << page;
        const QString html = QString::fromUtf8(file.readAll());

        QTextBrowser browser;
        browser.setSource(QUrl("qrc:/TarvelloMathsHelp/" + name));
        EXPECT_EQ(browser.documentTitle(), title) << page;
        EXPECT_TRUE(browser.toPlainText().startsWith(title)) << page;
        for (auto it = image.globalMatch(html); it.hasNext();) {
            const QString src = it.next().captured(1);
            EXPECT_FALSE(browser.loadResource(QTextDocument::ImageResource, QUrl(src)).isNull())
                << page << ": " << src.toStdString();
        }
        for (auto it = link.globalMatch(html); it.hasNext();) {
            const QString target = it.next().captured(1);
            EXPECT_TRUE(QFile::exists(":/TarvelloMathsHelp/" + target)) << page << ": " << target.toStdString();
        }
    }
}

} // namespace
