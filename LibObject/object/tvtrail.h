#ifndef TVTRAIL_H
#define TVTRAIL_H

// tv_trail_return and tv_trail_throw live with the error framework.
#include "LibCore/error/tverror.h"

#endif // TVTRAIL_H
