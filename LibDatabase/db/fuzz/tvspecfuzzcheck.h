#ifndef TVSPECFUZZCHECK_H
#define TVSPECFUZZCHECK_H

// The property that the spec parser's fuzzer checks, shared with the test
// that replays the fuzzer's corpus in `make check`.
//
// Input: the text of one spec (at most C_SpecFuzzMaxText bytes are used).
// It is tokenised and parsed as the spec "Fuzz", and, when it parses, put
// on a free object whose variables are then worked out. What must hold:
// nothing crashes or hangs; token lines never go down and stay within the
// text; a parse is either ok with line -1, or a failure whose line lies in
// the text and whose message begins "Fuzz:LINE: error "; the same text
// parses the same way twice; and working out the variables ends.

#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t C_SpecFuzzMaxText = 4096;

// Empty when the property holds, else what broke.
std::string tv_spec_fuzz_check(const uint8_t* data, size_t size);

#endif // TVSPECFUZZCHECK_H
