#ifndef TVSERIALFUZZCHECK_H
#define TVSERIALFUZZCHECK_H

// The property that the serial form's fuzzer checks, shared with the test
// that replays the fuzzer's corpus in `make check`.
//
// The bytes go to TVObject::read_class. Whatever reads without a fault is
// written, read and written again, and the two writes must be the same
// bytes. The one exception is an object holding a tagged class that no
// member consumed: writing drops that block's "@" line (kept on purpose, see
// TVSerialisationEntry::write_entry), so its text changes shape once more;
// the check then starts again from what it wrote, at most
// C_SerialFuzzMaxPasses times, and a later read may fail.
//
// Errors reported on the way are expected and cleared. The caller should
// silence the error framework's echo streams. Needs the test classes
// (TVTestItem and friends) linked in.

#include <cstddef>
#include <cstdint>
#include <string>

constexpr int C_SerialFuzzMaxPasses = 8;

struct TVSerialFuzzResult {
    bool read = false;  // the bytes gave an object
    std::string fault;  // empty when the property holds; else what went wrong
};

TVSerialFuzzResult tv_serial_fuzz_check(const uint8_t* data, size_t size);

#endif // TVSERIALFUZZCHECK_H
