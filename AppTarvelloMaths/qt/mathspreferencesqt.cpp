#include "AppTarvelloMaths/qt/mathspreferencesqt.h"

#include "AppTarvelloMaths/maths/mathsdb.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibGui/qt/tvfileselectqt.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <ostream>

MathsPreferencesQt::MathsPreferencesQt(QWidget* parent) : TVSettingsFormQt(parent)
{
    setObjectName("PreferencesQt");
    setWindowTitle("Tarvello Maths Preferences");

    m_dirLabel = new QLabel("Image folder", this);
    m_dirLabel->setObjectName("imageDirLabel");
    m_dirLabel->setToolTip("Display images in the main window from this directory.");
    m_dirLabel->setWhatsThis(
        "The main window will cycle through images in this directory when exercises are completed.");
    m_dirField = new QLineEdit(this);
    m_dirField->setObjectName("imageDirField");
    m_dirButton = new QPushButton("Browse", this);
    m_dirButton->setObjectName("imageDirButton");
    m_dirButton->setToolTip("Select the image directory.");

    m_singleLabel = new QLabel("Single image", this);
    m_singleLabel->setObjectName("imageSingleLabel");
    m_singleLabel->setToolTip("Display this single image on the main window. ");
    m_singleLabel->setWhatsThis("The main window will show this image as its permanent background.");
    m_singleField = new QLineEdit(this);
    m_singleField->setObjectName("imageSingleField");
    m_singleButton = new QPushButton("Browse", this);
    m_singleButton->setObjectName("imageSingleButton");
    m_singleButton->setToolTip("Select the image to display.");

    // The page says in words what the two fields do: a parent opens it
    // rarely and shouldn't have to hover to find out.
    auto* intro = new QLabel(
        "Each finished exercise brings a new picture behind the session list. "
        "Choose a folder of your own pictures to cycle through, or one picture to keep, "
        "or leave both empty for the animals that come with the program.",
        this);
    intro->setWordWrap(true);

    auto* layout = new QGridLayout(this);
    layout->addWidget(intro, 0, 0, 1, 3);
    layout->addWidget(m_dirLabel, 1, 0);
    layout->addWidget(m_dirField, 1, 1);
    layout->addWidget(m_dirButton, 1, 2);
    layout->addWidget(m_singleLabel, 2, 0);
    layout->addWidget(m_singleField, 2, 1);
    layout->addWidget(m_singleButton, 2, 2);
    layout->setRowStretch(3, 1);

    QMetaObject::connectSlotsByName(this);
}

MathsPreferencesQt::~MathsPreferencesQt() = default;

void MathsPreferencesQt::initialise(MathsDB* db)
{
    m_db = db;
}

void MathsPreferencesQt::update_display()
{
    const std::string dir = m_db == nullptr ? std::string() : m_db->get_imagedir();
    const bool isDir = !dir.empty() && QFileInfo(QString::fromStdString(dir)).isDir();
    m_dirField->setText(isDir ? QString::fromStdString(dir) : QString());
    m_singleField->setText(isDir ? QString() : QString::fromStdString(dir));
}

int MathsPreferencesQt::read_form() const
{
    if (m_db == nullptr)
        return TVErrC_ok;
    try {
        const std::string single = m_singleField->text().trimmed().toStdString();
        const std::string dir = m_dirField->text().trimmed().toStdString();
        if (!single.empty()) {
            m_db->set_imagedir(single);
            m_db->set_current_image(single);
        } else if (!dir.empty()) {
            m_db->set_imagedir(dir);
            std::string image; // checks the stored picture against the new folder
            TV_PASS_ON(m_db->get_current_image(image));
        } else if (!m_db->get_imagedir().empty()) {
            // Back to the built-in pictures, from the next one asked for:
            // the user's picture on show would otherwise stay until a run
            // moves the rotation on.
            m_db->set_imagedir(std::string());
            m_db->set_current_image(std::string());
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void MathsPreferencesQt::get_image_dir(std::string& dir) const
{
    dir = m_dirField->text().trimmed().toStdString();
    if (dir.empty() && !m_singleField->text().trimmed().isEmpty())
        dir = QFileInfo(m_singleField->text().trimmed()).absolutePath().toStdString();
    if (dir.empty() || !QFileInfo(QString::fromStdString(dir)).isDir())
        dir = tvapplication()->get_documents_dir();
}

void MathsPreferencesQt::on_imageDirButton_pressed()
{
    std::string start;
    get_image_dir(start);
    const std::string path =
        TVFileSelectQt::get_directory(this, "Select the directory to display images from.", start);
    if (!path.empty())
        image_dir_selected(path);
}

void MathsPreferencesQt::image_dir_selected(std::string path)
{
    m_dirField->setText(QString::fromStdString(path));
    m_singleField->clear();
}

void MathsPreferencesQt::on_imageSingleButton_pressed()
{
    std::string start;
    get_image_dir(start);
    const std::string path =
        TVFileSelectQt::get_open_file(this, "Select the image to display.", start, C_ImageFilter);
    if (!path.empty())
        image_file_selected(path);
}

void MathsPreferencesQt::image_file_selected(std::string path)
{
    m_singleField->setText(QString::fromStdString(path));
    m_dirField->clear();
}

void MathsPreferencesQt::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "MathsPreferencesQt dir \"" << m_dirField->text().toStdString()
        << "\" single \"" << m_singleField->text().toStdString() << "\"\n";
}
