#ifndef TVDATEPARSER_H
#define TVDATEPARSER_H

// TVDateParser: reads the date language into a TVDateExp.
//
// The language, case aside (tokens: runs of digits, runs of letters, runs of
// white space, single other characters; see TVDateUtils::split_tokens):
//
//   12/3/21  3-Mar-2021  2021-03-12   dates, ordered by the locale's style
//   12 March  March 12  12th  2nd Monday  Monday  March  2021
//   9:30  9:30:15.25  3pm  12:00AM  Hour 9  Minute 5  Second 5  Week 10
//   +1 Week  -2 Days  +1:30  NEXT Monday  LAST Month  +2 WorkDay
//   Now  Today  Tomorrow  Yesterday  UTC+10  UTC-3:30  DST  Local
//   WorkDay  WorkDayFor TAG  Fixed  FixedFor TAG  @TAG  (Mon|Thu)
//
// Two kinds of failure, on purpose: a word or character that nothing
// knows makes the whole expression one T_Invalid; a construct begun and
// not finished ("+" with no number, "9:" with no minute, "12/" with
// nothing after it) ends parsing and keeps the terms made so far.
//
// Numbers are taken up to C_MaxNumber; a longer run of digits counts as
// that. A two-digit year lies in the century of now() unless that puts it
// more than ten years ahead, when it lies in the century before.
//
// The parser keeps no state between calls; one instance per parse.

#include <string>
#include <vector>

#include "LibCore/textstr/tvtokenset.h"
#include "LibDate/date/tvdateexp.h"

class TVDate;
class TVRepeatConfig;

class TVDateParser : public TVTokenSet
{
public:
    static constexpr int C_MaxNumber = 99999999;

    // The expression of text; the empty text gives one T_Blank.
    static TVDateExp parse_date(const std::string& text);

    // The tokens of text, by TVDateUtils::split_tokens.
    static void split_tokens(TVTokenSet& tokens, const std::string& text);
    static void split_tokens(std::vector<std::string>& tokens, const std::string& text);
    // The token's first character lies from `from` to `to`, or is `from`
    // when to is 0.
    static bool compare_token(const std::string& token, char from, char to);
    // The token begins with text.
    static bool compare_token(const std::string& token, const char* text);

    // TVDate's parser hook: text applied to base (or now), false exactly
    // when that gives the invalid date.
    static bool parse_to_date(const std::string& text, const TVRepeatConfig* config,
                              const TVDate* base, TVDate& out);

private:
    enum E_Step {
        E_Go,         // go on with the next token
        E_Unfinished, // stop, keeping the terms so far
        E_Unknown     // stop; the expression is invalid
    };

    TVDateParser() = default;

    E_Step parse(TVDateExp& exp);
    E_Step parse_punctuation(TVDateExp& exp);
    E_Step parse_sign(int sign, TVDateExp& exp);
    E_Step parse_number(TVDateExp& exp);
    E_Step parse_time(int hour, TVDateExp& exp);
    E_Step parse_ordinal(int number, TVDateExp& exp);
    E_Step parse_separated_date(int a, int lengthA, TVDateExp& exp);
    E_Step parse_word(TVDateExp& exp);
    E_Step parse_next_last(int sign, TVDateExp& exp);
    void parse_zone(TVDateExp& exp);

    // Adds T_Hour (with T_Minute, T_Second, T_Micro unless hourOnly) and a
    // T_AM or T_PM for a marker that follows. False, adding nothing, when
    // the marker is required and missing.
    bool handle_am_pm(int hour, int minute, int second, int micro, bool required, bool hourOnly,
                      TVDateExp& exp);

    // The token `ahead` places after the front, "" past the end.
    const std::string& peek(int ahead) const;
    bool next_is_numeric(int ahead) const;
    // Pops and gives a number token; the caller has checked is_numeric().
    int pop_number(int* length = nullptr);
    // The month or weekday the front word names, -1 if none.
    int front_month() const;
    int front_weekday() const;
    // Takes one "-", "/", "." or "," at the front.
    void take_separator();
    // A tag after dropping white space; false if there is none.
    bool pop_tag(std::string& tag);
    // A year of two digits (or fewer) into its century.
    static int century_year(int year);

    int m_pendingMonth = -1;
};

// Makes TVDate::from_string (and the stream form's quoted dates) read the
// date language. Call once before dates are read from text.
void tv_install_date_parser();

#endif // TVDATEPARSER_H
