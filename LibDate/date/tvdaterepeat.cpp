#include "LibDate/date/tvdaterepeat.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <istream>
#include <iterator>
#include <ostream>
#include <utility>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/date/tvdateparser.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"
#include "LibDate/date/tvrepeatconfig.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

namespace {

using Term = TVDateExpTerm;

constexpr const char* C_ClassName = "TVDateRepeat";
const TVObjectPreReg s_preReg(C_ClassName, TVDateRepeat::create_tvobject);

const char* const C_TypeNames[TVDateRepeat::C_TypeCount] = {"Not repeating", "H/M/S",     "Days",
                                                            "Weeks",         "Months",    "Years",
                                                            "Expression",    "Set Dates", "Choice"};

// The messages of a stored text that doesn't read; the first %s is the entry.
const char* const C_MsgType = "%s should be of the form \"%s%s[0-6]\"";
const char* const C_MsgCaps = "%s should be of the form \"C=\"";
const char* const C_MsgNumber = "%s should be of the form \"%s%sN\"";
const char* const C_MsgList = "%s should be of the form \"%s%sD[,D]\"";
const char* const C_MsgDates = "%s should be of the form \"%s%sD\"";
const char* const C_MsgDate = "%s should be of the form \"%s%s\"DATE\"\"";
const char* const C_MsgExp = "%s should be of the form \"%s%s\"EXPRESSION\"\"";
const char* const C_MsgExclude = "%s should be of the form \"%s%sE[,E]\"";
const char* const C_MsgV1Days = "%s should be of the form \"%s(D)\"";
const char* const C_MsgV1Weekday = "%s should be of the form \"%s(mon tue wed)\"";
const char* const C_MsgV1Monthday = "%s should be of the form \"%s(1 2 4 12)\"";
const char* const C_MsgV1Yearday = "%s should be of the form \"%s(3 Jun 12 Sep)\"";
const char* const C_MsgUnknown = "I do not understand %s in %s";

// "When I Choose" and "Not repeating" step this far: as good as never.
constexpr int C_ChoiceDays = 3650;
constexpr int C_MonthCodeSpan = 200;
constexpr int C_MonthCodeDay = 100;
constexpr int C_MonthCodeWeekday = 140;
constexpr int C_MaxWeek = 53;
// Year codes are ordered by their day in a year that isn't a leap year.
constexpr int C_CommonYear = 2001;
// Before a month's length is known, a day counted from its end is placed
// as in the shortest month.
constexpr int C_ShortestMonth = 28;

TVDateSlot s_globalRange;
int s_globalLimit = -1;

std::string trim(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos)
        return std::string();
    return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

// A whole decimal number, optionally signed, and nothing else.
bool read_long(const std::string& text, long& out)
{
    const char* first = text.data();
    const char* last = first + text.size();
    if (first != last && *first == '+' && last - first > 1 && first[1] != '-')
        ++first;
    const auto result = std::from_chars(first, last, out);
    return first != last && result.ec == std::errc() && result.ptr == last;
}

bool read_int(const std::string& text, int& out)
{
    long value = 0;
    if (!read_long(text, value) || value < INT_MIN || value > INT_MAX)
        return false;
    out = static_cast<int>(value);
    return true;
}

bool read_ints(const std::string& text, std::vector<int>& out)
{
    std::vector<int> values;
    for (const std::string& piece : tv_tokenise(text, ',')) {
        int value = 0;
        if (!read_int(piece, value))
            return false;
        values.push_back(value);
    }
    if (values.empty() || text.back() == ',')
        return false;
    out.swap(values);
    return true;
}

std::string join_texts(const std::vector<std::string>& texts, const char* separator)
{
    std::string text;
    for (size_t i = 0; i < texts.size(); ++i)
        text += (i > 0 ? separator : "") + texts[i];
    return text;
}

template <class T>
std::string join(const std::vector<T>& values, const char* separator)
{
    std::vector<std::string> texts;
    for (const T& value : values)
        texts.push_back(std::to_string(value));
    return join_texts(texts, separator);
}

bool is_quoted(const std::string& value)
{
    return value.size() >= 2 && value.front() == '"' && value.back() == '"' &&
           value.find('"', 1) == value.size() - 1;
}

// An expression as the stored text can carry it.
std::string clean_expression(const std::string& text)
{
    std::string clean;
    for (char c : text) {
        if (c == '"')
            continue;
        clean += c == '\n' || c == '\r' ? ' ' : c;
    }
    return clean;
}

TVDate start_of_today()
{
    return TVDateUtils::start_day(TVDateUtils::now());
}

// A date in the stream form, or (inside quotes) a date expression read
// from the start of today; only a real date will do.
bool read_date_value(const std::string& value, TVDate& out)
{
    std::string inner = value;
    if (is_quoted(value))
        inner = value.substr(1, value.size() - 2);
    else if (value.find('"') != std::string::npos)
        return false;
    TVDate date;
    if (!tv_date_from_digits(inner, date)) {
        // The stream form holds a year of five digits.
        date = TVDateParser::parse_date(inner).apply(start_of_today(), nullptr);
        if (date.get_year() < 0 || date.get_year() > TVDate::C_InvalidDateYear)
            return false;
    }
    if (!date.is_ok())
        return false;
    out = date;
    return true;
}

int seconds_of_day(const TVDuration& time)
{
    return static_cast<int>(time.get_as_seconds());
}

bool is_time_of_day(const TVDuration& time)
{
    const long seconds = time.get_as_seconds();
    return seconds >= 0 && seconds < TVDate::C_DaySecs;
}

int clamp_int(long value)
{
    return static_cast<int>(std::max<long>(INT_MIN, std::min<long>(INT_MAX, value)));
}

void add_time(TVDateExp& exp, int seconds)
{
    exp.add_term(Term::T_Hour, seconds / TVDate::C_HourSecs);
    exp.add_term(Term::T_Minute, seconds % TVDate::C_HourSecs / TVDate::C_MinSecs);
    exp.add_term(Term::T_Second, seconds % TVDate::C_MinSecs);
}

bool is_month_code(int code)
{
    if (code >= -31 && code <= 30)
        return true;
    return code >= TVDateRepeat::C_WeekdayOfMonth && code < 100 && code % 10 < TVDate::C_WeekDays;
}

// The day of a month or year code in the working date's month.
void add_month_day(TVDateExp& exp, int code)
{
    if (code >= TVDateRepeat::C_WeekdayOfMonth)
        exp.add_term(Term::T_Weekday, code);
    else
        exp.add_term(Term::T_Day, code);
}

void add_year_day(TVDateExp& exp, int code)
{
    // From the 1st of January a week w is the locale's week number w (the
    // one that holds 1 January is 0), whatever day the step started on.
    exp.add_term(Term::T_Day, 0);
    int first = 0;
    int second = 0;
    if (TVDateRepeat::from_weekday_of_year(code, first, second)) {
        exp.add_term(Term::T_Month, 0);
        exp.add_term(Term::T_Week, first);
        exp.add_term(Term::T_Weekday, second);
        return;
    }
    TVDateRepeat::from_yearday(code, first, second);
    // The month first: a weekday of the month is counted in it.
    exp.add_term(Term::T_Month, second);
    add_month_day(exp, first);
}

// The earliest day of the month a month code can fall on, for ordering.
int earliest_day(int code)
{
    int occurrence = 0;
    int weekday = 0;
    if (TVDateRepeat::from_weekday_of_month(code, occurrence, weekday))
        return occurrence == TVDateRepeat::C_LastOccurrence ? C_ShortestMonth - TVDate::C_WeekDays
                                                            : occurrence * TVDate::C_WeekDays;
    return code < 0 ? C_ShortestMonth + code : code;
}

// Ordering keys: the place of a code in its week, month or year.
long order_key(int type, int code)
{
    if (type == TVDateRepeat::E_Weeks)
        return (code - tvlocale()->get_firstday() + TVDate::C_WeekDays) % TVDate::C_WeekDays;
    if (type == TVDateRepeat::E_Months)
        return earliest_day(code) * 1000L + code;
    int week = 0;
    int weekday = 0;
    if (TVDateRepeat::from_weekday_of_year(code, week, weekday))
        return (week * TVDate::C_WeekDays) * 1000L + code;
    int day = 0;
    int month = 0;
    TVDateRepeat::from_yearday(code, day, month);
    int dayOfYear = 0;
    int year = 0;
    TVDateUtils::calc_yearday(C_CommonYear, month, 0, year, dayOfYear);
    return (dayOfYear + earliest_day(day)) * 1000L + code;
}

// The codes of the type that mean something, without repeats, in the order
// of the days they fall on.
std::vector<int> ordered_codes(int type, const std::vector<int>& days)
{
    std::vector<int> codes;
    for (int code : days) {
        if (TVDateRepeat::is_day_code(type, code) &&
            std::find(codes.begin(), codes.end(), code) == codes.end())
            codes.push_back(code);
    }
    std::stable_sort(codes.begin(), codes.end(),
                     [type](int a, int b) { return order_key(type, a) < order_key(type, b); });
    return codes;
}

std::vector<int> ordered_times(const std::vector<TVDuration>& times)
{
    std::vector<int> seconds;
    for (const TVDuration& time : times) {
        if (is_time_of_day(time))
            seconds.push_back(seconds_of_day(time));
    }
    std::sort(seconds.begin(), seconds.end());
    seconds.erase(std::unique(seconds.begin(), seconds.end()), seconds.end());
    return seconds;
}

// ---- Words -------------------------------------------------------------------

std::string occurrence_word(int occurrence)
{
    return occurrence == TVDateRepeat::C_LastOccurrence
               ? std::string("last")
               : tvlocale()->get_ordinal(occurrence + 1, true);
}

// "15th", "last day", "2nd-last day", "2nd Mon", "last Fri".
std::string month_code_words(int code)
{
    const TVLocale* locale = tvlocale();
    int occurrence = 0;
    int weekday = 0;
    if (TVDateRepeat::from_weekday_of_month(code, occurrence, weekday))
        return occurrence_word(occurrence) + " " + locale->weekday_name(weekday, true);
    if (code >= 0)
        return locale->get_ordinal(code + 1, true);
    return (code == -1 ? std::string() : locale->get_ordinal(-code, true) + "-") + "last day";
}

// "3 Jun", "2nd Mon in Jun", "last day in Feb", "Mon week 10".
std::string yearday_to_string(int code)
{
    const TVLocale* locale = tvlocale();
    int first = 0;
    int second = 0;
    if (TVDateRepeat::from_weekday_of_year(code, first, second))
        return locale->weekday_name(second, true) + " week " + std::to_string(first + 1);
    TVDateRepeat::from_yearday(code, first, second);
    const std::string month = locale->month_name(second, true);
    if (first >= 0 && first < TVDateRepeat::C_WeekdayOfMonth)
        return std::to_string(first + 1) + " " + month;
    return month_code_words(first) + " in " + month;
}

std::string day_words(int type, int code)
{
    if (type == TVDateRepeat::E_Weeks)
        return tvlocale()->weekday_name(code, true);
    return type == TVDateRepeat::E_Months ? month_code_words(code) : yearday_to_string(code);
}

std::string to_count(long count)
{
    return count == 1 ? std::string() : std::to_string(count) + " ";
}

std::string natural_date(const TVDate& date)
{
    return date.to_string(TVDateUtils::start_day(date) == date ? "%d %b %Y" : "%d %b %Y %H:%M");
}

std::string time_words(int seconds)
{
    return TVDuration(seconds).to_string(false);
}

// One side of an exclusion: the date in the default zone, with its time
// unless that is the time the side takes by itself.
std::string exclude_side(const TVDate& date, int impliedSecond)
{
    TVDate shown(date);
    shown.set_timezone(TVDate::C_DefaultTime);
    TVDateDetails details(shown, TVDate::C_OriginalTime);
    const int second = details.m_hour * TVDate::C_HourSecs + details.m_minute * TVDate::C_MinSecs +
                       details.m_second;
    return shown.to_string(second == impliedSecond ? "%d %b %Y" : "%d %b %Y %H:%M:%S");
}

// Exclusions are written as dates the parser reads back: a year of four
// digits, well clear of the blank and invalid years in any zone.
bool in_exclusion_years(const TVDate& date)
{
    return date.is_ok() && date.get_year() >= TVDateRepeat::C_ExcludeFirstYear &&
           date.get_year() <= TVDateRepeat::C_ExcludeLastYear;
}

bool read_exclusions(const std::string& text, TVDateSet& out)
{
    TVDateSet set;
    const std::string whole = trim(text);
    if (whole.empty()) {
        out = set;
        return true;
    }
    if (whole.back() == ',')
        return false;
    const TVDate startBase = start_of_today();
    const TVDate endBase = TVDateUtils::end_day(startBase);
    for (const std::string& piece : tv_tokenise(whole, ',')) {
        std::vector<std::string> sides = tv_tokenise(piece, '-');
        if (sides.empty() || sides.size() > 2 || piece.back() == '-')
            return false;
        const std::string first = trim(sides.front());
        const std::string second = trim(sides.back());
        if (first.empty() || second.empty())
            return false;
        const TVDate start = TVDateParser::parse_date(first).apply(startBase, nullptr);
        const TVDate end = TVDateParser::parse_date(second).apply(endBase, nullptr);
        if (!in_exclusion_years(start) || !in_exclusion_years(end))
            return false;
        set.add(TVDateSlot(start, end, true), 0);
    }
    out = set;
    return true;
}

} // namespace

// ---- The private record -------------------------------------------------------

struct TVDateRepeat::Private
{
    E_RepeatType m_type = E_NoRepeat;
    int m_interval = C_DefaultInterval;
    std::vector<int> m_days;
    std::vector<TVDuration> m_at;
    std::vector<TVDate> m_set;
    int m_work = C_DefaultWork;
    long m_offset = C_OffsetLast;
    TVDate m_rangeStart{TVDate::E_DateBlank};
    TVDate m_rangeEnd{TVDate::E_DateBlank};
    TVDateSet m_exclude;
    std::string m_startExp;
    std::string m_dueExp;
    std::vector<TVDateSlot> m_slots;
    std::vector<TVDateSlot> m_oldSlots;
    TVDateExp m_start;
    TVDateExp m_due;
    int m_capability = 0;
    int m_fixed = 0;
    int m_state = 0;
    const TVRepeatConfig* m_compiledWith = nullptr; // only compared, never followed

    // Back to the defaults of everything the stored text carries; the
    // owner's capability, fixed bits and fixed bounds stay.
    void clear_rule()
    {
        Private fresh;
        fresh.m_capability = m_capability;
        fresh.m_fixed = m_fixed;
        if (m_fixed & (1 << E_FixedRangeStart))
            fresh.m_rangeStart = m_rangeStart;
        if (m_fixed & (1 << E_FixedRangeEnd))
            fresh.m_rangeEnd = m_rangeEnd;
        *this = fresh;
    }
};

// ---- Object ---------------------------------------------------------------------

TVDateRepeat::TVDateRepeat() : d(std::make_unique<Private>())
{
    set_defaults(true);
    register_tvobject();
}

TVDateRepeat::TVDateRepeat(const TVDateRepeat& other)
    : TVObject(other), d(std::make_unique<Private>(*other.d))
{
    register_tvobject();
}

TVDateRepeat& TVDateRepeat::operator=(const TVDateRepeat& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

TVDateRepeat::~TVDateRepeat() = default;

int TVDateRepeat::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDateRepeat>(out, source, C_ClassName);
}

void TVDateRepeat::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDateRepeat::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int)
{
    try {
        std::string text = out != nullptr ? to_string() : std::string();
        int result = serialise_string(in, out, prefix, "r", text, false);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (in != nullptr && result != TVErrC_okEndOfFile) {
            result = from_string(text);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDateRepeat::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ');
    out << pad << "TVDateRepeat " << to_string() << ", capability " << d->m_capability << ", fixed "
        << d->m_fixed << ", state " << d->m_state << ", " << d->m_slots.size() << " slots, "
        << d->m_oldSlots.size() << " old slots\n";
    if (d->m_state > 0) {
        out << pad << "    start: " << d->m_start << "\n";
        out << pad << "    due: " << d->m_due << "\n";
    }
}

void TVDateRepeat::set_defaults(bool)
{
    *d = Private();
}

bool TVDateRepeat::operator==(const TVDateRepeat& other) const
{
    const Private& a = *d;
    const Private& b = *other.d;
    return a.m_type == b.m_type && a.m_interval == b.m_interval && a.m_days == b.m_days &&
           a.m_at == b.m_at && a.m_set == b.m_set && a.m_work == b.m_work &&
           a.m_offset == b.m_offset && a.m_rangeStart == b.m_rangeStart &&
           a.m_rangeEnd == b.m_rangeEnd && a.m_exclude == b.m_exclude &&
           a.m_startExp == b.m_startExp && a.m_dueExp == b.m_dueExp &&
           a.m_capability == b.m_capability && a.m_fixed == b.m_fixed;
}

void TVDateRepeat::initialise(const TVRepeatConfig* config)
{
    if (config != nullptr && config->get_capability() != d->m_capability) {
        d->m_capability = config->get_capability();
        invalidate();
    }
    populate_expressions(config);
}

bool TVDateRepeat::sanity_check()
{
    const Private before = *d;
    if (d->m_interval < 0)
        d->m_interval = C_DefaultInterval;
    std::vector<int> days;
    for (int code : d->m_days) {
        if (is_day_code(d->m_type, code) && std::find(days.begin(), days.end(), code) == days.end())
            days.push_back(code);
    }
    if (uses_days())
        d->m_days = days;
    std::vector<TVDuration> times;
    for (const TVDuration& time : d->m_at) {
        const TVDuration whole(time.get_as_seconds());
        if (is_time_of_day(whole) && std::find(times.begin(), times.end(), whole) == times.end())
            times.push_back(whole);
    }
    d->m_at = times;
    if (before.m_days == d->m_days && before.m_at == d->m_at && before.m_interval == d->m_interval)
        return true;
    invalidate();
    return false;
}

// ---- The rule -----------------------------------------------------------------------

TVIdString TVDateRepeat::get_types()
{
    TVIdString list;
    for (int type = 0; type < C_TypeCount; ++type)
        list.add(TVId(type, -1, -1), C_TypeNames[type]);
    return list;
}

TVDateRepeat::E_RepeatType TVDateRepeat::get_type() const
{
    return d->m_type;
}

void TVDateRepeat::set_type(E_RepeatType type)
{
    set_type_int(type);
}

void TVDateRepeat::set_type_int(int type)
{
    d->m_type = type >= 1 && type < C_TypeCount ? static_cast<E_RepeatType>(type) : E_NoRepeat;
    invalidate();
}

int TVDateRepeat::get_interval() const
{
    return d->m_interval;
}

int TVDateRepeat::get_used_interval() const
{
    return d->m_interval < 1 ? 1 : d->m_interval;
}

void TVDateRepeat::set_interval(int interval)
{
    d->m_interval = interval;
    invalidate();
}

void TVDateRepeat::adjust_interval(int delta)
{
    const long moved = static_cast<long>(get_used_interval()) + delta;
    set_interval(moved < 1 ? 1 : clamp_int(moved));
}

const std::vector<int>& TVDateRepeat::get_days() const
{
    return d->m_days;
}

void TVDateRepeat::set_days(const std::vector<int>& days)
{
    d->m_days = days;
    invalidate();
}

const std::vector<TVDuration>& TVDateRepeat::get_at_times() const
{
    return d->m_at;
}

void TVDateRepeat::set_at_times(const std::vector<TVDuration>& times)
{
    d->m_at = times;
    invalidate();
}

const std::vector<TVDate>& TVDateRepeat::get_dateset() const
{
    return d->m_set;
}

void TVDateRepeat::set_dateset(const std::vector<TVDate>& dates)
{
    d->m_set = dates;
    invalidate();
}

TVDateRepeat::E_WorkdayType TVDateRepeat::get_workday(int& id) const
{
    const int work = d->m_work;
    if (work < 0) {
        id = work == INT_MIN ? INT_MAX : -work;
        return E_WorkFixed;
    }
    id = -1;
    if (work >= E_WorkNext && work <= E_WorkBefore)
        return static_cast<E_WorkdayType>(work);
    if (work >= C_WorkBefore) {
        id = work - C_WorkBefore;
        return E_WorkBefore;
    }
    if (work >= C_WorkNextBase) {
        id = work - C_WorkNextBase;
        return E_WorkNext;
    }
    id = work;
    return E_WorkNone;
}

void TVDateRepeat::set_workday(int kind, int id)
{
    // The default set (any id not above it) takes the short form: the kind.
    const bool named = id > TVRepeatConfig::C_DefaultSet;
    switch (kind) {
    case E_WorkNext:
        d->m_work = named && id < C_WorkBefore - C_WorkNextBase ? id + C_WorkNextBase : kind;
        break;
    case E_WorkFixed:
        d->m_work = named ? -id : kind;
        break;
    case E_WorkBefore:
        d->m_work = named && id <= INT_MAX - C_WorkBefore ? id + C_WorkBefore : kind;
        break;
    default:
        d->m_work = C_DefaultWork;
        break;
    }
    invalidate();
}

int TVDateRepeat::get_work() const
{
    return d->m_work;
}

long TVDateRepeat::get_offset() const
{
    return d->m_offset;
}

TVDateRepeat::E_OffsetKind TVDateRepeat::get_offset_details(TVDuration& duration, long& days) const
{
    duration = TVDuration();
    days = 0;
    const long offset = d->m_offset;
    if (d->m_type == E_Expression || offset == C_OffsetExpression)
        return E_OffsetByExpression;
    if (offset == C_OffsetBlank)
        return E_OffsetNoEnd;
    if (offset < 0) {
        const long n = offset == LONG_MIN ? LONG_MAX : -offset;
        days = n / C_OffsetDays;
        duration = TVDuration(n % C_OffsetDays - C_OffsetDuration);
        return E_OffsetDayTime;
    }
    if (offset >= C_OffsetDuration) {
        duration = TVDuration(offset - C_OffsetDuration);
        return E_OffsetSpan;
    }
    return E_OffsetLastRepeat;
}

void TVDateRepeat::set_offset_duration(const TVDuration& span)
{
    const long seconds = std::labs(span.get_as_seconds());
    d->m_offset = seconds > LONG_MAX - C_OffsetDuration ? LONG_MAX : seconds + C_OffsetDuration;
    invalidate();
}

void TVDateRepeat::set_offset_time(const TVDuration& time, long days)
{
    const long seconds =
        ((time.get_as_seconds() % TVDate::C_DaySecs) + TVDate::C_DaySecs) % TVDate::C_DaySecs;
    const long safeDays = std::max(0L, std::min(days, LONG_MAX / C_OffsetDays - 1));
    d->m_offset = -(safeDays * C_OffsetDays + seconds + C_OffsetDuration);
    invalidate();
}

void TVDateRepeat::set_offset_last()
{
    d->m_offset = C_OffsetLast;
    invalidate();
}

void TVDateRepeat::set_offset_blank()
{
    d->m_offset = C_OffsetBlank;
    invalidate();
}

void TVDateRepeat::set_offset_as_expression()
{
    d->m_offset = C_OffsetExpression;
    invalidate();
}

const std::string& TVDateRepeat::get_exp() const
{
    return d->m_startExp;
}

void TVDateRepeat::set_exp(const std::string& text)
{
    d->m_startExp = clean_expression(text);
    invalidate();
}

const std::string& TVDateRepeat::get_offset_exp() const
{
    return d->m_dueExp;
}

void TVDateRepeat::set_offset_exp(const std::string& text)
{
    d->m_dueExp = clean_expression(text);
    invalidate();
}

void TVDateRepeat::set_norepeat(bool noRepeat)
{
    if (noRepeat)
        set_type(E_NoRepeat);
    else if (d->m_type == E_NoRepeat)
        set_type(E_Days);
}

bool TVDateRepeat::is_repeating() const
{
    return d->m_type != E_NoRepeat && d->m_type != E_Choice;
}

bool TVDateRepeat::is_manual() const
{
    return d->m_type == E_Choice;
}

const TVDate& TVDateRepeat::get_range_start() const
{
    return d->m_rangeStart;
}

const TVDate& TVDateRepeat::get_range_end() const
{
    return d->m_rangeEnd;
}

void TVDateRepeat::set_range_start(const TVDate& date, bool fixed)
{
    d->m_rangeStart = date;
    set_fixed(E_FixedRangeStart, fixed);
}

void TVDateRepeat::set_range_end(const TVDate& date, bool fixed)
{
    d->m_rangeEnd = date;
    set_fixed(E_FixedRangeEnd, fixed);
}

bool TVDateRepeat::get_fixed(E_Fixed which) const
{
    return (d->m_fixed & (1 << which)) != 0;
}

void TVDateRepeat::set_fixed(E_Fixed which, bool fixed)
{
    if (fixed)
        d->m_fixed |= 1 << which;
    else
        d->m_fixed &= ~(1 << which);
    invalidate();
}

// ---- Exclusions ----------------------------------------------------------------------

const TVDateSet& TVDateRepeat::get_exclude() const
{
    return d->m_exclude;
}

void TVDateRepeat::set_exclude(const TVDateSet& set)
{
    d->m_exclude = set;
    invalidate();
}

int TVDateRepeat::set_exclude(const std::string& text)
{
    TVDateSet set;
    if (!read_exclusions(text, set))
        return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgExclude, text.c_str(),
                         C_RepeatExclude, C_RepeatAssign);
    set_exclude(set);
    return TVErrC_ok;
}

std::string TVDateRepeat::get_exclude_string() const
{
    std::vector<std::string> entries;
    for (int i = 0; i < d->m_exclude.size(); ++i) {
        const TVDateSlot& slot = d->m_exclude[i].m_slot;
        const std::string first = exclude_side(slot.get_start(), 0);
        const std::string second = exclude_side(slot.get_end(), TVDate::C_DaySecs - 1);
        entries.push_back(first == second ? first : first + "-" + second);
    }
    return join_texts(entries, ",");
}

void TVDateRepeat::exclude_day(const TVDate& date)
{
    if (date.is_ok())
        exclude_range(TVDateUtils::day_slot(date));
}

void TVDateRepeat::exclude_range(const TVDateSlot& slot)
{
    if (!in_exclusion_years(slot.get_start()) || !in_exclusion_years(slot.get_end()))
        return;
    d->m_exclude.add(TVDateSlot(slot.get_start(), slot.get_end(), true), 0);
    invalidate();
}

bool TVDateRepeat::is_excluded(const TVDate& date) const
{
    return d->m_exclude.match(date);
}

// ---- Capability -------------------------------------------------------------------------

int TVDateRepeat::encode_capability(int rangeType, int levelType)
{
    return rangeType + levelType * 8;
}

int TVDateRepeat::get_capability() const
{
    return d->m_capability;
}

void TVDateRepeat::set_capability(int capability)
{
    d->m_capability = capability;
    invalidate();
}

int TVDateRepeat::get_range_type() const
{
    const int range = d->m_capability & 7;
    return range == E_RangeSpan || range == E_RangeByEnd ? range : E_RangeMoment;
}

bool TVDateRepeat::get_level_type() const
{
    return ((d->m_capability >> 3) & 3) == 1;
}

// ---- What each type uses -------------------------------------------------------------------

bool TVDateRepeat::uses_interval() const
{
    return d->m_type >= E_Seconds && d->m_type <= E_Years;
}

bool TVDateRepeat::uses_days() const
{
    return d->m_type >= E_Weeks && d->m_type <= E_Years;
}

bool TVDateRepeat::uses_at() const
{
    return d->m_type >= E_Days && d->m_type <= E_Years;
}

bool TVDateRepeat::uses_set() const
{
    return d->m_type == E_SetDates;
}

bool TVDateRepeat::uses_range() const
{
    return d->m_type >= E_Seconds && d->m_type <= E_Expression;
}

bool TVDateRepeat::uses_expression() const
{
    return d->m_type == E_Expression;
}

bool TVDateRepeat::uses_offset() const
{
    return d->m_type <= E_Months || d->m_type == E_Expression;
}

bool TVDateRepeat::uses_offset_expression() const
{
    if (d->m_type == E_Expression)
        return true;
    const bool stepped = (d->m_type >= E_Seconds && d->m_type <= E_Years) || uses_set();
    return stepped && d->m_offset == C_OffsetExpression;
}

bool TVDateRepeat::uses_workday() const
{
    return uses_interval();
}

// ---- Codes -------------------------------------------------------------------------------

int TVDateRepeat::to_weekday_of_month(int occurrence, int weekday)
{
    return Term::encode_weekday_month(occurrence, weekday);
}

bool TVDateRepeat::from_weekday_of_month(int code, int& occurrence, int& weekday)
{
    if (code < C_WeekdayOfMonth)
        return false;
    Term::decode_weekday_month(code, occurrence, weekday);
    return true;
}

int TVDateRepeat::to_yearday(int day, int month)
{
    return month * C_MonthCodeSpan + day + C_MonthCodeDay;
}

int TVDateRepeat::to_yearday_weekday(int occurrence, int weekday, int month)
{
    return month * C_MonthCodeSpan + C_MonthCodeWeekday + occurrence * 10 + weekday;
}

bool TVDateRepeat::from_yearday(int code, int& day, int& month)
{
    if (code < 0 || code >= C_WeekOfYear)
        return false;
    month = code / C_MonthCodeSpan;
    day = code % C_MonthCodeSpan - C_MonthCodeDay;
    return true;
}

int TVDateRepeat::to_weekday_of_year(int week, int weekday)
{
    return C_WeekOfYear + week * 10 + weekday;
}

bool TVDateRepeat::from_weekday_of_year(int code, int& week, int& weekday)
{
    if (code < C_WeekOfYear)
        return false;
    week = (code - C_WeekOfYear) / 10;
    weekday = code % 10;
    return true;
}

bool TVDateRepeat::is_day_code(int type, int code)
{
    int first = 0;
    int second = 0;
    switch (type) {
    case E_Weeks:
        return code >= 0 && code < TVDate::C_WeekDays;
    case E_Months:
        return is_month_code(code);
    case E_Years:
        if (from_weekday_of_year(code, first, second))
            return first <= C_MaxWeek && second < TVDate::C_WeekDays;
        return from_yearday(code, first, second) && second < TVDate::C_YearMonths &&
               is_month_code(first);
    default:
        return false;
    }
}

// ---- Compiling and stepping ----------------------------------------------------------------

void TVDateRepeat::populate_expressions(const TVRepeatConfig* config)
{
    Private& p = *d;
    p.m_state = 1;
    p.m_compiledWith = config;
    p.m_start.set_defaults(true);
    p.m_due.set_defaults(true);
    const int step = get_used_interval();

    int id = -1;
    const E_WorkdayType kind = uses_workday() ? get_workday(id) : E_WorkNone;
    const std::string tag = config != nullptr ? config->get_workset_tag(id) : std::string();
    TVDateExp work1;
    TVDateExp work2;
    if (kind == E_WorkBefore)
        work1.add_term(Term::T_WorkDay, 0, tag);
    if (kind == E_WorkFixed)
        work2.add_term(Term::T_Fixed, 0, tag);
    else if (kind == E_WorkNext)
        work2.add_term(Term::T_WorkDay, 0, tag);

    TVDateExp& start = p.m_start;
    switch (p.m_type) {
    case E_NoRepeat:
    case E_Choice:
        start.add_term(Term::T_AddDay, C_ChoiceDays);
        start.add_term(Term::T_AddSecond, step);
        break;
    case E_Seconds:
        start.add_term(Term::T_AddSecond, step);
        start.add_exp(work1);
        start.add_exp(work2);
        break;
    case E_Days:
    case E_Weeks:
    case E_Months:
    case E_Years: {
        // One choice of the date language: every listed day still ahead in
        // the week (month, year) of the date stepped from, at every time,
        // nearest first; and last the step of the interval onto the first
        // day at the first time. Each alternative sets its own day and time,
        // so each is measured against the date stepped from, whether or not
        // that is an occurrence (a first step from now, a day carried past
        // a short month's end). Without days the alternatives are the times
        // of the day stepped from; without times the time is midnight.
        const Term::E_Type add = p.m_type == E_Days     ? Term::T_AddDay
                                 : p.m_type == E_Weeks  ? Term::T_AddWeek
                                 : p.m_type == E_Months ? Term::T_AddMonth
                                                        : Term::T_AddYear;
        auto add_code = [&](int code) {
            if (p.m_type == E_Weeks)
                start.add_term(Term::T_Weekday, code);
            else if (p.m_type == E_Months)
                add_month_day(start, code);
            else if (p.m_type == E_Years)
                add_year_day(start, code);
        };
        std::vector<int> codes = ordered_codes(p.m_type, p.m_days);
        std::vector<int> times = ordered_times(p.m_at);
        if (times.empty())
            times.push_back(0);
        // Days type: no day to choose, a code that adds no term.
        const bool byDay = !codes.empty();
        if (!byDay)
            codes.push_back(0);
        start.add_term(Term::T_Open);
        for (int code : codes) {
            for (int time : times) {
                if (byDay)
                    add_code(code);
                add_time(start, time);
                start.add_term(Term::T_Or);
            }
        }
        start.add_term(add, step);
        start.add_exp(work1);
        if (byDay)
            add_code(codes.front());
        add_time(start, times.front());
        start.add_term(Term::T_Close);
        start.add_exp(work2);
        break;
    }
    case E_Expression:
        start = TVDateParser::parse_date(p.m_startExp);
        break;
    case E_SetDates: {
        const TVDate now = TVDateUtils::now();
        std::vector<TVDate> dates;
        for (const TVDate& date : p.m_set) {
            if (date.is_ok() && date > now)
                dates.push_back(date);
        }
        std::sort(dates.begin(), dates.end(), compare_tvdates);
        start.add_term(Term::T_Open);
        for (size_t i = 0; i < dates.size(); ++i) {
            // In the date's own zone, so that the moment comes out whatever
            // zone the base is in.
            TVDateDetails when(dates[i], TVDate::C_OriginalTime);
            if (i > 0)
                start.add_term(Term::T_Or);
            start.add_term(Term::T_Zone, when.m_timeZone);
            start.add_term(Term::T_Day, when.m_dayMonth);
            start.add_term(Term::T_Month, when.m_month);
            start.add_term(Term::T_Year, when.m_year);
            start.add_term(Term::T_Hour, when.m_hour);
            start.add_term(Term::T_Minute, when.m_minute);
            start.add_term(Term::T_Second, when.m_second);
            start.add_term(Term::T_Micro, when.m_micro);
        }
        start.add_term(Term::T_Close);
        break;
    }
    }

    const int sign = get_range_type() == E_RangeSpan ? 1 : -1;
    TVDuration span;
    long days = 0;
    TVDateExp& due = p.m_due;
    switch (get_offset_details(span, days)) {
    case E_OffsetSpan:
        due.add_term(Term::T_Relative, 0, C_RelTime);
        due.add_term(Term::T_AddSecond, clamp_int(sign * span.get_as_seconds()));
        break;
    case E_OffsetDayTime:
        due.add_term(Term::T_Relative, 0, C_RelTime);
        if (days != 0)
            due.add_term(Term::T_AddDay, clamp_int(sign * days));
        add_time(due, seconds_of_day(span));
        break;
    case E_OffsetLastRepeat:
        due.add_term(Term::T_Relative, 0, C_RelLast);
        break;
    case E_OffsetNoEnd:
        // No end is the blank date, which lies after every real date: a
        // slot that ends there holds everything from its start on.
        due.add_term(Term::T_Blank);
        break;
    case E_OffsetByExpression:
        due = TVDateParser::parse_date(p.m_dueExp);
        break;
    }
}

const TVDateExp& TVDateRepeat::get_start_exp(const TVRepeatConfig* config)
{
    compile_if_needed(config);
    return d->m_start;
}

const TVDateExp& TVDateRepeat::get_due_exp(const TVRepeatConfig* config)
{
    compile_if_needed(config);
    return d->m_due;
}

int TVDateRepeat::get_state() const
{
    return d->m_state;
}

void TVDateRepeat::invalidate()
{
    d->m_state = 0;
}

void TVDateRepeat::compile_if_needed(const TVRepeatConfig* config)
{
    if (d->m_state == 0 || d->m_compiledWith != config)
        populate_expressions(config);
}

TVDate TVDateRepeat::apply_expression(const TVDate& date, const TVDateExp& exp,
                                      const TVRepeatConfig* config) const
{
    TVDate current = exp.apply(date, config);
    TVDate previous = date;
    for (int steps = 0; d->m_exclude.match(current); ++steps) {
        if (current == previous || steps >= C_MaxExcludedSteps)
            return date;
        previous = current;
        current = exp.apply(current, config);
    }
    return current;
}

TVDate TVDateRepeat::next_date(const TVDate& date, const TVRepeatConfig* config)
{
    compile_if_needed(config);
    if (d->m_type == E_NoRepeat)
        return TVDate(TVDate::E_DateBlank);
    return apply_expression(date, d->m_start, config);
}

// ---- Slots -------------------------------------------------------------------------------

void TVDateRepeat::set_global_range(const TVDateSlot& range, int limit)
{
    s_globalRange = range;
    s_globalLimit = limit;
}

const TVDateSlot& TVDateRepeat::get_global_range()
{
    return s_globalRange;
}

int TVDateRepeat::get_global_limit()
{
    return s_globalLimit;
}

TVDateSlot TVDateRepeat::generate_slot(const TVDate& previousEnd, const TVDate& start,
                                       const TVDate& lastDue, const TVRepeatConfig* config)
{
    compile_if_needed(config);
    TVDate end = start;
    if (get_range_type() != E_RangeSpan)
        return TVDateSlot(start, end, true);
    if (!previousEnd.is_ok())
        end = d->m_due.apply(start, config);
    else if (d->m_due.get_relative() == C_RelTime)
        end = apply_expression(start, d->m_due, config);
    else if (d->m_offset == C_OffsetLast && d->m_type != E_Expression && lastDue.is_ok())
        end = lastDue;
    else
        end = apply_expression(previousEnd, d->m_due, config);
    return TVDateSlot(start, end, true);
}

void TVDateRepeat::generate_slots(const TVDateSlot& seed, const TVDateSlot& window, int limit,
                                  const TVRepeatConfig* config, std::vector<TVDateSlot>& out)
{
    out.clear();
    const size_t most = static_cast<size_t>(limit < 0 || limit > C_MaxSlots ? C_MaxSlots : limit);
    TVDate base = window.get_start().is_ok() ? window.get_start() : TVDateUtils::now();
    if (seed.get_start().is_ok()) {
        out.push_back(seed);
        if (seed.get_start() > base)
            base = get_range_type() == E_RangeByEnd && seed.get_end().is_ok() ? seed.get_end()
                                                                              : seed.get_start();
    }
    if (d->m_type == E_NoRepeat)
        return;
    // A blank or invalid end of the window or the range lies after every
    // date, so it bounds nothing; C_MaxSlots steps bound every run.
    TVDate previousEnd = out.empty() ? TVDate() : out.back().get_end();
    for (int steps = 0; steps < C_MaxSlots; ++steps) {
        const TVDate next = next_date(base, config);
        if (!next.is_ok() || !(next > base) || next > window.get_end() || next > d->m_rangeEnd ||
            out.size() >= most)
            break;
        const TVDateSlot slot = generate_slot(previousEnd, next, previousEnd, config);
        if (!d->m_rangeStart.is_ok() || !(slot.get_start() < d->m_rangeStart))
            out.push_back(slot);
        previousEnd = slot.get_end();
        base = next;
    }
}

int TVDateRepeat::generate(bool force, const TVDateSlot& seed, const TVRepeatConfig* config)
{
    Private& p = *d;
    if (p.m_type == E_NoRepeat) {
        p.m_slots.clear();
        if (seed.get_start().is_ok())
            p.m_slots.push_back(seed);
        p.m_oldSlots.clear();
        return TVErrC_ok;
    }
    if (p.m_state == 2 && !force)
        return TVErrC_ok;
    if (s_globalLimit >= 0 && s_globalRange.get_start().is_ok()) {
        generate_slots(seed, s_globalRange, s_globalLimit, config, p.m_slots);
        p.m_state = 2;
    }
    p.m_oldSlots.clear();
    if (p.m_rangeStart.is_ok()) {
        const TVDate first = p.m_slots.empty() ? TVDateUtils::now() : p.m_slots.front().get_start();
        // Up to just before the first slot, which the slots hold already.
        const TVDate before = first - TVDuration(0, 0, 1);
        if (p.m_rangeStart < before)
            generate_slots(TVDateSlot(), TVDateSlot(p.m_rangeStart, before, false), -1, config,
                           p.m_oldSlots);
    }
    return TVErrC_ok;
}

const std::vector<TVDateSlot>& TVDateRepeat::get_slots() const
{
    return d->m_slots;
}

const std::vector<TVDateSlot>& TVDateRepeat::get_old_slots() const
{
    return d->m_oldSlots;
}

bool TVDateRepeat::load_slots(const TVDateRepeat& other)
{
    if (!(*this == other))
        return false;
    d->m_slots = other.d->m_slots;
    d->m_oldSlots = other.d->m_oldSlots;
    d->m_start = other.d->m_start;
    d->m_due = other.d->m_due;
    d->m_compiledWith = other.d->m_compiledWith;
    d->m_state = other.d->m_state;
    return true;
}

void TVDateRepeat::apply_seed_slot(const TVDateSlot& slot, bool takeDay)
{
    const TVDate& start = slot.get_start();
    if (!start.is_ok())
        return;
    Private& p = *d;
    TVDateDetails when(start, TVDate::C_OriginalTime);
    if (uses_at() && p.m_at.size() <= 1)
        p.m_at = {TVDuration(when.m_hour * TVDate::C_HourSecs + when.m_minute * TVDate::C_MinSecs +
                             when.m_second)};

    if (takeDay && uses_days()) {
        // Every code that names the seed's day, the first of them the one
        // the rule takes if it holds none of them.
        const int day = when.m_dayMonth;
        const int length = TVDateUtils::days_in_month(when.m_month, when.m_year);
        const int weekday = when.m_dayWeek;
        std::vector<int> names;
        if (p.m_type == E_Weeks) {
            names = {weekday};
        } else {
            std::vector<int> inMonth = {day, to_weekday_of_month(day / TVDate::C_WeekDays, weekday),
                                        day - length};
            if (day + TVDate::C_WeekDays >= length)
                inMonth.push_back(to_weekday_of_month(C_LastOccurrence, weekday));
            // A rule of weekdays of the month stays one.
            const bool byWeekday =
                !p.m_days.empty() && std::all_of(p.m_days.begin(), p.m_days.end(), [&](int code) {
                    int dayCode = code;
                    int month = 0;
                    if (p.m_type == E_Years && !from_yearday(code, dayCode, month))
                        return false;
                    return dayCode >= C_WeekdayOfMonth;
                });
            if (byWeekday)
                std::swap(inMonth[0], inMonth[1]);
            for (int code : inMonth)
                names.push_back(p.m_type == E_Months ? code : to_yearday(code, when.m_month));
            if (p.m_type == E_Years)
                names.push_back(to_weekday_of_year(when.m_weekYear, weekday));
        }
        const bool held = std::any_of(p.m_days.begin(), p.m_days.end(), [&](int code) {
            return std::find(names.begin(), names.end(), code) != names.end();
        });
        if (!held)
            p.m_days = {names.front()};
    }

    TVDuration span;
    long days = 0;
    const E_OffsetKind kind = get_offset_details(span, days);
    if (get_range_type() == E_RangeSpan && slot.get_end().is_ok() && slot.get_end() > start &&
        (kind == E_OffsetSpan || kind == E_OffsetLastRepeat))
        set_offset_duration(slot.get_end() - start);
    invalidate();
}

// ---- Text -------------------------------------------------------------------------------

std::string TVDateRepeat::get_days_str() const
{
    if (!uses_days() || d->m_days.empty())
        return std::string();
    std::vector<std::string> words;
    for (int code : d->m_days)
        words.push_back(day_words(d->m_type, code));
    return "On " + join_texts(words, ", ");
}

std::string TVDateRepeat::workday_to_natural(const TVRepeatConfig* config, bool midSentence) const
{
    int id = -1;
    const E_WorkdayType kind = get_workday(id);
    const std::string name = config != nullptr ? config->get_workset_name(id)
                                               : std::string(TVRepeatConfig::C_DefaultName);
    switch (kind) {
    case E_WorkNext:
        return (midSentence ? " on next " : "Next ") + name + (midSentence ? " day" : " day.");
    case E_WorkFixed:
        return (midSentence ? " only on " : "Only on ") + name + (midSentence ? " days" : " days.");
    case E_WorkBefore:
        return (midSentence ? " if " : "If ") + name +
               (midSentence ? " days available" : " days available.");
    default:
        return std::string();
    }
}

std::string TVDateRepeat::offset_to_natural() const
{
    TVDuration span;
    long days = 0;
    const bool forward = get_range_type() == E_RangeSpan;
    switch (get_offset_details(span, days)) {
    case E_OffsetSpan:
        return "Due date at " + span.to_string_day(false) +
               (forward ? " after start." : " before end.");
    case E_OffsetDayTime: {
        std::string text =
            days == 0 ? std::string("At ")
                      : (days == 1 ? std::string("1 day ") : std::to_string(days) + " days ") +
                            (forward ? "after at " : "before at ");
        return text + time_words(seconds_of_day(span)) + ".";
    }
    case E_OffsetLastRepeat:
        return "End of last repeat.";
    case E_OffsetByExpression:
        return d->m_dueExp.empty() ? std::string() : "Due date at " + d->m_dueExp + ".";
    case E_OffsetNoEnd:
        break;
    }
    return std::string();
}

std::string TVDateRepeat::range_to_string() const
{
    const TVDate& from = d->m_rangeStart;
    const TVDate& to = d->m_rangeEnd;
    std::string text;
    if (from.is_ok())
        text = "From " + natural_date(from) + (to.is_ok() ? " to " + natural_date(to) : "");
    else if (to.is_ok())
        text = "To " + natural_date(to);
    if (d->m_exclude.size() > 0) {
        std::string list = get_exclude_string();
        list = tv_replace_substr(list, ",", ", ");
        text += (text.empty() ? "Excluding " : " excluding ") + list;
    }
    return text.empty() ? text : text + ".";
}

std::string TVDateRepeat::to_natural(const TVRepeatConfig* config) const
{
    const Private& p = *d;
    std::string text;
    switch (p.m_type) {
    case E_NoRepeat:
        text = "Not repeating.";
        break;
    case E_Choice:
        text = "When I Choose.";
        break;
    case E_Expression:
        text = p.m_startExp + ".";
        break;
    case E_SetDates: {
        std::vector<std::string> dates;
        for (const TVDate& date : p.m_set)
            dates.push_back(natural_date(date));
        text = "On " + (dates.empty() ? std::string("no dates") : join_texts(dates, ", ")) + ".";
        break;
    }
    default: {
        long count = get_used_interval();
        std::string unit = p.m_type == E_Days     ? "day"
                           : p.m_type == E_Weeks  ? "week"
                           : p.m_type == E_Months ? "month"
                           : p.m_type == E_Years  ? "year"
                                                  : "second";
        if (p.m_type == E_Seconds && count % TVDate::C_HourSecs == 0) {
            count /= TVDate::C_HourSecs;
            unit = "hour";
        } else if (p.m_type == E_Seconds && count % TVDate::C_MinSecs == 0) {
            count /= TVDate::C_MinSecs;
            unit = "minute";
        }
        text = "Every " + to_count(count) + unit + (count == 1 ? "" : "s");
        const std::string days = get_days_str();
        if (!days.empty())
            text += " on " + days.substr(3);
        std::vector<std::string> times;
        for (const TVDuration& time : p.m_at) {
            if (is_time_of_day(time) && uses_at())
                times.push_back(time_words(seconds_of_day(time)));
        }
        if (!times.empty())
            text += " at " + join_texts(times, ", ");
        text += workday_to_natural(config, true) + ".";
        break;
    }
    }
    if (is_repeating() && get_range_type() != E_RangeMoment) {
        const std::string offset = offset_to_natural();
        if (!offset.empty())
            text += " " + offset;
    }
    const std::string range = uses_range() || p.m_type == E_SetDates ? range_to_string() : "";
    if (!range.empty())
        text += " " + range;
    return text;
}

std::string TVDateRepeat::to_string() const
{
    const Private& p = *d;
    auto entry = [](const char* key, const std::string& value) {
        return std::string(C_RepeatSeparator) + key + C_RepeatAssign + value;
    };
    auto quoted = [](const std::string& value) {
        return std::string(C_RepeatQuote) + value + C_RepeatQuote;
    };
    auto date_text = [](const TVDate& date) {
        std::string text;
        tv_date_append(text, date);
        return text;
    };
    std::string text = std::string(C_RepeatType) + C_RepeatAssign + std::to_string(p.m_type);
    if (p.m_interval != C_DefaultInterval && uses_interval())
        text += entry(C_RepeatInterval, std::to_string(p.m_interval));
    if (!p.m_days.empty() && uses_days())
        text += entry(C_RepeatDays, join(p.m_days, ","));
    if (!p.m_at.empty() && uses_at()) {
        std::vector<long> seconds;
        for (const TVDuration& time : p.m_at)
            seconds.push_back(time.get_as_seconds());
        text += entry(C_RepeatAt, join(seconds, ","));
    }
    if (!p.m_set.empty() && uses_set()) {
        std::vector<std::string> dates;
        for (const TVDate& date : p.m_set)
            dates.push_back(date_text(date));
        text += entry(C_RepeatSet, join_texts(dates, ","));
    }
    // The due expression goes with an offset that says so, which goes only
    // with a span: a text never holds what its reader would ignore.
    const bool stepped = (p.m_type >= E_Seconds && p.m_type <= E_Years) || uses_set();
    const bool offset = p.m_offset != C_OffsetLast && get_range_type() == E_RangeSpan && stepped;
    if (offset)
        text += entry(C_RepeatOffset, std::to_string(p.m_offset));
    if (p.m_rangeStart.is_ok() && !get_fixed(E_FixedRangeStart) && uses_range())
        text += entry(C_RepeatBegin, quoted(date_text(p.m_rangeStart)));
    if (p.m_work != C_DefaultWork && uses_workday())
        text += entry(C_RepeatWorkTime, std::to_string(p.m_work));
    if (p.m_rangeEnd.is_ok() && !get_fixed(E_FixedRangeEnd) && uses_range())
        text += entry(C_RepeatEnd, quoted(date_text(p.m_rangeEnd)));
    if (!p.m_dueExp.empty() && (uses_expression() || (offset && p.m_offset == C_OffsetExpression)))
        text += entry(C_RepeatDueExp, quoted(p.m_dueExp));
    if (!p.m_startExp.empty() && uses_expression())
        text += entry(C_RepeatStartExp, quoted(p.m_startExp));
    if (p.m_exclude.size() > 0 && p.m_type != E_NoRepeat)
        text += entry(C_RepeatExclude, get_exclude_string());
    return text;
}

namespace {

// The entries of the stored text: split at "@" outside double quotes.
std::vector<std::string> split_entries(const std::string& text)
{
    std::vector<std::string> entries(1);
    bool quoted = false;
    for (char c : text) {
        if (c == '"')
            quoted = !quoted;
        if (c == *TVDateRepeat::C_RepeatSeparator && !quoted)
            entries.emplace_back();
        else
            entries.back() += c;
    }
    return entries;
}

// The words and numbers of an older form's list, blanks and commas dropped.
std::vector<std::string> list_tokens(const std::string& text)
{
    std::vector<std::string> tokens;
    for (const std::string& token : TVDateUtils::split_tokens(text)) {
        if (token != " " && token != ",")
            tokens.push_back(token);
    }
    return tokens;
}

bool is_number(const std::string& token, int low, int high, int& out)
{
    return read_int(token, out) && out >= low && out <= high;
}

} // namespace

int TVDateRepeat::from_string(const std::string& input)
{
    const std::string text = trim(input);
    // Read into a copy, so that a text that doesn't read leaves the rule.
    Private r = *d;
    r.clear_rule();
    auto take = [this, &r]() {
        *d = std::move(r);
        invalidate();
        return TVErrC_ok;
    };
    if (text.empty())
        return take();

    if (tv_find_nocase(text, "REPEAT_") == 0) {
        // REPEAT_KIND(list)
        const size_t open = text.find('(');
        const std::string keyword = trim(text.substr(0, open));
        const char* const keywords[] = {C_V1RepeatDays, C_V1RepeatWeekday, C_V1RepeatMonthday,
                                        C_V1RepeatYearDay};
        const char* const messages[] = {C_MsgV1Days, C_MsgV1Weekday, C_MsgV1Monthday,
                                        C_MsgV1Yearday};
        int form = -1;
        for (int i = 0; i < 4; ++i) {
            if (tv_compare_nocase(keyword, keywords[i]))
                form = i;
        }
        if (form < 0)
            return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgUnknown, keyword.c_str(),
                             text.c_str());
        const std::vector<std::string> tokens =
            open == std::string::npos || text.back() != ')' ||
                    text.find_first_of("()", open + 1) != text.size() - 1
                ? std::vector<std::string>()
                : list_tokens(text.substr(open + 1, text.size() - open - 2));
        bool ok = !tokens.empty();
        int value = 0;
        if (form == 0) {
            ok = ok && tokens.size() == 1 && is_number(tokens[0], 1, INT_MAX, value);
            r.m_type = E_Days;
            r.m_interval = value;
        } else if (form == 1) {
            r.m_type = E_Weeks;
            for (const std::string& token : tokens) {
                const int weekday = tvlocale()->weekday_number(token);
                ok = ok && weekday >= 0;
                r.m_days.push_back(weekday);
            }
        } else if (form == 2) {
            r.m_type = E_Months;
            for (const std::string& token : tokens) {
                ok = ok && is_number(token, 1, 31, value);
                r.m_days.push_back(value - 1);
            }
        } else {
            r.m_type = E_Years;
            ok = ok && tokens.size() % 2 == 0;
            for (size_t i = 0; ok && i + 1 < tokens.size(); i += 2) {
                const int month = tvlocale()->month_number(tokens[i + 1]);
                ok = is_number(tokens[i], 1, 31, value) && month >= 0;
                r.m_days.push_back(to_yearday(value - 1, month));
            }
        }
        if (!ok)
            return tvwarning(TVErrC_InvalidValue, TVLOCATION, messages[form], text.c_str(),
                             keywords[form]);
        return take();
    }

    for (const std::string& raw : split_entries(text)) {
        const std::string item = trim(raw);
        const size_t assign = item.find(*C_RepeatAssign);
        const std::string key = assign == std::string::npos ? item : item.substr(0, assign);
        const std::string value = assign == std::string::npos ? "" : item.substr(assign + 1);
        const char* entry = item.c_str();
        const char* letter = key.c_str();
        if (assign == std::string::npos || key.size() != 1 ||
            std::string("TNDASOBWEYZXC").find(key[0]) == std::string::npos)
            return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgUnknown, entry, text.c_str());
        int number = 0;
        switch (key[0]) {
        case 'T':
            if (!read_int(value, number) ||
                !((number >= 0 && number < C_TypeCount) || number == C_V1RepeatManual))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgType, entry, C_RepeatType,
                                 C_RepeatAssign);
            r.m_type = number == C_V1RepeatManual ? E_Choice : static_cast<E_RepeatType>(number);
            break;
        case 'C':
            if (!read_int(value, r.m_capability))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgCaps, entry);
            break;
        case 'N':
        case 'W':
        case 'O': {
            long offset = 0;
            const bool ok = key[0] == 'O'
                                ? read_long(value, offset)
                                : read_int(value, key[0] == 'N' ? r.m_interval : r.m_work);
            if (!ok)
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgNumber, entry, letter,
                                 C_RepeatAssign);
            if (key[0] == 'O')
                r.m_offset = offset;
            break;
        }
        case 'D':
        case 'A': {
            std::vector<int> values;
            if (!read_ints(value, values))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgList, entry, letter,
                                 C_RepeatAssign);
            if (key[0] == 'D') {
                r.m_days = values;
            } else {
                r.m_at.clear();
                for (int seconds : values)
                    r.m_at.emplace_back(seconds);
            }
            break;
        }
        case 'S': {
            std::vector<TVDate> dates;
            bool ok = !value.empty() && value.back() != ',';
            for (const std::string& piece : tv_tokenise(value, ',')) {
                TVDate date;
                ok = ok && tv_date_from_digits(piece, date) && date.is_ok();
                dates.push_back(date);
            }
            if (!ok)
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgDates, entry, letter,
                                 C_RepeatAssign);
            r.m_set = dates;
            break;
        }
        case 'B':
        case 'E':
            if (!read_date_value(value, key[0] == 'B' ? r.m_rangeStart : r.m_rangeEnd))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgDate, entry, letter,
                                 C_RepeatAssign);
            break;
        case 'Y':
        case 'Z':
            if (!is_quoted(value))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgExp, entry, letter,
                                 C_RepeatAssign);
            (key[0] == 'Y' ? r.m_dueExp : r.m_startExp) =
                clean_expression(value.substr(1, value.size() - 2));
            break;
        case 'X':
            if (!read_exclusions(value, r.m_exclude))
                return tvwarning(TVErrC_InvalidValue, TVLOCATION, C_MsgExclude, entry, letter,
                                 C_RepeatAssign);
            break;
        }
    }
    return take();
}

std::ostream& operator<<(std::ostream& out, const TVDateRepeat& rule)
{
    return out << rule.to_string();
}

std::istream& operator>>(std::istream& in, TVDateRepeat& rule)
{
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (istvwarn(rule.from_string(text)))
        in.setstate(std::ios::failbit);
    return in;
}
