#ifndef TVLOCALE_H
#define TVLOCALE_H

// TVLocale: the user's choices for dates, times, numbers and units, and the
// names of weekdays and months. Every conversion between a date and text
// reads it. One instance per process, reached by tvlocale(); main thread
// only, like the other singletons.
//
// Zones are in TVDate's encoding (twice the offset east of GMT in seconds,
// one further from zero for daylight saving; 90000-90002 symbolic).
//
// Defaults at first start: day format entry 0 ("dd/mm/yy"), 24-hour clock,
// weeks begin on Monday, English names, the default zone C_LocalTime, the
// local zone read from the C library's localtime, 8 work hours a day,
// currency "$", group separator ",", decimal ".".

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/application/tvsingleton.h"

// One entry of the table of day formats offered to the user.
struct TVDayFormatOption
{
    const char* m_name;
    const char* m_dayFormat;
    const char* m_shortFormat;
    int m_style; // as get_date_style()
};

class TVLocale : public TVSingleton<TVLocale>
{
public:
    // Keys of the system values kept in the user's configuration file.
    static constexpr const char* C_SysFirstDay = "DateFirstDay";
    static constexpr const char* C_SysDayFormat = "DateDayFormat";
    static constexpr const char* C_SysIs24Hours = "DateIs24Hours";
    static constexpr const char* C_SysDefaultLocale = "DateDefaultLocale";
    static constexpr const char* C_SysTimezone = "DateTimezone";
    static constexpr const char* C_SysCurrency = "LocaleCurrency";
    static constexpr const char* C_SysGroupSep = "LocaleGroupSep";
    static constexpr const char* C_SysDecimal = "LocaleDecimal";
    static constexpr const char* C_SysLatLonFormat = "LatLonFormat";
    static constexpr const char* C_SysAltUnits = "LocaleAltUnits";
    // A value of exactly one blank is stored as this, since the file trims.
    static constexpr const char* C_Space = "#SPACE";

    // The day formats, in the order shown to the user. Entries 9 and 10 keep
    // a hyphen in their short form on purpose.
    static constexpr int C_OptionCount = 11;
    static const TVDayFormatOption C_Option[C_OptionCount];

    // Date styles: which part of a numeric date comes first.
    enum E_DateStyle { E_MonthFirst = 0, E_DayFirst = 1, E_YearFirst = 2 };

    TVLocale();
    TVLocale(const TVLocale& other);
    TVLocale& operator=(const TVLocale& other);
    ~TVLocale();

    // Puts every field back to its first-start value. init also asks the C
    // library for the machine's zone; otherwise the local zone stays.
    void set_defaults(bool init);

    // ---- Dates and times ---------------------------------------------------

    const std::string& day_format(bool shortForm) const;
    const std::string& time_format(bool shortForm) const;
    const std::string& date_format() const;
    int get_date_style() const;
    // Takes entry index of C_Option (out of range: entry 0) and rebuilds the
    // date format.
    void set_day_format(int index);
    // The entry whose day format is in force, 0 if none is.
    int get_format_number() const;
    bool is_24hour_clock() const;
    // Sets both time formats and rebuilds the date format.
    void set_24hour_clock(bool is24);
    // An empty text builds "%a ", day format, " ", time format; any other
    // text is stored as it stands.
    void set_date_format(const std::string& format);

    // 0 is Sunday; any number is taken modulo 7.
    int get_firstday() const;
    void set_firstday(int day);

    // The flag picks the English names (true) or the local ones (false).
    bool get_defaultlocale() const;
    void set_defaultlocale(bool isDefault);

    // The zone in which dates are shown by default; may be symbolic, but
    // never C_DefaultTime, which would name itself (taken as C_LocalTime).
    int get_timezone() const;
    void set_timezone(int zone);
    std::string get_timezone_str() const;
    // Reads the texts of TVDateUtils::zone_to_string: "Local Time", "Keep",
    // "GMT", "GMT+10", "GMT-03:30", "GMT+05:30:15", each optionally with
    // " DST". False, and nothing changed, for any other text.
    bool set_timezone_str(const std::string& text);
    // The zone of this machine, without the daylight saving flag, which is
    // worked out per date by mktime. A flag given here is dropped.
    int get_local_timezone() const;
    void set_local_timezone(int zone);

    double get_workhours() const;
    void set_workhours(double hours);

    // ---- Names -------------------------------------------------------------

    // "" when out of range (day 0-6 from Sunday, month 0-11).
    std::string weekday_name(int day, bool shortForm) const;
    std::string month_name(int month, bool shortForm) const;
    // Case-insensitive search of the full and short names; with the
    // default-locale flag clear the local names are tried last. -1 if none.
    int weekday_number(const std::string& text) const;
    int month_number(const std::string& text) const;
    // Replaces the local names (7 weekdays, 12 months, each short and full).
    // False, and nothing changed, if a list has the wrong length.
    bool set_local_names(const std::vector<std::string>& weekdaysShort,
                         const std::vector<std::string>& weekdaysFull,
                         const std::vector<std::string>& monthsShort,
                         const std::vector<std::string>& monthsFull);
    // Puts the English name in place of every word that is a local weekday or
    // month name (short to short, full to full) so that the date parser,
    // which knows English, can read the text. Other text is left alone.
    std::string clean_date_string(const std::string& text) const;
    // English ordinal: 1st 2nd 3rd 4th ... 11th 12th 13th ... 21st ...
    // 111th. withNumber true gives the number and suffix ("21st"), false the
    // suffix alone ("st"). A negative number takes the suffix of its size.
    std::string get_ordinal(int number, bool withNumber) const;

    // ---- Numbers -----------------------------------------------------------

    // Fixed-point text with decimals places (at least 0), the locale's
    // decimal separator and, if group, its group separator every three
    // digits: 1234567.891 with 2 and group gives "1,234,567.89".
    std::string to_string(double value, int decimals = 2, bool group = false) const;
    std::string to_string(long value, bool group = false) const;
    std::string to_string(int value, bool group = false) const;
    // Currency sign before the grouped amount, after any minus: "-$1,234.50".
    std::string to_currency(double value, int decimals = 2) const;
    // Drops blanks, the currency sign and group separators and turns the
    // decimal separator into ".", giving a text strtod can read.
    std::string clean_number(const std::string& text) const;
    // Read a cleaned text; 0 when it holds no number.
    double to_double(const std::string& text) const;
    long to_long(const std::string& text) const;
    int to_int(const std::string& text) const;

    const std::string& get_currency() const;
    void set_currency(const std::string& currency);
    const std::string& get_group_separator() const;
    void set_group_separator(const std::string& separator);
    const std::string& get_decimal_separator() const;
    // An empty separator is refused and "." kept.
    void set_decimal_separator(const std::string& separator);
    // 0 decimal degrees, 1 degrees and minutes, 2 degrees, minutes, seconds.
    int get_latlon_format() const;
    void set_latlon_format(int format);
    bool get_alt_units() const;
    void set_alt_units(bool altUnits);

    // ---- Configuration -----------------------------------------------------

    // The stored form of a value: exactly one blank becomes C_Space.
    static std::string toConfig(const std::string& value);
    static std::string fromConfig(const std::string& value);

    // Takes the fields from the system values of tvparam() (the C_Sys...
    // keys). A key the file doesn't hold leaves its field as it is, so a
    // first start keeps the defaults. Never fails; gives TVErrC_ok.
    int read_config();
    // Stores every field under its key in the user's configuration file.
    [[nodiscard]] int write_config() const;

    void dump(std::ostream& out, int indent) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

// The process-wide locale, made on first use.
TVLocale* tvlocale();

#endif // TVLOCALE_H
