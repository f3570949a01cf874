#ifndef TVDATEFUZZCHECK_H
#define TVDATEFUZZCHECK_H

// The property that the date language's fuzzer checks, shared with the test
// that replays the fuzzer's corpus in `make check`.
//
// Input: plain text, or a header byte 0x01 followed by six bytes (date
// style, first day of the week, and a signed 32-bit count of seconds from
// Monday 15 March 2021 00:00 GMT for the base date) and then the text. At
// most C_DateFuzzMaxText bytes of text are used, which keeps the cost of
// one input within the evaluation's own bounds.
//
// The text is parsed and applied to the base. What must hold: nothing
// crashes or hangs; the result is the exact blank or invalid date or a
// normalised real one; TVDate::from_string agrees with parse and apply; and
// the expression's own text parses and evaluates to a normalised date too.
//
// Sets the locale's date style and first day (the caller restores them)
// and installs the date parser.

#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t C_DateFuzzMaxText = 256;
constexpr uint8_t C_DateFuzzHeaderMark = 0x01;
constexpr size_t C_DateFuzzHeaderSize = 7;

struct TVDateFuzzResult
{
    std::string text;  // the expression text that was used
    std::string fault; // empty when the property holds
};

TVDateFuzzResult tv_date_fuzz_check(const uint8_t* data, size_t size);

class TVDate;

// What is wrong with a date that an evaluation gave: "" for the exact blank
// or invalid date and for a real one with every field in range.
std::string tv_date_fuzz_malformed(const TVDate& date);

#endif // TVDATEFUZZCHECK_H
