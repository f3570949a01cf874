// The preferences page: the folder and single picture fields exclude each
// other, and what Ok stores in the maths file.

#include "AppTarvelloMaths/qt/mathspreferencesqt.h"

#include "AppTarvelloMaths/qt/tests/mathsqttest.h"
#include "LibGui/qt/tvfileselectqt.h"

#include <QDir>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

class MathsPreferencesQtTest : public MathsQtTest
{
protected:
    std::string text(const char* name) const
    {
        return m_page.findChild<QLineEdit*>(name)->text().toStdString();
    }
    void press(const char* name) { QTest::mouseClick(m_page.findChild<QPushButton*>(name), Qt::LeftButton); }

    MathsPreferencesQt m_page;
};

} // namespace

TEST_F(MathsPreferencesQtTest, FolderAndPictureExcludeEachOtherAndEmptyMeansBuiltIn)
{
    const std::string folder = m_dir.path().toStdString() + "/pictures";
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder)));
    const std::string picture = folder + "/cat.png";
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(QString::fromStdString(picture)));

    m_db->set_imagedir(folder);
    m_page.initialise(m_db.get());
    m_page.update_display();
    EXPECT_EQ(text("imageDirField"), folder);
    EXPECT_EQ(text("imageSingleField"), "");

    {
        TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind kind, const std::string& caption,
                                           const std::string& dir, const std::string&) {
            EXPECT_EQ(kind, TVFileSelectQt::E_Open);
            EXPECT_EQ(caption, "Select the image to display.");
            EXPECT_EQ(dir, folder);
            return picture;
        });
        press("imageSingleButton");
    }
    EXPECT_EQ(text("imageDirField"), "");
    EXPECT_EQ(text("imageSingleField"), picture);
    ASSERT_EQ(m_page.read_form(), TVErrC_ok);
    std::string current;
    ASSERT_EQ(m_db->get_current_image(current), TVErrC_ok);
    EXPECT_EQ(m_db->get_imagedir(), picture);
    EXPECT_EQ(current, picture);

    m_page.findChild<QLineEdit*>("imageSingleField")->clear();
    ASSERT_EQ(m_page.read_form(), TVErrC_ok);
    EXPECT_EQ(m_db->get_imagedir(), "");
    ASSERT_EQ(m_db->get_current_image(current), TVErrC_ok);
    EXPECT_EQ(current.rfind(":/TarvelloMathsImages/", 0), 0u) << current;
}
