// libFuzzer entry for the serial form: arbitrary bytes to read_class, with
// the round-trip property of tv_serial_fuzz_check. Built by `make fuzz`.

#include "LibCore/error/tverror.h"
#include "LibObject/object/fuzz/tvserialfuzzcheck.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Nearly every input is malformed; the echo of each error would drown the run.
    get_tverror()->set_stream(nullptr, TVSevAll);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const TVSerialFuzzResult result = tv_serial_fuzz_check(data, size);
    if (!result.fault.empty()) {
        std::fprintf(stderr, "%s\n", result.fault.c_str());
        std::abort();
    }
    return 0;
}
