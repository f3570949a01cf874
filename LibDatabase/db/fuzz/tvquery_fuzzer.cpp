// libFuzzer entry for the query language: arbitrary text to the parser,
// the serial form and a run, with the property of tv_query_fuzz_check.
// Built by `make fuzz`.

#include "LibDatabase/db/fuzz/tvqueryfuzzcheck.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string fault = tv_query_fuzz_check(data, size);
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
