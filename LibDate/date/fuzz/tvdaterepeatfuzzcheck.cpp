#include "LibDate/date/fuzz/tvdaterepeatfuzzcheck.h"

#include <algorithm>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibDate/date/fuzz/tvdatefuzzcheck.h"
#include "LibDate/date/tvdaterepeat.h"
#include "LibDate/date/tvdateparser.h"
#include "LibDate/date/tvrepeatconfig.h"

namespace {

// Monday 1 March 2021 09:00 GMT, where every rule is used from.
const long C_FromSeconds = 1614589200L;
constexpr int C_Steps = 3;
constexpr int C_Slots = 4;

TVDateRepeat rule_of(int capability)
{
    TVDateRepeat rule;
    rule.set_capability(capability);
    return rule;
}

// Reads text into rule; whether it read. Errors are taken off the stack.
bool read(TVDateRepeat& rule, const std::string& text)
{
    bool ok = false;
    try {
        ok = !istvwarn(rule.from_string(text));
    } catch (const TVErrDetails&) {
        ok = false;
    }
    get_tverror()->clear_all();
    return ok;
}

const TVRepeatConfig& config()
{
    static TVRepeatConfig s_config = [] {
        TVRepeatConfig made;
        int id = 0;
        (void)made.add_workset("WEEKEND", 0x41, id);
        return made;
    }();
    return s_config;
}

} // namespace

TVDateRepeatFuzzResult tv_date_repeat_fuzz_check(const uint8_t* data, size_t size)
{
    TVDateRepeatFuzzResult out;
    int capability = 0;
    if (size >= C_RepeatFuzzHeaderSize && data[0] == C_RepeatFuzzHeaderMark) {
        capability = data[1] % 32;
        data += C_RepeatFuzzHeaderSize;
        size -= C_RepeatFuzzHeaderSize;
    }
    out.text.assign(reinterpret_cast<const char*>(data), std::min(size, C_RepeatFuzzMaxText));
    tv_install_date_parser();

    TVDateRepeat rule = rule_of(capability);
    if (!read(rule, out.text)) {
        if (!(rule == rule_of(capability)))
            out.fault = "A text that doesn't read changed the rule.";
        return out;
    }
    const std::string written = rule.to_string();
    TVDateRepeat back = rule_of(capability);
    if (!read(back, written)) {
        out.fault = "The rule's text \"" + written + "\" doesn't read.";
        return out;
    }
    if (back.to_string() != written) {
        out.fault = "The rule's text \"" + written + "\" reads as \"" + back.to_string() + "\".";
        return out;
    }

    TVDate from;
    from.set_time_t(C_FromSeconds, TVDate::C_GMT);
    TVDate date = from;
    for (int step = 0; step < C_Steps; ++step) {
        const TVDate next = rule.next_date(date, &config());
        const std::string fault = tv_date_fuzz_malformed(next);
        if (!fault.empty()) {
            out.fault = "A next date is " + fault + ".";
            return out;
        }
        if (!next.is_ok() || !(next > date))
            break;
        date = next;
    }
    std::vector<TVDateSlot> slots;
    rule.generate_slots(TVDateSlot(from), TVDateSlot(from, TVDate::C_Blank, false), C_Slots,
                        &config(), slots);
    for (const TVDateSlot& slot : slots) {
        if (!tv_date_fuzz_malformed(slot.get_start()).empty() ||
            !tv_date_fuzz_malformed(slot.get_end()).empty()) {
            out.fault = "A generated slot is malformed.";
            return out;
        }
    }
    if (rule.to_natural(&config()).empty())
        out.fault = "The rule has no words.";
    get_tverror()->clear_all();
    return out;
}
