#include "AppTarvelloMaths/qt/art/mathsimages.h"

#include <QtGlobal>

// Q_INIT_RESOURCE declares its function, which must sit outside any namespace.
static void init_packs()
{
    Q_INIT_RESOURCE(tvmathsimages);
    Q_INIT_RESOURCE(tvmathshelp);
}

void maths_init_images()
{
    static const bool done = (init_packs(), true);
    (void)done;
}
