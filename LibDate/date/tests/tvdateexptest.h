#ifndef TVDATEEXPTEST_H
#define TVDATEEXPTEST_H

// Fixture for the date language: the date test environment (clock fixed at
// Monday 15 March 2021 12:34:56 UTC, zone GMT, fresh locale with weeks from
// Monday and day-first dates) with the parser installed.

#include <sstream>
#include <string>

#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"
#include "TestSupport/tvdatetestenv.h"

class TVDateExpTest : public TVDateTest
{
protected:
    // Index of the locale's day formats that gives each date style.
    static constexpr int C_MonthFirstFormat = 4;
    static constexpr int C_DayFirstFormat = 0;
    static constexpr int C_YearFirstFormat = 7;

    void SetUp() override
    {
        TVDateTest::SetUp();
        tv_install_date_parser();
    }

    static void use_style(int style)
    {
        const int formats[] = {C_MonthFirstFormat, C_DayFirstFormat, C_YearFirstFormat};
        tvlocale()->set_day_format(formats[style]);
    }

    // "T_Day 11, T_Month 2, T_Year 2021"
    static std::string terms(const TVDateExp& exp)
    {
        std::ostringstream out;
        for (const TVDateExpTerm& term : exp.get_terms())
            out << (out.tellp() > 0 ? ", " : "") << term;
        return out.str();
    }

    static std::string parsed(const std::string& text)
    {
        return terms(TVDateParser::parse_date(text));
    }

    // The GMT reading of text applied to base.
    static std::string evaluated(const std::string& text, const TVDate& base)
    {
        TVDate date = TVDateParser::parse_date(text).apply(base, nullptr);
        if (date.is_blank())
            return "blank";
        if (date.is_invalid())
            return "invalid";
        return gmt_text(date);
    }
};

#endif // TVDATEEXPTEST_H
