#include "AppTarvelloMaths/qt/mathswindows.h"

#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvsettingsformqt.h"

// The exercise editor and the preferences page are being written beside
// this; until they are in, each call says so.

int MathsWindows::open_run(MathsDB& db, int goId, QWidget* parent, QWidget*& window)
{
    GoExerciseQt* run = nullptr;
    const int result = GoExerciseQt::start_exercise(db, goId, parent, &run);
    window = run;
    return result;
}

int MathsWindows::open_exercise_list(MathsDB&, QWidget*, QWidget*& window)
{
    window = nullptr;
    return tvwarning(TVErrC_InvalidState, TVLOCATION,
                     "The exercise list is not available in this build.");
}

TVSettingsFormQt* MathsWindows::make_preferences(MathsDB&)
{
    auto* form = new TVSettingsFormQt();
    form->setWindowTitle("Tarvello Maths Preferences");
    return form;
}
