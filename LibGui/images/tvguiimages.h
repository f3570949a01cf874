#ifndef TVGUIIMAGES_H
#define TVGUIIMAGES_H

// The framework's icons, under the resource prefix "/LibGui":
// ":/LibGui/images/32/Menu.png", "Clock.png", "Warning.png" and the cloud
// states "CloudOK.png", "CloudPush.png", "CloudUp.png", "CloudDown.png",
// "CloudInit.png", "CloudOff.png".
//
// They live in a static library, which the linker would leave out unless
// something calls into it: TVApplicationQt's constructor calls this. Safe
// to call more than once and from before any application object exists.
void tv_init_gui_images();

#endif
