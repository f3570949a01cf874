#ifndef GOEXERCISEQT_H
#define GOEXERCISEQT_H

// GoExerciseQt: the run window, where one Go of an exercise is answered.

#include "LibGui/qt/tvdialogqt.h"

class GoExerciseQt : public TVDialogQt
{
    Q_OBJECT

public:
    explicit GoExerciseQt(QWidget* parent = nullptr);
    ~GoExerciseQt() override;
};

#endif
