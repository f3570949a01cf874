#include "LibDate/date/fuzz/tvdatefuzzcheck.h"

#include <algorithm>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"

namespace {

// Day format entries for the styles month first, day first, year first.
const int C_StyleFormats[] = {4, 0, 7};
// Monday 15 March 2021 00:00 GMT, the middle of the bases tried.
const long C_BaseMiddle = 1615766400L;

} // namespace

// The exact forms of the two dates that aren't moments, or a real date
// with every field in range.
std::string tv_date_fuzz_malformed(const TVDate& date)
{
    if (date.is_blank() || date.is_invalid()) {
        if (date.get_day_of_year() != 0 || date.get_second_of_day() != 0 ||
            date.get_microsecond() != 0 || date.get_timezone() != 0)
            return "a blank or invalid date with fields set";
        return std::string();
    }
    if (date.get_second_of_day() < 0 || date.get_second_of_day() >= TVDate::C_DaySecs)
        return "second of the day out of range";
    if (date.get_microsecond() < 0 || date.get_microsecond() >= TVDate::C_MicroSecs)
        return "microsecond out of range";
    if (date.get_day_of_year() < 0 ||
        date.get_day_of_year() >= TVDateUtils::days_in_year(date.get_year()))
        return "day of the year out of range";
    return std::string();
}

TVDateFuzzResult tv_date_fuzz_check(const uint8_t* data, size_t size)
{
    TVDateFuzzResult out;
    long offset = 0;
    if (size >= C_DateFuzzHeaderSize && data[0] == C_DateFuzzHeaderMark) {
        tvlocale()->set_day_format(C_StyleFormats[data[1] % 3]);
        tvlocale()->set_firstday(data[2] % TVDate::C_WeekDays);
        uint32_t raw = static_cast<uint32_t>(data[3]) | static_cast<uint32_t>(data[4]) << 8 |
                       static_cast<uint32_t>(data[5]) << 16 | static_cast<uint32_t>(data[6]) << 24;
        offset = static_cast<int32_t>(raw);
        data += C_DateFuzzHeaderSize;
        size -= C_DateFuzzHeaderSize;
    }
    out.text.assign(reinterpret_cast<const char*>(data), std::min(size, C_DateFuzzMaxText));
    tv_install_date_parser();

    TVDate base;
    base.set_time_t(C_BaseMiddle + offset, TVDate::C_DefaultTime);
    const TVDateExp exp = TVDateParser::parse_date(out.text);
    const TVDate date = exp.apply(base, nullptr);
    std::string fault = tv_date_fuzz_malformed(date);
    if (!fault.empty()) {
        out.fault = "The expression gave " + fault + ".";
        return out;
    }

    TVDate hooked;
    hooked.from_string(out.text, nullptr, &base);
    if (!(hooked == date)) {
        out.fault = "TVDate::from_string differs from parse_date and apply.";
        return out;
    }

    const std::string written = exp.to_string();
    fault = tv_date_fuzz_malformed(TVDateParser::parse_date(written).apply(base, nullptr));
    if (!fault.empty())
        out.fault = "The expression's text \"" + written + "\" gave " + fault + ".";
    return out;
}
