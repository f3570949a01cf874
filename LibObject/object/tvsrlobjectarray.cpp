#include "LibObject/object/tvsrlobjectarray.h"

template class TVSrlObjectArray<TVObject>;
