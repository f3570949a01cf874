#include "AppTarvelloMaths/qt/mathswindows.h"

#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "AppTarvelloMaths/qt/mathspreferencesqt.h"
#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvsettingsformqt.h"

// The exercise editor is being written beside this; until it is in, its
// call says so.

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

TVSettingsFormQt* MathsWindows::make_preferences(MathsDB& db)
{
    auto* form = new MathsPreferencesQt();
    form->initialise(&db);
    return form;
}
