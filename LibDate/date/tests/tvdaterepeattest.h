#ifndef TVDATEREPEATTEST_H
#define TVDATEREPEATTEST_H

// Fixture for the repeat rules: the date language's fixture (clock fixed at
// Monday 15 March 2021 12:34:56 UTC, zone GMT, weeks from Monday, day-first
// dates), errors recorded silently, the global generation range cleared,
// and a configuration with a second work-day set, WEEKEND (id 1).

#include <string>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibDate/date/tests/tvdateexptest.h"
#include "LibDate/date/tvdaterepeat.h"
#include "LibDate/date/tvrepeatconfig.h"

class TVDateRepeatTest : public TVDateExpTest
{
protected:
    static constexpr int C_Weekend = 0x41; // Sunday and Saturday

    void SetUp() override
    {
        TVDateExpTest::SetUp();
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
        TVDateRepeat::set_global_range(TVDateSlot(), -1);
        int id = 0;
        ASSERT_EQ(TVErrC_ok, m_config.add_workset("WEEKEND", C_Weekend, id));
        ASSERT_EQ(1, id);
    }

    void TearDown() override
    {
        TVDateRepeat::set_global_range(TVDateSlot(), -1);
        TVError::release();
        TVDateExpTest::TearDown();
    }

    // The rule of a stored text that must read.
    static TVDateRepeat rule(const std::string& text)
    {
        TVDateRepeat read;
        EXPECT_EQ(TVErrC_ok, read.from_string(text)) << text << ": " << last_message();
        return read;
    }

    // The newest error's text, "" if none.
    static std::string last_message()
    {
        const TVErrDetails* details = get_tverror()->error_details();
        return details == nullptr ? std::string() : details->get_details(TVAspectSystem);
    }

    // "2021-03-04 09:00:00, ...": the GMT starts of slots.
    static std::string starts(const std::vector<TVDateSlot>& slots)
    {
        std::string text;
        for (const TVDateSlot& slot : slots)
            text += (text.empty() ? "" : ", ") + gmt_text(slot.get_start());
        return text;
    }

    // "start - end" of each slot in GMT, "blank" for a blank end.
    static std::string spans(const std::vector<TVDateSlot>& slots)
    {
        std::string text;
        for (const TVDateSlot& slot : slots)
            text += (text.empty() ? "" : ", ") + gmt_text(slot.get_start()) + " - " +
                    (slot.get_end().is_blank() ? "blank" : gmt_text(slot.get_end()));
        return text;
    }

    TVRepeatConfig m_config;
};

#endif // TVDATEREPEATTEST_H
