#ifndef TVFILETIMES_P_H
#define TVFILETIMES_P_H

// Between the system's file times (seconds and nanoseconds since 1970) and
// TVDate. Private to fileutils.

#include <ctime>

#include "LibDate/core/tvdate.h"

// Labelled with the default zone, as TVDateUtils::now() is, so a file's
// time and the present moment print alike. The microsecond is kept: two
// saves within one second must still differ.
inline TVDate tv_date_from_file_time(const timespec& time)
{
    TVDate date;
    date.set_time_t(static_cast<long>(time.tv_sec), TVDate::C_DefaultTime);
    date.set_micro(static_cast<int>(time.tv_nsec / 1000));
    return date;
}

// False for a blank or invalid date, which names no moment.
inline bool tv_date_to_file_time(const TVDate& date, timespec& time)
{
    if (!date.is_ok())
        return false;
    // Through the span since 1970 rather than get_time_t, which only
    // answers for a narrow band of years.
    const TVDuration since = date - TVDate(1970, 0, 0, 0, TVDate::C_GMT);
    long seconds = since.get_as_seconds();
    long micro = since.get_micro();
    if (micro < 0) {
        micro += TVDate::C_MicroSecs;
        --seconds;
    }
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_nsec = micro * 1000;
    return true;
}

#endif // TVFILETIMES_P_H
