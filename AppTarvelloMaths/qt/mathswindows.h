#ifndef MATHSWINDOWS_H
#define MATHSWINDOWS_H

// The windows the main window opens: the run window, the exercise list and
// the program's page of the settings. The main window reaches them only
// through these calls, so it builds and is tested apart from them.

#include <string>

class MathsDB;
class QWidget;
class TVSettingsFormQt;

namespace MathsWindows {

// Runs the Go of that id; window gets the dialog opened (null if none).
[[nodiscard]] int open_run(MathsDB& db, int goId, QWidget* parent, QWidget*& window);
// The list of exercises and reminders; window as above.
[[nodiscard]] int open_exercise_list(MathsDB& db, QWidget* parent, QWidget*& window);
// The program's page of the settings window; the caller owns it.
TVSettingsFormQt* make_preferences(MathsDB& db);

} // namespace MathsWindows

#endif // MATHSWINDOWS_H
