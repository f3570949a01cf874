#ifndef MATHSMAINQT_H
#define MATHSMAINQT_H

// MathsMainQt: the program's one main window. The rotating background
// picture fills it; over the picture float a translucent list of the
// current session's runs (a "Go" or "Again" button on each), a status box
// counting what is left, the reminder bar, the welcome page while the
// session is empty, and a row of buttons: set up exercises, the utility
// menu, "Finished" (closes the session; only while nothing is left), and
// the zoom of the picture.
//
// sessionTree columns: 0 the button (the Go id as Qt::UserRole data and
// as the button's property "Go"), 1 the exercise, 2 this run's seconds,
// 3 the exercise's best; column 2 turns yellow when the run holds the
// record.
//
// The database must outlive the window. Under a TVApplicationQt the window
// belongs to the application (see TVDBManagerQt). Main thread only.

#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibObject/core/tvidlist.h"

#include <QIcon>

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class Exercise;
class Go;
class MathsDB;
class QAction;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;
class QScrollArea;
class QToolButton;
class QTreeWidgetItem;
class QWidget;
class TVGuideQt;
class TVCloudButtonQt;
class TVImageViewerQt;
class TVNotifyItem;
class TVNotifyBarQt;
class TVTreeWidgetQt;

class MathsMainQt : public TVDBManagerQt
{
    Q_OBJECT

public:
    // The file, under the scratch folder, that carries a copy of the
    // database to another copy of the program.
    static constexpr const char* C_PasteBuffer = "TarvelloMathsPasteBuffer";
    static constexpr int C_ButtonWidth = 70;
    static constexpr int C_GoButtonWidth = 60;
    static constexpr int C_MinListHeight = 50;
    static constexpr int C_MaxListHeight = 500;
    // The maths reminders' scheme; the same number as the items' category
    // and id.
    static constexpr int C_NotifySession = 800;
    static constexpr double C_NotifyPriority = 50.0;

    MathsMainQt(MathsDB& db, QWidget* parent);
    ~MathsMainQt() override;

    void dump(std::ostream& out, int indent) const override;

    void show_dialog() override;
    void update_display() override;
    [[nodiscard]] int generate_notify(TVNotifyList& list) override;
    // The database's due reminders as the items of the reminder bar: a
    // late one shown at once, the next one scheduled for its time.
    static std::vector<TVNotifyItem> reminder_notifications(const MathsDB& db);
    [[nodiscard]] int select_notify(const TVIdList& ids) override;
    [[nodiscard]] int export_paste_buffer(const std::string& file) override;
    [[nodiscard]] int import_paste_buffer(const std::string& file) override;
    bool paste_buffer_available() const override;

    // Runs the Go of that id; a complete one gets a new Go of its exercise
    // ("Again"), and the finished row stays as it was.
    [[nodiscard]] int start_exercise(int goId);
    void display_session();
    // Shows the picture so that it fills the view; "" does nothing.
    [[nodiscard]] int display_image(const std::string& path);
    void handle_resize();
    // The paste buffer's file: scratch folder, C_PasteBuffer, extension.
    static std::string paste_buffer_file();

    MathsDB& get_mathsdb() const { return m_mathsDB; }
    const TVIdList& get_selection() const { return m_selection; }
    TVImageViewerQt& get_viewer() const { return *m_viewer; }
    // The button of a row of sessionTree; null if it has none.
    QPushButton* row_button(int row) const;
    // The sum of the rows' heights (the first counted twice, for the header).
    int get_list_height() const { return m_listHeight; }

    // The form's parts, by the names they have in it.
    QWidget* centralwidget;
    QWidget* mainWidget;
    QFrame* mainFrame;
    QFrame* buttonBox;
    TVNotifyBarQt* notifyBar;
    TVGuideQt* guideForm;
    QScrollArea* scrollArea;
    TVTreeWidgetQt* sessionTree;
    QLabel* sessionStatus;
    QFrame* mButtonBox;
    QToolButton* finishedButton;
    TVCloudButtonQt* cloudButton;
    QMenu* menuFile;
    QMenu* menuRecent;
    QMenu* menu_Export;
    QMenu* menuImport;
    QMenu* menuHelp;
    QMenu* menuTools;
    QMenu* menuEdit;
    QMenu* menuView;
    QAction* actionQuit;
    QAction* actionAbout;
    QAction* actionUserManual;
    QAction* actionPreferences;
    QAction* actionNew;
    QAction* actionOpen;
    QAction* actionSave;
    QAction* actionSaveAs;
    QAction* actionUndo;
    QAction* actionRedo;
    QAction* actionZoomIn;
    QAction* actionZoomOut;
    QAction* actionZoomOutAll;
    QAction* actionSetExercises;
    QAction* actionExport;
    QAction* actionExportBuffer;
    QAction* actionImport;
    QAction* actionImportBuffer;

public slots:
    void go_exercise();
    void set_exercises();
    void exercise_finished();
    void app_menu_pressed();
    void preferences_selected();
    void quit_selected();
    void about_selected();
    void manual_selected();
    void new_selected();
    void open_selected();
    void import_selected();
    void save_selected();
    void saveas_selected();
    void export_selected();
    void zoom_in();
    void zoom_out();
    void zoom_out_all();
    void update_needed();
    void timer_expired();
    void recent_seleted();
    void undo_selected();
    void redo_selected();
    void on_sessionTree_itemSelectionChanged();
    void on_actionImportBuffer_triggered();
    void on_actionExportBuffer_triggered();

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void notify_selected(const TVIdList& ids);
    // The exercise list has closed: recalculate and redraw.
    void exercises_set();

private:
    void setup_form();
    void add_actions();
    QToolButton* add_button(QWidget* box, const char* icon, const char* tip, const char* slot);
    void recent_menu();
    // The view and the panels over it take the central area's size.
    void place_panels();
    // Redraws once the dialog that was just opened (the newest child of
    // that kind) closes.
    void follow_dialog(QWidget* dialog);
    void add_row(const Go& go, const Exercise& exercise);

    MathsDB& m_mathsDB;
    // The selected rows' Go ids, kept across redraws.
    TVIdList m_selection;
    std::unique_ptr<TVImageViewerQt> m_viewer;
    int m_listHeight = 0;
};

#endif // MATHSMAINQT_H
