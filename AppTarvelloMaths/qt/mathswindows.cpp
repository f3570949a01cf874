#include "AppTarvelloMaths/qt/mathswindows.h"

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvsettingsformqt.h"

// The run window, the exercise editor and the preferences page are being
// written beside this; until they are in, each call says so.

int MathsWindows::open_run(MathsDB&, int goId, QWidget*, QWidget*& window)
{
    window = nullptr;
    return tvwarning(TVErrC_InvalidState, TVLOCATION,
                     "The run window is not available in this build (run %d).", goId);
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
