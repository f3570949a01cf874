#include "LibObject/object/tvsrlvalue.h"

template class TVSrlValue<int>;
template class TVSrlValue<long>;
template class TVSrlValue<bool>;
template class TVSrlValue<char>;
template class TVSrlValue<double>;
template class TVSrlValue<std::string>;
template class TVSrlValue<TVId>;
template class TVSrlValue<TVDate>;
template class TVSrlValue<TVDuration>;
