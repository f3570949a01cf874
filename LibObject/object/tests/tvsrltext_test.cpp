// The binders' stream-free paths against the stream they stand in for:
// every stored file holds their text, so it must be the stream's byte for
// byte, and a text not in the plain form must mean what the stream reads.

#include "LibDate/core/tvdate.h"
#include "LibObject/object/tvsrlvalue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace {

template <class T>
std::string streamed(T value, int precision)
{
    std::ostringstream out;
    if (precision > 0)
        out << std::fixed << std::setprecision(precision);
    out << value;
    return out.str();
}

template <class T>
T stream_read(const std::string& text, T start)
{
    std::istringstream in(text);
    tv_srl_extract(in, start);
    return start;
}

} // namespace

TEST(SrlTextTest, NumbersAndDatesAreWrittenAsTheStreamWritesThem)
{
    const double C_Inf = std::numeric_limits<double>::infinity();
    for (const double v : {0.0, -0.0, 0.5, 2.5, 0.0005, 0.0015, 1.0 / 3.0, 99.95, -12345.678,
                           1e-7, 123456789.0, 1e300, -C_Inf, std::nan("")})
        for (const int precision : {-1, 1, 3, 6}) {
            std::string text;
            ASSERT_TRUE(tv_srl_format(text, v, precision));
            EXPECT_EQ(text, streamed(v, precision)) << v << " at " << precision;
        }
    // Measures of every size and near every rounding edge, at each precision.
    std::mt19937_64 rng(11);
    for (int n = 0; n < 20000; ++n) {
        const double v = static_cast<double>(static_cast<int64_t>(rng() % 2000001) - 1000000) /
                             std::pow(10.0, static_cast<double>(rng() % 9)) +
                         (n % 2 == 0 ? 0.0 : std::ldexp(static_cast<double>(rng() % 1000), -40));
        const int precision = 1 + static_cast<int>(rng() % 6);
        std::string text;
        ASSERT_TRUE(tv_srl_format(text, v, precision));
        ASSERT_EQ(text, streamed(v, precision)) << v << " at " << precision;
    }
    for (const long v : {0L, -1L, 42L, std::numeric_limits<long>::min(),
                         std::numeric_limits<long>::max()}) {
        std::string text;
        ASSERT_TRUE(tv_srl_format(text, v, -1));
        EXPECT_EQ(text, streamed(v, -1));
    }
    for (const TVDate& date : {TVDate(2026, 11, 21, 9, 5, 7, 0, TVDate::C_GMT),
                               TVDate(1999, 2, 28, 23, 59, 59, 123456, TVDate::C_GMT), TVDate::C_Blank}) {
        std::string text;
        ASSERT_TRUE(tv_srl_format(text, date, -1));
        EXPECT_EQ(text, streamed(date, -1));
        TVDate back;
        ASSERT_TRUE(tv_srl_parse(text, back));
        EXPECT_EQ(back, stream_read(text, TVDate()));
    }
}

TEST(SrlTextTest, OnlyThePlainFormIsTakenAndItReadsAsTheStreamReadsIt)
{
    int i = 7;
    for (const char* text : {"0", "-17", "007", "2147483647", "-2147483648"}) {
        ASSERT_TRUE(tv_srl_parse(text, i)) << text;
        EXPECT_EQ(i, stream_read<int>(text, 7)) << text;
    }
    double d = 0;
    for (const char* text : {"0.000", "-3.250", "12", "99.95", "0.1000000000000000055511"}) {
        ASSERT_TRUE(tv_srl_parse(text, d)) << text;
        EXPECT_EQ(d, stream_read<double>(text, 0)) << text;
    }
    // Left to the stream: signs, spaces, exponents, trailing bytes, overflow.
    for (const char* text : {"", "+5", " 12", "12 ", "1e3", "12abc", "-", "1.", ".5"}) {
        EXPECT_FALSE(tv_srl_parse(text, i)) << text;
        EXPECT_FALSE(tv_srl_parse(text, d)) << text;
    }
    EXPECT_FALSE(tv_srl_parse("2147483648", i));
    bool b = false;
    EXPECT_TRUE(tv_srl_parse("1", b) && b);
    EXPECT_FALSE(tv_srl_parse("2", b));
    TVDate date;
    EXPECT_FALSE(tv_srl_parse("\"today\"", date));
    // Text and char undo the inner escape, as their stream readers do.
    std::string s;
    ASSERT_TRUE(tv_srl_parse("a\\nb\\\\c\\", s));
    EXPECT_EQ(s, stream_read<std::string>("a\\nb\\\\c\\", ""));
    char c = 'x';
    ASSERT_TRUE(tv_srl_parse("\\n", c));
    EXPECT_EQ(c, '\n');
    ASSERT_TRUE(tv_srl_parse("", c));
    EXPECT_EQ(c, '\n');
}
