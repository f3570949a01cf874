#ifndef TVSIGNALVOID_H
#define TVSIGNALVOID_H

// A signal whose slot takes no argument: int (TVObject::*)().

#include "LibObject/object/tvsignal.h"

class TVSignalVoid : public TVSignal
{
};

#endif // TVSIGNALVOID_H
