#ifndef TVDATETESTENV_H
#define TVDATETESTENV_H

// Fixture for the date tests: a clock the test sets, a chosen local zone and
// a fresh locale, all put back afterwards. Zones are POSIX TZ rules, which
// the C library reads without a zone database.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

struct TVZoneScenario
{
    const char* m_name;
    const char* m_tz;
    int m_localZone; // without DST flag
};

inline const TVZoneScenario C_GmtZone{"GMT", "UTC0", 0};
// Southern summer time: AEDT from the first Sunday of October to the first
// Sunday of April; AEST is GMT+10.
inline const TVZoneScenario C_SydneyZone{"Sydney", "AEST-10AEDT,M10.1.0,M4.1.0/3", 72000};
// EDT from the second Sunday of March to the first Sunday of November; EST
// is GMT-5.
inline const TVZoneScenario C_NewYorkZone{"NewYork", "EST5EDT,M3.2.0,M11.1.0", -36000};

class TVDateTest : public ::testing::Test
{
protected:
    // 2021-03-15 12:34:56 UTC, a Monday.
    static constexpr long C_DefaultNow = 1615811696;

    void SetUp() override
    {
        const char* tz = std::getenv("TZ");
        m_hadTZ = tz != nullptr;
        if (m_hadTZ)
            m_savedTZ = tz;
        m_savedLocale = *tvlocale();
        tvlocale()->set_defaults(false);
        use_zone(C_GmtZone);
        set_now(C_DefaultNow, 0);
    }

    void TearDown() override
    {
        *tvlocale() = m_savedLocale;
        if (m_hadTZ)
            setenv("TZ", m_savedTZ.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
        TVDateUtils::set_clock(nullptr);
        TVDate::set_parser(nullptr);
    }

    // Makes zone the machine's zone, and local time the default zone.
    static void use_zone(const TVZoneScenario& zone)
    {
        setenv("TZ", zone.m_tz, 1);
        tzset();
        tvlocale()->set_local_timezone(zone.m_localZone);
        tvlocale()->set_timezone(TVDate::C_LocalTime);
        TVDateUtils::clear_caches();
    }

    static void set_now(long seconds, int micro)
    {
        s_seconds = seconds;
        s_micro = micro;
        TVDateUtils::set_clock(&fixed_clock);
    }

    // A GMT moment from calendar numbers: month and day count from 1 here,
    // as a calendar prints them.
    static TVDate utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                      int micro = 0)
    {
        return TVDate(year, month - 1, day - 1, hour, minute, second, micro, TVDate::C_GMT);
    }

    // The same moment labelled with the local zone.
    static TVDate local(const TVDate& moment)
    {
        TVDate date(moment);
        date.set_timezone(TVDate::C_LocalTime);
        return date;
    }

    // "YYYY-MM-DD hh:mm:ss" of the stored GMT fields, by the stream form's
    // breakdown, so that a test can state a moment as a calendar reading.
    static std::string gmt_text(const TVDate& date)
    {
        int year = 0;
        int month = 0;
        int day = 0;
        TVDateUtils::breakdown_yearday(date.get_day_of_year(), date.get_year(), year, month, day);
        int s = date.get_second_of_day();
        char buffer[48];
        std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d", year, month + 1,
                      day + 1, s / 3600, s % 3600 / 60, s % 60);
        return buffer;
    }

private:
    static void fixed_clock(long& seconds, int& micro)
    {
        seconds = s_seconds;
        micro = s_micro;
    }

    inline static long s_seconds = 0;
    inline static int s_micro = 0;
    TVLocale m_savedLocale;
    bool m_hadTZ = false;
    std::string m_savedTZ;
};

#endif // TVDATETESTENV_H
