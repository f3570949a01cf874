#include "LibObject/object/tvsrlvaluearray.h"

template class TVSrlValueArray<TVId>;
template class TVSrlValueArray<TVDate>;
template class TVSrlValueArray<TVDuration>;
