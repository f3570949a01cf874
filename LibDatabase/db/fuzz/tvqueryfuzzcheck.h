#ifndef TVQUERYFUZZCHECK_H
#define TVQUERYFUZZCHECK_H

// The property that the query parser's fuzzer checks, shared with the test
// that replays the fuzzer's corpus in `make check`.
//
// Input: the text of one query (at most C_QueryFuzzMaxText bytes are
// used), parsed as the query "Fuzz". What must hold: nothing crashes or
// hangs; a parse is either ok with line -1, or a failure whose line lies
// in the text and whose message begins "Fuzz:LINE: error "; the same text
// parses the same way twice; a query that parses writes a serial form
// that reads back and writes the same bytes, expands its prompts, and
// runs on an empty database to a table with a column per field part.

#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t C_QueryFuzzMaxText = 4096;

// Empty when the property holds, else what broke.
std::string tv_query_fuzz_check(const uint8_t* data, size_t size);

#endif // TVQUERYFUZZCHECK_H
