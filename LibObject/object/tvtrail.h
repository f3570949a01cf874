#ifndef TVTRAIL_H
#define TVTRAIL_H

// The two halves of the inner form of the error convention, for code that
// calls fallible functions:
//
//     try {
//         int result = step();
//         if (istvwarn(result))
//             return tv_trail_return(result, TVLOCATION);
//     } catch (const TVErrDetails&) {
//         tv_trail_throw(TVLOCATION);
//     }
//
// Each level adds its own position to the newest error's location.

#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"

#include <string>

// Adds location to the pending error and gives its value to return. A
// failure returned without a report has no trail to extend; its value is
// passed on rather than lost.
inline int tv_trail_return(int result, const std::string& location)
{
    tvsysinfo_append(location, "");
    return get_tverror()->is_error() ? tverrorvalue() : result;
}

// Call only inside a catch block: adds location, then throws a fresh copy
// of the newest error (or the caught exception if the stack is empty).
[[noreturn]] inline void tv_trail_throw(const std::string& location)
{
    tvsysinfo_append(location, "");
    const TVErrDetails* newest = get_tverror()->error_details();
    if (newest == nullptr)
        throw;
    throw TVErrDetails(*newest);
}

#endif // TVTRAIL_H
