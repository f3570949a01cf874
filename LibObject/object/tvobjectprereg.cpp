#include "LibObject/object/tvobjectprereg.h"

#include "LibObject/object/tvobjectindex.h"

TVObjectPreReg::TVObjectPreReg(const std::string& name, TVObjectCreateFn createFn)
{
    int id = -1;
    tvclassindex()->append(name, createFn, id);
}
