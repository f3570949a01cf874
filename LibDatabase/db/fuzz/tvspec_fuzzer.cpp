// libFuzzer entry for the spec language: arbitrary text to the tokeniser,
// the parser and the working out of variables, with the property of
// tv_spec_fuzz_check. Built by `make fuzz`.

#include "LibDatabase/db/fuzz/tvspecfuzzcheck.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string fault = tv_spec_fuzz_check(data, size);
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
