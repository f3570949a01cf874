#ifndef TVSIGNALINT_H
#define TVSIGNALINT_H

// A signal whose slot takes an int: int (TVObject::*)(int).

#include "LibObject/object/tvsignal.h"

class TVSignalInt : public TVSignal
{
};

#endif // TVSIGNALINT_H
