#ifndef MATHSPREFERENCESQT_H
#define MATHSPREFERENCESQT_H

// MathsPreferencesQt: the program's page of the settings window, which
// chooses the main window's background: a folder to rotate through, one
// picture to keep, or (both empty) the pictures that come with the program.
// The two fields are exclusive: choosing one empties the other.
//
// Both choices land in the one image directory of MathsDB; whether it is
// a folder or a picture is found on disk when the image is next asked for.

#include "LibGui/qt/tvsettingsformqt.h"

#include <iosfwd>
#include <string>

class MathsDB;
class QLabel;
class QLineEdit;
class QPushButton;

class MathsPreferencesQt : public TVSettingsFormQt
{
    Q_OBJECT

public:
    static constexpr const char* C_ImageFilter = "Images (*.jpg *.png)";

    explicit MathsPreferencesQt(QWidget* parent = nullptr);
    ~MathsPreferencesQt() override;

    // The database the page reads and writes; not owned. Without one the
    // page shows nothing and stores nothing.
    void initialise(MathsDB* db);

    void update_display() override;
    [[nodiscard]] int read_form() const override;
    // The folder a chooser starts in: the folder named, the single
    // picture's folder, or else the documents folder.
    void get_image_dir(std::string& dir) const;

    void dump(std::ostream& out, int indent) const;

public slots:
    void on_imageDirButton_pressed();
    void image_dir_selected(std::string path);
    void on_imageSingleButton_pressed();
    void image_file_selected(std::string path);

private:
    MathsDB* m_db = nullptr;
    QLabel* m_dirLabel;
    QLineEdit* m_dirField;
    QPushButton* m_dirButton;
    QLabel* m_singleLabel;
    QLineEdit* m_singleField;
    QPushButton* m_singleButton;
};

#endif // MATHSPREFERENCESQT_H
