// libFuzzer entry for the date language (arbitrary text and base dates to
// the parser and the evaluator, tv_date_fuzz_check) and, built with
// TV_FUZZ_REPEAT_RULES, for the repeat rules' stored text
// (TVDateRepeat::from_string, tv_date_repeat_fuzz_check). Built by `make fuzz`.

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/date/fuzz/tvdatefuzzcheck.h"
#include "LibDate/date/fuzz/tvdaterepeatfuzzcheck.h"

namespace {

// A fixed "now", so that a crash found once replays the same way.
void fixed_clock(long& seconds, int& micro)
{
    seconds = 1615811696L; // Monday 15 March 2021 12:34:56 GMT
    micro = 0;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // A zone with daylight saving, so that the local-zone paths are walked.
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    tzset();
    TVDateUtils::set_clock(&fixed_clock);
    // Nearly every input is malformed; the echo of each warning would drown the run.
    get_tverror()->set_stream(nullptr, TVSevAll);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
#ifdef TV_FUZZ_REPEAT_RULES
    const TVDateRepeatFuzzResult result = tv_date_repeat_fuzz_check(data, size);
#else
    const TVDateFuzzResult result = tv_date_fuzz_check(data, size);
#endif
    if (!result.fault.empty()) {
        std::fprintf(stderr, "\"%s\": %s\n", result.text.c_str(), result.fault.c_str());
        std::abort();
    }
    return 0;
}
