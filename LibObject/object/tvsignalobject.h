#ifndef TVSIGNALOBJECT_H
#define TVSIGNALOBJECT_H

// A signal whose slot takes an object, not owned: int (TVObject::*)(TVObject*).

#include "LibObject/object/tvsignal.h"

class TVSignalObject : public TVSignal
{
};

#endif // TVSIGNALOBJECT_H
