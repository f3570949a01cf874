#include "LibObject/object/tvsrlvaluevector.h"

template class TVSrlValueVector<int>;
template class TVSrlValueVector<long>;
template class TVSrlValueVector<double>;
template class TVSrlValueVector<std::string>;
template class TVSrlValueVector<TVId>;
template class TVSrlValueVector<TVDate>;
template class TVSrlValueVector<TVDuration>;
