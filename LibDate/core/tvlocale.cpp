#include "LibDate/core/tvlocale.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <ostream>
#include <utility>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"

const TVDayFormatOption TVLocale::C_Option[TVLocale::C_OptionCount] = {
    {"dd/mm/yy", "%d/%m/%y", "%d/%m", E_DayFirst},
    {"dd/mmm/yyyy", "%d/%b/%Y", "%d/%b", E_DayFirst},
    {"dd-mm-yy", "%d-%m-%y", "%d-%m", E_DayFirst},
    {"dd-mmm-yyyy", "%d-%b-%Y", "%d-%b", E_DayFirst},
    {"mm/dd/yy", "%m/%d/%y", "%m/%d", E_MonthFirst},
    {"mm-dd-yy", "%m-%d-%y", "%m-%d", E_MonthFirst},
    {"mmm dd, yyyy", "%b %d, %Y", "%b %d", E_MonthFirst},
    {"yyyy-mm-dd", "%Y-%m-%d", "%m-%d", E_YearFirst},
    {"yyyy-mmm-dd", "%Y-%b-%d", "%b-%d", E_YearFirst},
    {"yyyy/mm/dd", "%Y/%m/%d", "%m-%d", E_YearFirst},
    {"yyyy/mmm/dd", "%Y/%b/%d", "%b-%d", E_YearFirst},
};

namespace {

const int C_Weekdays = TVDate::C_WeekDays;
const int C_Months = TVDate::C_YearMonths;

const char* const C_WeekdayShort[C_Weekdays] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const C_WeekdayFull[C_Weekdays] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                               "Thursday", "Friday", "Saturday"};
const char* const C_MonthShort[C_Months] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const C_MonthFull[C_Months] = {"January", "February", "March",     "April",
                                           "May",     "June",     "July",      "August",
                                           "September", "October", "November", "December"};

const char* const C_Time24 = "%H:%M:%S %z";
const char* const C_Time24Short = "%H:%M %z";
const char* const C_Time12 = "%I:%M:%S %p %z";
const char* const C_Time12Short = "%I:%M %p %z";

const int C_DefaultFirstDay = 1; // Monday
const double C_DefaultWorkHours = 8.0;

std::vector<std::string> to_vector(const char* const* names, int count)
{
    return std::vector<std::string>(names, names + count);
}

bool same_text_nocase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

int find_nocase(const std::vector<std::string>& names, const std::string& text)
{
    for (size_t i = 0; i < names.size(); ++i) {
        if (same_text_nocase(names[i], text))
            return static_cast<int>(i);
    }
    return -1;
}

// A letter of a word for clean_date_string: ASCII letters and the bytes of
// multi-byte UTF-8 characters, so that "März" stays one word.
bool is_word_byte(char c)
{
    unsigned char u = static_cast<unsigned char>(c);
    return std::isalpha(u) || u >= 0x80;
}

// Inserts sep between groups of three digits of a run of digits.
std::string group_digits(const std::string& digits, const std::string& sep)
{
    std::string out;
    size_t n = digits.size();
    for (size_t i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0)
            out += sep;
        out += digits[i];
    }
    return out;
}

// Clears the daylight saving flag of a real zone, either sign.
int base_zone(int zone)
{
    return zone - zone % 2;
}

bool is_real_zone(int zone)
{
    return zone >= TVDate::C_ZoneMin && zone <= TVDate::C_ZoneMax;
}

int system_local_zone()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    if (localtime_r(&now, &parts) == nullptr)
        return TVDate::C_GMT;
    long offset = parts.tm_gmtoff - (parts.tm_isdst > 0 ? TVDate::C_HourSecs : 0);
    return base_zone(TVDateUtils::seconds_to_zone(offset, false, false));
}

std::string indent_text(int indent)
{
    return std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ');
}

} // namespace

struct TVLocale::Private
{
    int m_dateStyle = E_DayFirst;
    int m_firstday = C_DefaultFirstDay;
    bool m_is24 = true;
    std::string m_dateFormat;
    std::string m_dayFormat;
    std::string m_shortDayFormat;
    std::string m_timeFormat;
    std::string m_shortTimeFormat;
    bool m_defaultLocale = true;
    std::vector<std::string> m_localWeekdayShort;
    std::vector<std::string> m_localWeekdayFull;
    std::vector<std::string> m_localMonthShort;
    std::vector<std::string> m_localMonthFull;
    int m_timezone = TVDate::C_LocalTime;
    int m_localTimezone = TVDate::C_GMT;
    double m_workhours = C_DefaultWorkHours;
    std::string m_currency;
    std::string m_groupSep;
    std::string m_decimal;
    int m_latLonFormat = 0;
    bool m_altUnits = false;
};

TVLocale::TVLocale() : d(new Private)
{
    set_defaults(true);
}

TVLocale::TVLocale(const TVLocale& other) : TVSingleton<TVLocale>(), d(new Private(*other.d)) {}

TVLocale& TVLocale::operator=(const TVLocale& other)
{
    if (this != &other)
        *d = *other.d;
    return *this;
}

TVLocale::~TVLocale() = default;

void TVLocale::set_defaults(bool init)
{
    // The machine's zone is only asked at start; a later reset keeps the
    // zone in force, which a test or the user may have set.
    int localZone = init ? system_local_zone() : d->m_localTimezone;
    *d = Private();
    d->m_localTimezone = localZone;
    d->m_localWeekdayShort = to_vector(C_WeekdayShort, C_Weekdays);
    d->m_localWeekdayFull = to_vector(C_WeekdayFull, C_Weekdays);
    d->m_localMonthShort = to_vector(C_MonthShort, C_Months);
    d->m_localMonthFull = to_vector(C_MonthFull, C_Months);
    d->m_currency = "$";
    d->m_groupSep = ",";
    d->m_decimal = ".";
    d->m_is24 = true;
    d->m_timeFormat = C_Time24;
    d->m_shortTimeFormat = C_Time24Short;
    set_day_format(0);
}

// ---- Dates and times --------------------------------------------------------

const std::string& TVLocale::day_format(bool shortForm) const
{
    return shortForm ? d->m_shortDayFormat : d->m_dayFormat;
}

const std::string& TVLocale::time_format(bool shortForm) const
{
    return shortForm ? d->m_shortTimeFormat : d->m_timeFormat;
}

const std::string& TVLocale::date_format() const
{
    return d->m_dateFormat;
}

int TVLocale::get_date_style() const
{
    return d->m_dateStyle;
}

void TVLocale::set_day_format(int index)
{
    if (index < 0 || index >= C_OptionCount)
        index = 0;
    const TVDayFormatOption& option = C_Option[index];
    d->m_dayFormat = option.m_dayFormat;
    d->m_shortDayFormat = option.m_shortFormat;
    d->m_dateStyle = option.m_style;
    set_date_format(std::string());
}

int TVLocale::get_format_number() const
{
    for (int i = 0; i < C_OptionCount; ++i) {
        if (d->m_dayFormat == C_Option[i].m_dayFormat)
            return i;
    }
    return 0;
}

bool TVLocale::is_24hour_clock() const
{
    return d->m_is24;
}

void TVLocale::set_24hour_clock(bool is24)
{
    d->m_is24 = is24;
    d->m_timeFormat = is24 ? C_Time24 : C_Time12;
    d->m_shortTimeFormat = is24 ? C_Time24Short : C_Time12Short;
    set_date_format(std::string());
}

void TVLocale::set_date_format(const std::string& format)
{
    if (format.empty())
        d->m_dateFormat = "%a " + d->m_dayFormat + " " + d->m_timeFormat;
    else
        d->m_dateFormat = format;
}

int TVLocale::get_firstday() const
{
    return d->m_firstday;
}

void TVLocale::set_firstday(int day)
{
    d->m_firstday = ((day % C_Weekdays) + C_Weekdays) % C_Weekdays;
}

bool TVLocale::get_defaultlocale() const
{
    return d->m_defaultLocale;
}

void TVLocale::set_defaultlocale(bool isDefault)
{
    d->m_defaultLocale = isDefault;
}

int TVLocale::get_timezone() const
{
    return d->m_timezone;
}

void TVLocale::set_timezone(int zone)
{
    // Only a real zone, local time or "keep" can stand as the default; the
    // default zone naming itself would never resolve.
    if (!is_real_zone(zone) && zone != TVDate::C_OriginalTime)
        zone = TVDate::C_LocalTime;
    d->m_timezone = zone;
}

std::string TVLocale::get_timezone_str() const
{
    return TVDateUtils::zone_to_string(d->m_timezone, TVDate::C_OriginalTime);
}

bool TVLocale::set_timezone_str(const std::string& text)
{
    static const std::string C_Local = "Local Time";
    static const std::string C_Keep = "Keep";
    static const std::string C_Dst = " DST";
    static const std::string C_Gmt = "GMT";

    if (text == C_Local) {
        set_timezone(TVDate::C_LocalTime);
        return true;
    }
    if (text.compare(0, C_Keep.size(), C_Keep) == 0) {
        set_timezone(TVDate::C_OriginalTime);
        return true;
    }
    std::string rest = text;
    bool dst = rest.size() >= C_Dst.size() &&
               rest.compare(rest.size() - C_Dst.size(), C_Dst.size(), C_Dst) == 0;
    if (dst)
        rest.erase(rest.size() - C_Dst.size());
    if (rest.compare(0, C_Gmt.size(), C_Gmt) != 0)
        return false;
    rest.erase(0, C_Gmt.size());

    long seconds = 0;
    if (!rest.empty()) {
        if (rest[0] != '+' && rest[0] != '-')
            return false;
        int sign = rest[0] == '-' ? -1 : 1;
        // Up to three two-digit parts: hours, minutes, seconds.
        const long unit[3] = {TVDate::C_HourSecs, TVDate::C_MinSecs, 1};
        size_t pos = 1;
        for (int part = 0; part < 3; ++part) {
            if (pos + 2 > rest.size() || !std::isdigit(static_cast<unsigned char>(rest[pos])) ||
                !std::isdigit(static_cast<unsigned char>(rest[pos + 1])))
                return false;
            seconds += std::atol(rest.substr(pos, 2).c_str()) * unit[part];
            pos += 2;
            if (pos == rest.size())
                break;
            if (rest[pos] != ':' || part == 2)
                return false;
            ++pos;
        }
        seconds *= sign;
    }
    if (seconds * 2 < TVDate::C_ZoneMin || seconds * 2 > TVDate::C_ZoneMax)
        return false;
    set_timezone(TVDateUtils::seconds_to_zone(seconds, dst, false));
    return true;
}

int TVLocale::get_local_timezone() const
{
    return d->m_localTimezone;
}

void TVLocale::set_local_timezone(int zone)
{
    if (is_real_zone(zone))
        d->m_localTimezone = base_zone(zone);
}

double TVLocale::get_workhours() const
{
    return d->m_workhours;
}

void TVLocale::set_workhours(double hours)
{
    d->m_workhours = hours;
}

// ---- Names ------------------------------------------------------------------

std::string TVLocale::weekday_name(int day, bool shortForm) const
{
    if (day < 0 || day >= C_Weekdays)
        return std::string();
    if (d->m_defaultLocale)
        return shortForm ? C_WeekdayShort[day] : C_WeekdayFull[day];
    return shortForm ? d->m_localWeekdayShort[static_cast<size_t>(day)]
                     : d->m_localWeekdayFull[static_cast<size_t>(day)];
}

std::string TVLocale::month_name(int month, bool shortForm) const
{
    if (month < 0 || month >= C_Months)
        return std::string();
    if (d->m_defaultLocale)
        return shortForm ? C_MonthShort[month] : C_MonthFull[month];
    return shortForm ? d->m_localMonthShort[static_cast<size_t>(month)]
                     : d->m_localMonthFull[static_cast<size_t>(month)];
}

int TVLocale::weekday_number(const std::string& text) const
{
    static const std::vector<std::string> full = to_vector(C_WeekdayFull, C_Weekdays);
    static const std::vector<std::string> shortNames = to_vector(C_WeekdayShort, C_Weekdays);
    int found = find_nocase(full, text);
    if (found < 0)
        found = find_nocase(shortNames, text);
    if (found < 0 && !d->m_defaultLocale) {
        found = find_nocase(d->m_localWeekdayFull, text);
        if (found < 0)
            found = find_nocase(d->m_localWeekdayShort, text);
    }
    return found;
}

int TVLocale::month_number(const std::string& text) const
{
    static const std::vector<std::string> full = to_vector(C_MonthFull, C_Months);
    static const std::vector<std::string> shortNames = to_vector(C_MonthShort, C_Months);
    int found = find_nocase(full, text);
    if (found < 0)
        found = find_nocase(shortNames, text);
    if (found < 0 && !d->m_defaultLocale) {
        found = find_nocase(d->m_localMonthFull, text);
        if (found < 0)
            found = find_nocase(d->m_localMonthShort, text);
    }
    return found;
}

bool TVLocale::set_local_names(const std::vector<std::string>& weekdaysShort,
                               const std::vector<std::string>& weekdaysFull,
                               const std::vector<std::string>& monthsShort,
                               const std::vector<std::string>& monthsFull)
{
    const size_t days = static_cast<size_t>(C_Weekdays);
    const size_t months = static_cast<size_t>(C_Months);
    if (weekdaysShort.size() != days || weekdaysFull.size() != days ||
        monthsShort.size() != months || monthsFull.size() != months)
        return false;
    d->m_localWeekdayShort = weekdaysShort;
    d->m_localWeekdayFull = weekdaysFull;
    d->m_localMonthShort = monthsShort;
    d->m_localMonthFull = monthsFull;
    return true;
}

std::string TVLocale::clean_date_string(const std::string& text) const
{
    // The English name for a local one, full before short, or "".
    auto english = [this](const std::string& word) -> std::string {
        int i = find_nocase(d->m_localWeekdayFull, word);
        if (i >= 0)
            return C_WeekdayFull[i];
        i = find_nocase(d->m_localMonthFull, word);
        if (i >= 0)
            return C_MonthFull[i];
        i = find_nocase(d->m_localWeekdayShort, word);
        if (i >= 0)
            return C_WeekdayShort[i];
        i = find_nocase(d->m_localMonthShort, word);
        if (i >= 0)
            return C_MonthShort[i];
        return std::string();
    };

    std::string out;
    size_t pos = 0;
    while (pos < text.size()) {
        if (!is_word_byte(text[pos])) {
            out += text[pos++];
            continue;
        }
        size_t end = pos;
        while (end < text.size() && is_word_byte(text[end]))
            ++end;
        std::string word = text.substr(pos, end - pos);
        std::string replacement = english(word);
        out += replacement.empty() ? word : replacement;
        pos = end;
    }
    return out;
}

std::string TVLocale::get_ordinal(int number, bool withNumber) const
{
    long size = std::labs(static_cast<long>(number));
    const char* suffix = "th";
    // 11th, 12th and 13th break the rule of the last digit, also in 111th.
    if (size % 100 < 11 || size % 100 > 13) {
        switch (size % 10) {
        case 1: suffix = "st"; break;
        case 2: suffix = "nd"; break;
        case 3: suffix = "rd"; break;
        default: break;
        }
    }
    return withNumber ? tv_sprintf("%d%s", number, suffix) : std::string(suffix);
}

// ---- Numbers ----------------------------------------------------------------

std::string TVLocale::to_string(double value, int decimals, bool group) const
{
    if (decimals < 0)
        decimals = 0;
    std::string plain = tv_sprintf("%.*f", decimals, value);
    std::string sign;
    if (!plain.empty() && plain[0] == '-') {
        // A value that rounds to zero shows no minus.
        if (plain.find_first_of("123456789") != std::string::npos)
            sign = "-";
        plain.erase(0, 1);
    }
    size_t point = plain.find('.');
    std::string whole = plain.substr(0, point);
    std::string out = sign + (group ? group_digits(whole, d->m_groupSep) : whole);
    if (point != std::string::npos)
        out += d->m_decimal + plain.substr(point + 1);
    return out;
}

std::string TVLocale::to_string(long value, bool group) const
{
    std::string plain = tv_sprintf("%ld", value);
    if (!group)
        return plain;
    if (plain[0] == '-')
        return "-" + group_digits(plain.substr(1), d->m_groupSep);
    return group_digits(plain, d->m_groupSep);
}

std::string TVLocale::to_string(int value, bool group) const
{
    return to_string(static_cast<long>(value), group);
}

std::string TVLocale::to_currency(double value, int decimals) const
{
    std::string amount = to_string(value, decimals, true);
    if (!amount.empty() && amount[0] == '-')
        return "-" + d->m_currency + amount.substr(1);
    return d->m_currency + amount;
}

std::string TVLocale::clean_number(const std::string& text) const
{
    std::string out = text;
    if (!d->m_currency.empty())
        out = tv_replace_substr(out, d->m_currency, "");
    // Group separators go before the decimal one is turned into ".", so that
    // "1.234,5" reads right where "." groups and "," is the decimal.
    if (!d->m_groupSep.empty() && d->m_groupSep != d->m_decimal)
        out = tv_replace_substr(out, d->m_groupSep, "");
    if (d->m_decimal != ".")
        out = tv_replace_substr(out, d->m_decimal, ".");
    std::string compact;
    for (char c : out) {
        if (!std::isspace(static_cast<unsigned char>(c)))
            compact += c;
    }
    return compact;
}

double TVLocale::to_double(const std::string& text) const
{
    return std::strtod(clean_number(text).c_str(), nullptr);
}

long TVLocale::to_long(const std::string& text) const
{
    return std::strtol(clean_number(text).c_str(), nullptr, 10);
}

int TVLocale::to_int(const std::string& text) const
{
    return static_cast<int>(to_long(text));
}

const std::string& TVLocale::get_currency() const
{
    return d->m_currency;
}

void TVLocale::set_currency(const std::string& currency)
{
    d->m_currency = currency;
}

const std::string& TVLocale::get_group_separator() const
{
    return d->m_groupSep;
}

void TVLocale::set_group_separator(const std::string& separator)
{
    d->m_groupSep = separator;
}

const std::string& TVLocale::get_decimal_separator() const
{
    return d->m_decimal;
}

void TVLocale::set_decimal_separator(const std::string& separator)
{
    if (!separator.empty())
        d->m_decimal = separator;
}

int TVLocale::get_latlon_format() const
{
    return d->m_latLonFormat;
}

void TVLocale::set_latlon_format(int format)
{
    d->m_latLonFormat = format;
}

bool TVLocale::get_alt_units() const
{
    return d->m_altUnits;
}

void TVLocale::set_alt_units(bool altUnits)
{
    d->m_altUnits = altUnits;
}

// ---- Configuration ----------------------------------------------------------

std::string TVLocale::toConfig(const std::string& value)
{
    return value == " " ? std::string(C_Space) : value;
}

std::string TVLocale::fromConfig(const std::string& value)
{
    return value == C_Space ? std::string(" ") : value;
}

namespace {

// The stored value of key, if the user's file holds one at all: an empty
// currency is a choice, not a missing key.
bool config_value(const char* key, std::string& value)
{
    if (!TVParam::has_object() || tvparam()->get_nvalues(key) == 0)
        return false;
    value = TVLocale::fromConfig(tvparam()->get_system_value(key));
    return true;
}

} // namespace

int TVLocale::read_config()
{
    std::string value;
    if (config_value(C_SysFirstDay, value) && !value.empty())
        set_firstday(tv_string_to_int(value));
    if (config_value(C_SysDayFormat, value) && !value.empty())
        set_day_format(tv_string_to_int(value));
    if (config_value(C_SysIs24Hours, value) && !value.empty())
        set_24hour_clock(tv_string_to_bool(value));
    if (config_value(C_SysDefaultLocale, value) && !value.empty())
        set_defaultlocale(tv_string_to_bool(value));
    if (config_value(C_SysTimezone, value))
        set_timezone_str(value);
    if (config_value(C_SysCurrency, value))
        set_currency(value);
    if (config_value(C_SysGroupSep, value))
        set_group_separator(value);
    if (config_value(C_SysDecimal, value))
        set_decimal_separator(value);
    if (config_value(C_SysLatLonFormat, value) && !value.empty())
        set_latlon_format(tv_string_to_int(value));
    if (config_value(C_SysAltUnits, value) && !value.empty())
        set_alt_units(tv_string_to_bool(value));
    return TVErrC_ok;
}

int TVLocale::write_config() const
{
    const std::pair<const char*, std::string> entries[] = {
        {C_SysFirstDay, tv_int_to_string(get_firstday())},
        {C_SysDayFormat, tv_int_to_string(get_format_number())},
        {C_SysIs24Hours, tv_bool_to_string(is_24hour_clock())},
        {C_SysDefaultLocale, tv_bool_to_string(get_defaultlocale())},
        {C_SysTimezone, get_timezone_str()},
        {C_SysCurrency, toConfig(get_currency())},
        {C_SysGroupSep, toConfig(get_group_separator())},
        {C_SysDecimal, toConfig(get_decimal_separator())},
        {C_SysLatLonFormat, tv_int_to_string(get_latlon_format())},
        {C_SysAltUnits, tv_bool_to_string(get_alt_units())},
    };
    try {
        for (const auto& entry : entries) {
            const int result = tvparam()->set_system_value(entry.first, entry.second);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

void TVLocale::dump(std::ostream& out, int indent) const
{
    std::string pad = indent_text(indent);
    out << pad << "TVLocale\n";
    pad += "    ";
    out << pad << "dateStyle " << d->m_dateStyle << " firstday " << d->m_firstday << " is24 "
        << d->m_is24 << " defaultLocale " << d->m_defaultLocale << "\n"
        << pad << "dateFormat \"" << d->m_dateFormat << "\" dayFormat \"" << d->m_dayFormat
        << "\" short \"" << d->m_shortDayFormat << "\"\n"
        << pad << "timeFormat \"" << d->m_timeFormat << "\" short \"" << d->m_shortTimeFormat
        << "\"\n"
        << pad << "timezone " << d->m_timezone << " local " << d->m_localTimezone
        << " workhours " << d->m_workhours << "\n"
        << pad << "currency \"" << d->m_currency << "\" group \"" << d->m_groupSep
        << "\" decimal \"" << d->m_decimal << "\" latlon " << d->m_latLonFormat << " altUnits "
        << d->m_altUnits << "\n";
}

TVLocale* tvlocale()
{
    return TVLocale::instance();
}
