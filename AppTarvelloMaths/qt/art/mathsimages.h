#ifndef MATHSIMAGES_H
#define MATHSIMAGES_H

// The maths program's own resources:
//   ":/TarvelloMathsImages/images/original/" the ten background pictures
//       (giraffe.jpg ... sheep.jpg, 1600 by 1000), "Finished.png" and
//       "TarvelloMaths.png" (256 by 256);
//   ":/TarvelloMathsImages/images/128/TarvelloMaths.png";
//   ":/TarvelloMathsImages/images/32/" SetExercise, ZoomIn, ZoomOut, ZoomAll;
//   ":/TarvelloMathsImages/images/16/" Tick, Cross, Runner, Undo;
//   ":/TarvelloMathsHelp/" the help pages by name, "TarvelloMaths.html",
//       "Running.html", "SetExercise.html", "Preferences.html",
//       "maths_welcome.html" and "guide_exercise_list.html"; shown in a
//       QTextBrowser by the address "qrc:/TarvelloMathsHelp/<page>", so
//       that links between pages and their "qrc:/" pictures resolve.
//
// They live in a static library, which the linker would leave out unless
// something calls into it: AppMaths's constructor calls this. Safe to call
// more than once and from before any application object exists.
void maths_init_images();

#endif
