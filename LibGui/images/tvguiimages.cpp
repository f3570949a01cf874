#include "LibGui/images/tvguiimages.h"

#include <QtGlobal>

// Q_INIT_RESOURCE declares its function, which must sit outside any namespace.
static void init_pack()
{
    Q_INIT_RESOURCE(tvguiimages);
}

void tv_init_gui_images()
{
    static const bool done = (init_pack(), true);
    (void)done;
}
