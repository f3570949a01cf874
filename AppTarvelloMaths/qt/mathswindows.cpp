#include "AppTarvelloMaths/qt/mathswindows.h"

#include "AppTarvelloMaths/qt/exerciselistqt.h"
#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "AppTarvelloMaths/qt/mathspreferencesqt.h"
#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvsettingsformqt.h"

int MathsWindows::open_run(MathsDB& db, int goId, QWidget* parent, QWidget*& window)
{
    GoExerciseQt* run = nullptr;
    const int result = GoExerciseQt::start_exercise(db, goId, parent, &run);
    window = run;
    return result;
}

int MathsWindows::open_exercise_list(MathsDB& db, QWidget* parent, QWidget*& window)
{
    ExerciseListQt* list = nullptr;
    const int result = ExerciseListQt::start_edit(db, parent, &list);
    window = list;
    return result;
}

TVSettingsFormQt* MathsWindows::make_preferences(MathsDB& db)
{
    auto* form = new MathsPreferencesQt();
    form->initialise(&db);
    return form;
}
