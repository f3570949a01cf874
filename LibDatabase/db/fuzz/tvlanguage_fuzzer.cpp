// libFuzzer entry for the spec language (arbitrary text to the tokeniser,
// the parser and the working out of variables, tv_spec_fuzz_check) and,
// built with TV_FUZZ_QUERY, for the query language (the parser, the
// serial form and a run, tv_query_fuzz_check). Built by `make fuzz`.

#include "LibDatabase/db/fuzz/tvqueryfuzzcheck.h"
#include "LibDatabase/db/fuzz/tvspecfuzzcheck.h"
#include "LibDate/core/tvdateutils.h"

#include <cstdio>
#include <cstdlib>

namespace {

// A fixed "now", so that a date such as "today" in a query replays the same way.
void fixed_clock(long& seconds, int& micro)
{
    seconds = 1717405200L; // Monday 3 June 2024 09:00 GMT
    micro = 0;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TVDateUtils::set_clock(&fixed_clock);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
#ifdef TV_FUZZ_QUERY
    const std::string fault = tv_query_fuzz_check(data, size);
#else
    const std::string fault = tv_spec_fuzz_check(data, size);
#endif
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
