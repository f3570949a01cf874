#include "LibGui/qt/tvslotcall.h"

namespace tvslotcall {

bool stopped(int value)
{
    return tvhandle_error(value, TVSevWarning) > 1;
}

} // namespace tvslotcall
