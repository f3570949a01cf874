#include "LibDate/date/tvdateparser.h"

#include <cstring>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"
#include "LibDate/date/tvdateexpterm.h"

namespace {

using Term = TVDateExpTerm;

// A two-digit year may lie at most this far ahead of the present year.
const int C_CenturyLookAhead = 10;
const int C_Century = 100;
// From this number on, a number on its own is a year.
const int C_FirstPlainYear = 101;
// A fraction of a second in six digits is microseconds as it stands.
const size_t C_MicroDigits = 6;
// A year written with this many digits or more is never a day or month.
const int C_LongYearDigits = 3;

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string trim(const std::string& text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && is_blank(text[begin]))
        ++begin;
    while (end > begin && is_blank(text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

bool is_date_separator(const std::string& token)
{
    return token == "-" || token == "/" || token == "." || token == ",";
}

// The digits of a fraction of a second as microseconds: "5" is 500000,
// "25" 250000, "1234567" 123456.
int fraction_to_micro(const std::string& digits)
{
    std::string six = digits.substr(0, C_MicroDigits);
    six.append(C_MicroDigits - six.size(), '0');
    int micro = 0;
    for (char c : six)
        micro = micro * 10 + (c - '0');
    return micro;
}

} // namespace

// ---- Entry points -------------------------------------------------------------

TVDateExp TVDateParser::parse_date(const std::string& text)
{
    const TVLocale* locale = tvlocale();
    std::string clean = trim(locale->get_defaultlocale() ? text : locale->clean_date_string(text));
    TVDateExp exp;
    if (clean.empty()) {
        exp.add_term(Term::T_Blank);
        return exp;
    }
    TVDateParser parser;
    split_tokens(parser, clean);
    if (parser.parse(exp) == E_Unknown) {
        TVDateExp invalid;
        invalid.add_term(Term::T_Invalid);
        return invalid;
    }
    return exp;
}

void TVDateParser::split_tokens(TVTokenSet& tokens, const std::string& text)
{
    for (const std::string& token : TVDateUtils::split_tokens(text))
        tokens.push_token(token, 0);
}

void TVDateParser::split_tokens(std::vector<std::string>& tokens, const std::string& text)
{
    tokens = TVDateUtils::split_tokens(text);
}

bool TVDateParser::compare_token(const std::string& token, char from, char to)
{
    if (token.empty())
        return false;
    return to == 0 ? token[0] == from : token[0] >= from && token[0] <= to;
}

bool TVDateParser::compare_token(const std::string& token, const char* text)
{
    return token.compare(0, std::strlen(text), text) == 0;
}

bool TVDateParser::parse_to_date(const std::string& text, const TVRepeatConfig* config,
                                 const TVDate* base, TVDate& out)
{
    out = parse_date(text).apply(base != nullptr ? *base : TVDate(), config);
    return !out.is_invalid();
}

void tv_install_date_parser()
{
    TVDate::set_parser(&TVDateParser::parse_to_date);
}

// ---- The steps ------------------------------------------------------------------

TVDateParser::E_Step TVDateParser::parse(TVDateExp& exp)
{
    E_Step step = E_Go;
    while (step == E_Go && !empty()) {
        if (is_numeric())
            step = parse_number(exp);
        else if (is_alphabetic())
            step = parse_word(exp);
        else
            step = parse_punctuation(exp);
        pop_whitespace();
    }
    if (step == E_Go && m_pendingMonth >= 0)
        exp.add_term(Term::T_Month, m_pendingMonth);
    return step;
}

TVDateParser::E_Step TVDateParser::parse_punctuation(TVDateExp& exp)
{
    const std::string token = pop_token();
    switch (token[0]) {
    case '+':
        return parse_sign(1, exp);
    case '-':
        return parse_sign(-1, exp);
    case '@': {
        std::string tag;
        if (!pop_tag(tag))
            return E_Unfinished;
        exp.add_term(Term::T_Relative, 0, tag);
        return E_Go;
    }
    case '(':
        exp.add_term(Term::T_Open);
        return E_Go;
    case '|':
        exp.add_term(Term::T_Or);
        return E_Go;
    case ')':
        exp.add_term(Term::T_Close);
        return E_Go;
    case '.':
    case ',':
        return E_Go;
    default:
        return E_Unknown;
    }
}

TVDateParser::E_Step TVDateParser::parse_sign(int sign, TVDateExp& exp)
{
    pop_whitespace();
    if (!is_numeric())
        return E_Unfinished;
    const int count = sign * pop_number();
    pop_whitespace();
    if (match(':')) {
        // "+1:30:15": hours, minutes and seconds, all with the sign.
        exp.add_term(Term::T_AddHour, count);
        if (!is_numeric())
            return E_Unfinished;
        exp.add_term(Term::T_AddMinute, sign * pop_number());
        if (match(':')) {
            if (!is_numeric())
                return E_Unfinished;
            exp.add_term(Term::T_AddSecond, sign * pop_number());
        }
        return E_Go;
    }
    if (!is_alphabetic())
        return E_Go;
    // The unit's first letters, in this order: "MI" before "MO", "US"
    // before "S", "WORKDAY" before "W". A "WORKDAYFOR" therefore counts as
    // "WORKDAY" here, and its tag stands as the next token.
    const std::string unit = pop_token();
    if (compare_token(unit, "US"))
        exp.add_term(Term::T_AddMicro, count);
    else if (compare_token(unit, "S"))
        exp.add_term(Term::T_AddSecond, count);
    else if (compare_token(unit, "MI"))
        exp.add_term(Term::T_AddMinute, count);
    else if (compare_token(unit, "H"))
        exp.add_term(Term::T_AddHour, count);
    else if (compare_token(unit, "D"))
        exp.add_term(Term::T_AddDay, count);
    else if (compare_token(unit, "WORKDAY"))
        exp.add_term(Term::T_WorkDay, count);
    else if (compare_token(unit, "W"))
        exp.add_term(Term::T_AddDay, count * TVDate::C_WeekDays);
    else if (compare_token(unit, "MO"))
        exp.add_term(Term::T_AddMonth, count);
    else if (compare_token(unit, "Y"))
        exp.add_term(Term::T_AddYear, count);
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_number(TVDateExp& exp)
{
    int length = 0;
    const int number = pop_number(&length);
    // Separators count only right behind the number: "2021 -1 Day" is a
    // year and a step back, "2021-1-5" a date.
    const std::string adjacent = first_token();
    if (adjacent == ":" || adjacent == ";") {
        pop_token();
        return parse_time(number, exp);
    }
    if (is_date_separator(adjacent))
        return parse_separated_date(number, length, exp);

    pop_whitespace();
    if (handle_am_pm(number, 0, 0, 0, true, false, exp))
        return E_Go;
    const std::string next = first_token();
    if (next == "ST" || next == "ND" || next == "RD" || next == "TH") {
        pop_token();
        return parse_ordinal(number, exp);
    }
    const int month = front_month();
    if (month >= 0) {
        pop_token();
        exp.add_term(Term::T_Day, number - 1);
        exp.add_term(Term::T_Month, month);
        match('.');
        return E_Go;
    }
    if (number >= C_FirstPlainYear) {
        exp.add_term(Term::T_Year, number);
        return E_Go;
    }
    if (m_pendingMonth < 0)
        return E_Unfinished;
    exp.add_term(Term::T_Day, number - 1);
    exp.add_term(Term::T_Month, m_pendingMonth);
    m_pendingMonth = -1;
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_time(int hour, TVDateExp& exp)
{
    if (!is_numeric())
        return E_Unfinished;
    const int minute = pop_number();
    int second = 0;
    int micro = 0;
    if (match(':')) {
        if (!is_numeric())
            return E_Unfinished;
        second = pop_number();
    }
    if (first_token() == "." && next_is_numeric(1)) {
        pop_token();
        micro = fraction_to_micro(pop_token());
    }
    handle_am_pm(hour, minute, second, micro, false, false, exp);
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_ordinal(int number, TVDateExp& exp)
{
    pop_whitespace();
    const int weekday = front_weekday();
    if (weekday < 0) {
        exp.add_term(Term::T_Day, number - 1);
        match('.');
        pop_whitespace();
        const int month = front_month();
        if (month >= 0) {
            pop_token();
            exp.add_term(Term::T_Month, month);
            match('.');
        }
        return E_Go;
    }
    pop_token();
    match('.');
    pop_whitespace();
    // The weekday of the month is worked out in the month it names, so the
    // month goes first: "2nd Monday March", "March 2nd Monday".
    const int month = front_month();
    if (month >= 0) {
        pop_token();
        match('.');
        exp.add_term(Term::T_Month, month);
    } else if (m_pendingMonth >= 0) {
        exp.add_term(Term::T_Month, m_pendingMonth);
        m_pendingMonth = -1;
    }
    exp.add_term(Term::T_Weekday, Term::encode_weekday_month(number - 1, weekday));
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_separated_date(int a, int lengthA, TVDateExp& exp)
{
    pop_token(); // the separator
    pop_whitespace();
    int month = front_month();
    bool hasB = false;
    int b = 0;
    int lengthB = 0;
    if (month >= 0) {
        pop_token();
    } else if (is_numeric()) {
        b = pop_number(&lengthB);
        hasB = true;
    } else {
        return E_Unfinished;
    }
    bool hasC = false;
    int c = 0;
    int lengthC = 0;
    if (is_date_separator(first_token())) {
        pop_token();
        pop_whitespace();
        if (!is_numeric())
            return E_Unfinished;
        c = pop_number(&lengthC);
        hasC = true;
    }
    if (month < 0 && m_pendingMonth >= 0) {
        month = m_pendingMonth;
        m_pendingMonth = -1;
    }

    // Numbers as written: day and month from 1. The style says which comes
    // first; a part of three digits or more is a year wherever it stands.
    const int style = tvlocale()->get_date_style();
    const bool dayFirst = style == TVLocale::E_DayFirst;
    const bool yearFirst = style == TVLocale::E_YearFirst;
    const bool named = month >= 0;
    int day = 0;
    int monthFrom1 = month + 1;
    int year = 0;
    bool hasYear = true;
    auto take = [&](int y, int m, int d) {
        year = y;
        monthFrom1 = m;
        day = d;
    };
    if (hasC && !named) {
        if (lengthA >= C_LongYearDigits)
            take(a, b, c);
        else if (lengthC >= C_LongYearDigits)
            take(c, dayFirst ? b : a, dayFirst ? a : b);
        else if (yearFirst)
            take(century_year(a), b, c);
        else if (dayFirst)
            take(century_year(c), b, a);
        else
            take(century_year(c), a, b);
    } else if (hasC) {
        if (lengthA > 2)
            take(a, monthFrom1, c);
        else if (lengthC > 2)
            take(c, monthFrom1, a);
        else if (yearFirst)
            take(century_year(a), monthFrom1, c);
        else
            take(century_year(c), monthFrom1, a);
    } else if (!named) {
        hasYear = false;
        take(0, dayFirst ? b : a, dayFirst ? a : b);
    } else {
        // "12-Mar" has no year; with a pending month, "12/2021" has one.
        hasYear = hasB && lengthB >= C_LongYearDigits;
        take(b, monthFrom1, a);
    }
    exp.add_term(Term::T_Day, day - 1);
    exp.add_term(Term::T_Month, monthFrom1 - 1);
    if (hasYear)
        exp.add_term(Term::T_Year, year);
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_word(TVDateExp& exp)
{
    const int weekday = front_weekday();
    if (weekday >= 0) {
        pop_token();
        exp.add_term(Term::T_Weekday, weekday);
        take_separator();
        return E_Go;
    }
    const int month = front_month();
    if (month >= 0) {
        pop_token();
        m_pendingMonth = month;
        take_separator();
        return E_Go;
    }

    const std::string word = pop_token();
    if (word == "NEXT")
        return parse_next_last(1, exp);
    if (word == "LAST")
        return parse_next_last(-1, exp);
    if (word == "NOW") {
        exp.add_term(Term::T_Now);
    } else if (word == "TOMORROW" || word == "TOM") {
        exp.add_term(Term::T_Tomorrow);
    } else if (word == "YESTERDAY" || word == "YES") {
        exp.add_term(Term::T_Yesterday);
    } else if (word == "TODAY" || word == "TOD") {
        exp.add_term(Term::T_Today);
    } else if (word == "HOUR") {
        pop_whitespace();
        if (is_numeric())
            handle_am_pm(pop_number(), 0, 0, 0, false, true, exp);
    } else if (word == "MINUTE" || word == "SECOND" || word == "USECOND" || word == "WEEK") {
        pop_whitespace();
        if (is_numeric()) {
            const int number = pop_number();
            if (word == "MINUTE")
                exp.add_term(Term::T_Minute, number);
            else if (word == "SECOND")
                exp.add_term(Term::T_Second, number);
            else if (word == "USECOND")
                exp.add_term(Term::T_Micro, number);
            else
                exp.add_term(Term::T_Week, number - 1);
        }
    } else if (word == "GMT" || word == "UTC") {
        parse_zone(exp);
    } else if (word == "DST" || word == "NODST") {
        exp.add_term(Term::T_Dst, word == "DST" ? 1 : 0);
    } else if (word == "DEFAULTZONE") {
        exp.add_term(Term::T_Zone, TVDate::C_DefaultTime);
    } else if (word == "LOCAL") {
        exp.add_term(Term::T_Zone, TVDate::C_LocalTime);
    } else if (word == "WORKDAY") {
        exp.add_term(Term::T_WorkDay, 0);
    } else if (word == "FIXED") {
        exp.add_term(Term::T_Fixed);
    } else if (word == "WORKDAYFOR" || word == "FIXEDFOR") {
        std::string tag;
        if (!pop_tag(tag))
            return E_Unfinished;
        exp.add_term(word == "FIXEDFOR" ? Term::T_Fixed : Term::T_WorkDay, 0, tag);
    } else {
        return E_Unknown;
    }
    return E_Go;
}

TVDateParser::E_Step TVDateParser::parse_next_last(int sign, TVDateExp& exp)
{
    pop_whitespace();
    const int weekday = front_weekday();
    if (weekday >= 0) {
        // A week on, then that weekday of the week reached.
        pop_token();
        exp.add_term(Term::T_AddDay, sign * TVDate::C_WeekDays);
        exp.add_term(Term::T_Weekday, weekday);
        take_separator();
        return E_Go;
    }
    if (!is_alphabetic())
        return E_Unfinished;
    const std::string word = pop_token();
    if (word == "WEEK") {
        exp.add_term(Term::T_AddDay, sign * TVDate::C_WeekDays);
    } else if (word == "MONTH") {
        exp.add_term(Term::T_AddMonth, sign);
    } else if (word == "YEAR") {
        exp.add_term(Term::T_AddYear, sign);
    } else if (word == "WORKDAY") {
        exp.add_term(Term::T_WorkDay, sign);
    } else if (word == "WORKDAYFOR") {
        std::string tag;
        if (!pop_tag(tag))
            return E_Unfinished;
        exp.add_term(Term::T_WorkDay, sign, tag);
    } else {
        return E_Unfinished;
    }
    return E_Go;
}

void TVDateParser::parse_zone(TVDateExp& exp)
{
    // "UTC+10", "GMT-3:30", "UTC": the offset must follow right behind,
    // so "UTC +1 Day" is GMT and then a day on.
    int sign = 1;
    const std::string front = first_token();
    if ((front == "+" || front == "-") && next_is_numeric(1)) {
        sign = front == "-" ? -1 : 1;
        pop_token();
    }
    long seconds = 0;
    if (is_numeric()) {
        seconds = static_cast<long>(pop_number()) * TVDate::C_HourSecs;
        if (first_token() == ":" && next_is_numeric(1)) {
            pop_token();
            seconds += static_cast<long>(pop_number()) * TVDate::C_MinSecs;
        }
    }
    exp.add_term(Term::T_Zone, TVDateUtils::seconds_to_zone(sign * seconds, false, false));
}

bool TVDateParser::handle_am_pm(int hour, int minute, int second, int micro, bool required,
                                bool hourOnly, TVDateExp& exp)
{
    pop_whitespace();
    int marker = -1;
    if (match("AM"))
        marker = Term::T_AM;
    else if (match("PM"))
        marker = Term::T_PM;
    if (marker < 0 && required)
        return false;
    exp.add_term(Term::T_Hour, hour);
    if (!hourOnly) {
        exp.add_term(Term::T_Minute, minute);
        exp.add_term(Term::T_Second, second);
        exp.add_term(Term::T_Micro, micro);
    }
    if (marker >= 0)
        exp.add_term(static_cast<Term::E_Type>(marker), 1);
    return true;
}

// ---- Token helpers ----------------------------------------------------------------

const std::string& TVDateParser::peek(int ahead) const
{
    static const std::string none;
    if (ahead < 0 || ahead >= size())
        return none;
    return m_token[static_cast<size_t>(ahead)];
}

bool TVDateParser::next_is_numeric(int ahead) const
{
    return compare_token(peek(ahead), '0', '9');
}

int TVDateParser::pop_number(int* length)
{
    const std::string token = pop_token();
    if (length != nullptr)
        *length = static_cast<int>(token.size());
    long value = 0;
    for (char c : token) {
        value = value * 10 + (c - '0');
        if (value > C_MaxNumber)
            return C_MaxNumber;
    }
    return static_cast<int>(value);
}

int TVDateParser::front_month() const
{
    return is_alphabetic() ? tvlocale()->month_number(first_token()) : -1;
}

int TVDateParser::front_weekday() const
{
    return is_alphabetic() ? tvlocale()->weekday_number(first_token()) : -1;
}

void TVDateParser::take_separator()
{
    if (is_date_separator(first_token()))
        pop_token();
}

bool TVDateParser::pop_tag(std::string& tag)
{
    pop_whitespace();
    if (empty())
        return false;
    tag = pop_token();
    return true;
}

int TVDateParser::century_year(int year)
{
    if (year >= C_Century)
        return year;
    TVDate now = TVDateUtils::now();
    const int present = TVDateDetails(now, now.get_timezone()).m_year;
    int full = present - present % C_Century + year;
    if (full > present + C_CenturyLookAhead)
        full -= C_Century;
    return full;
}
