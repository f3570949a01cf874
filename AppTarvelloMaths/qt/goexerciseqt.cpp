#include "AppTarvelloMaths/qt/goexerciseqt.h"

GoExerciseQt::GoExerciseQt(QWidget* parent)
    : TVDialogQt(parent)
{
    setObjectName("GoExerciseQt");
}

GoExerciseQt::~GoExerciseQt() = default;
