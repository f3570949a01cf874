#include "LibDate/core/tvlocale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "LibCore/fileutils/tvfileutils.h"
#include "TestSupport/tvparamtest.h"

namespace {

class LocaleConfigTest : public TVParamTest
{
protected:
    // A program without arguments whose user file is cfg().
    TVParam* start()
    {
        TVParam* param = make_param({});
        param->add_config_file(user_file());
        EXPECT_EQ(param->parse(nullptr), TVErrC_ok);
        return param;
    }

    static std::string dump(const TVLocale& locale)
    {
        std::ostringstream out;
        locale.dump(out, 0);
        return out.str();
    }

    static bool has_line(const std::vector<std::string>& lines, const std::string& line)
    {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
};

TEST_F(LocaleConfigTest, EveryFieldSurvivesAWriteAndARead)
{
    TVLocale written;
    written.set_firstday(0);
    written.set_day_format(7);
    written.set_24hour_clock(false);
    written.set_defaultlocale(false);
    ASSERT_TRUE(written.set_timezone_str("GMT+10"));
    written.set_currency("\xE2\x82\xAC"); // the euro sign in UTF-8
    written.set_group_separator(" "); // the file trims: stored as "#SPACE"
    written.set_decimal_separator(",");
    written.set_latlon_format(2);
    written.set_alt_units(true);

    start();
    ASSERT_EQ(written.write_config(), TVErrC_ok);
    const std::vector<std::string> lines = tv_read_lines(cfg());
    const char* const expected[] = {
        "DateFirstDay=0",  "DateDayFormat=7",     "DateIs24Hours=0",  "DateDefaultLocale=0",
        "LocaleCurrency=\xE2\x82\xAC", "LocaleGroupSep=#SPACE", "LocaleDecimal=,", "LatLonFormat=2",
    };
    for (const char* line : expected)
        EXPECT_TRUE(has_line(lines, line)) << line;
    const std::string once = read_all(cfg());

    start();
    TVLocale read;
    EXPECT_EQ(read.read_config(), TVErrC_ok);
    EXPECT_EQ(read.get_group_separator(), " ");
    EXPECT_EQ(read.get_timezone(), written.get_timezone());
    EXPECT_EQ(read.get_format_number(), 7);
    EXPECT_FALSE(read.is_24hour_clock());
    EXPECT_EQ(read.get_currency(), "\xE2\x82\xAC");
    EXPECT_EQ(dump(read), dump(written));

    // Written again from what was read, the file is the same to the byte.
    ASSERT_EQ(tv_delete_file(cfg(), true), TVErrC_ok);
    start();
    ASSERT_EQ(read.write_config(), TVErrC_ok);
    EXPECT_EQ(read_all(cfg()), once);
}

TEST_F(LocaleConfigTest, KeysTheFileDoesNotHoldKeepTheirFields)
{
    const struct {
        const char* name;
        std::vector<std::string> lines;
        std::string currency;
        int firstDay;
    } rows[] = {
        {"no file", {}, TVLocale().get_currency(), TVLocale().get_firstday()},
        {"other keys only", {"LastFile=x"}, TVLocale().get_currency(), TVLocale().get_firstday()},
        {"empty currency is a choice", {"LocaleCurrency="}, "", TVLocale().get_firstday()},
        {"empty number is not", {"DateFirstDay="}, TVLocale().get_currency(), TVLocale().get_firstday()},
        {"first day alone", {"DateFirstDay=3"}, TVLocale().get_currency(), 3},
    };
    for (const auto& row : rows) {
        (void)tv_delete_file(cfg(), false);
        if (!row.lines.empty())
            write_file(cfg(), row.lines);
        start();
        TVLocale locale;
        EXPECT_EQ(locale.read_config(), TVErrC_ok) << row.name;
        EXPECT_EQ(locale.get_currency(), row.currency) << row.name;
        EXPECT_EQ(locale.get_firstday(), row.firstDay) << row.name;
        EXPECT_EQ(locale.get_format_number(), TVLocale().get_format_number()) << row.name;
    }
}

TEST_F(LocaleConfigTest, OnlyASingleBlankIsEscaped)
{
    const struct {
        const char* value;
        const char* stored;
    } rows[] = {{" ", "#SPACE"}, {"  ", "  "}, {"", ""}, {",", ","}, {"#SPACE", "#SPACE"}};
    for (const auto& row : rows)
        EXPECT_EQ(TVLocale::toConfig(row.value), row.stored) << '"' << row.value << '"';
    EXPECT_EQ(TVLocale::fromConfig("#SPACE"), " ");
    EXPECT_EQ(TVLocale::fromConfig(" "), " ");
    EXPECT_EQ(TVLocale::fromConfig("#space"), "#space");
}

TEST_F(LocaleConfigTest, WritingWithoutAUsersFileIsAWarning)
{
    make_param({});
    const int result = TVLocale().write_config();
    EXPECT_EQ(result, TVErrDetails::compute_combination(TVParam::TVErrC_ParamMissing, TVSevWarning));
    EXPECT_EQ(tvsysinfo_get().substr(0, 24), "No user config file set.");
}

TEST_F(LocaleConfigTest, ReadingWithoutParametersKeepsEverything)
{
    TVParam::release();
    TVLocale locale;
    EXPECT_EQ(locale.read_config(), TVErrC_ok);
    EXPECT_EQ(dump(locale), dump(TVLocale()));
    EXPECT_FALSE(TVParam::has_object());
}

} // namespace
