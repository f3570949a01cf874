#ifndef TVDATEREPEATFUZZCHECK_H
#define TVDATEREPEATFUZZCHECK_H

// The property that the repeat rules' fuzzer checks, shared with the test
// that replays its corpus (LibDate/date/fuzz/corpus-repeat) in `make check`.
//
// Input: a rule's stored text, or a header byte 0x01 and a capability byte
// followed by the text; at most C_RepeatFuzzMaxText bytes of text are used.
//
// What must hold: nothing crashes or hangs; a text that doesn't read leaves
// the rule as it was; a rule that reads writes a text that reads back to a
// rule writing the same text; and the rule, used from a fixed date with a
// configuration of two work-day sets, steps and generates only normalised
// dates and puts itself into words.
//
// Installs the date parser; the caller fixes the clock.

#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t C_RepeatFuzzMaxText = 512;
constexpr uint8_t C_RepeatFuzzHeaderMark = 0x01;
constexpr size_t C_RepeatFuzzHeaderSize = 2;

struct TVDateRepeatFuzzResult
{
    std::string text;  // the rule's text that was used
    std::string fault; // empty when the property holds
};

TVDateRepeatFuzzResult tv_date_repeat_fuzz_check(const uint8_t* data, size_t size);

#endif // TVDATEREPEATFUZZCHECK_H
