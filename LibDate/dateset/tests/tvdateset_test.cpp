#include "LibDate/dateset/tvdateset.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "LibCore/error/tverror.h"
#include "TestSupport/tvdatetestenv.h"

class TVDateSetTest : public TVDateTest
{
protected:
    void SetUp() override
    {
        TVDateTest::SetUp();
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
    }

    void TearDown() override
    {
        TVError::release();
        TVDateTest::TearDown();
    }

    // Wednesday 10 March 2021 at hour:minute GMT.
    static TVDate at(int hour, int minute = 0) { return utc(2021, 3, 10, hour, minute); }
    static TVDateSlot span(int from, int to) { return TVDateSlot(at(from), at(to), false); }

    static std::string clock(const TVDate& date)
    {
        std::string text = date.to_string("%H:%M");
        if (text[0] == '0')
            text.erase(0, 1);
        if (text.compare(text.size() - 3, 3, ":00") == 0)
            text.erase(text.size() - 3);
        return text;
    }

    // "9-10/0 11-12/1": each entry's hours and type, in the set's order.
    static std::string entries(const TVDateSet& set)
    {
        std::string text;
        for (int i = 0; i < set.size(); ++i) {
            const TVDateSlot& slot = set[i].m_slot;
            text += (i > 0 ? " " : "") + clock(slot.get_start()) + "-" + clock(slot.get_end()) +
                    "/" + std::to_string(set[i].m_type);
        }
        return text;
    }

    static std::string write(const TVObject& object)
    {
        std::ostringstream out;
        EXPECT_EQ(TVErrC_ok, object.write_class(out, 0));
        return out.str();
    }

    static std::unique_ptr<TVDateSet> read(const std::string& text)
    {
        std::istringstream in(text);
        TVObject* object = nullptr;
        int result = TVObject::read_class(in, object, 0);
        std::unique_ptr<TVObject> owned(object);
        if (istvwarn(result))
            return nullptr;
        auto* set = dynamic_cast<TVDateSet*>(owned.get());
        if (set != nullptr)
            owned.release();
        return std::unique_ptr<TVDateSet>(set);
    }
};

TEST_F(TVDateSetTest, AddingKeepsEntriesSortedAndMergedByType)
{
    struct Add
    {
        int m_from, m_fromMinute, m_to, m_toMinute, m_type;
    };
    struct Row
    {
        const char* m_name;
        bool m_keepDuration;
        std::vector<Add> m_adds;
        const char* m_entries;
    };
    const Row rows[] = {
        {"out of order", false, {{11, 0, 12, 0, 0}, {9, 0, 10, 0, 0}}, "9-10/0 11-12/0"},
        {"overlapping", false, {{9, 0, 11, 0, 0}, {10, 0, 12, 0, 0}}, "9-12/0"},
        {"touching", false, {{9, 0, 10, 0, 0}, {10, 0, 11, 0, 0}}, "9-11/0"},
        {"a bridge joins two", false, {{9, 0, 10, 0, 0}, {11, 0, 12, 0, 0}, {10, 0, 11, 0, 0}},
         "9-12/0"},
        {"nested", false, {{9, 0, 12, 0, 0}, {10, 0, 11, 0, 0}}, "9-12/0"},
        {"other types overlap", false, {{9, 0, 11, 0, 0}, {10, 0, 12, 0, 1}}, "9-11/0 10-12/1"},
        {"same start sorts by end, then type", false, {{9, 0, 12, 0, 2}, {9, 0, 10, 0, 1}},
         "9-10/1 9-12/2"},
        {"durations add up", true, {{9, 0, 10, 0, 0}, {9, 30, 11, 0, 0}}, "9-11:30/0"},
        {"a longer merge reaches the next entry", true,
         {{9, 0, 10, 0, 0}, {10, 30, 11, 0, 0}, {9, 0, 10, 0, 0}}, "9-11:30/0"},
    };
    for (const Row& row : rows) {
        TVDateSet added;
        TVDateSet bulk;
        added.set_keepduration(row.m_keepDuration);
        bulk.set_keepduration(row.m_keepDuration);
        for (const Add& add : row.m_adds) {
            TVDateSlot slot(at(add.m_from, add.m_fromMinute), at(add.m_to, add.m_toMinute), false);
            added.add(slot, add.m_type);
            bulk.bulk_add(slot, add.m_type);
        }
        EXPECT_EQ(row.m_entries, entries(added)) << row.m_name;
        EXPECT_EQ(static_cast<int>(row.m_adds.size()), bulk.size()) << row.m_name;
        bulk.finish_bulk_add();
        EXPECT_EQ(row.m_entries, entries(bulk)) << row.m_name;
    }
}

TEST_F(TVDateSetTest, SubtractSplitsOnlyItsType)
{
    TVDateSet set;
    set.add(span(9, 12), 0);
    set.add(span(9, 12), 1);
    struct Row
    {
        const char* m_name;
        TVDateSlot m_slot;
        int m_type;
        const char* m_entries;
    };
    const Row rows[] = {
        {"a hole in type 0", span(10, 11), 0, "9-10/0 9-12/1 11-12/0"},
        {"a hole in all types", span(10, 11), TVDateSet::C_AnyType, "9-10/0 9-10/1 11-12/0 11-12/1"},
        {"the start of type 1", span(8, 10), 1, "9-12/0 10-12/1"},
        {"all of type 0", span(9, 12), 0, "9-12/1"},
        {"touching takes nothing", span(12, 13), TVDateSet::C_AnyType, "9-12/0 9-12/1"},
        {"another type takes nothing", span(10, 11), 5, "9-12/0 9-12/1"},
    };
    for (const Row& row : rows) {
        TVDateSet copy(set);
        copy.subtract(row.m_slot, row.m_type);
        EXPECT_EQ(row.m_entries, entries(copy)) << row.m_name;
    }
    TVDateSet holes;
    holes.add(span(10, 11), 1);
    holes.add(span(9, 10), 0);
    TVDateSet copy(set);
    copy.subtract(holes);
    EXPECT_EQ("9-10/1 10-12/0 11-12/1", entries(copy));
}

TEST_F(TVDateSetTest, AddReturnLeavesTheSetAlone)
{
    TVDateSet set;
    set.add(span(9, 12), 0);
    set.add(span(9, 12), 1);
    TVDateSet more;
    more.add(span(12, 13), 0);
    EXPECT_EQ("9-12/1 9-13/0", entries(set.add_return(more)));
    EXPECT_EQ("9-12/0 9-12/1", entries(set));
}

TEST_F(TVDateSetTest, MatchAndFindLookOnlyInside)
{
    TVDateSet set;
    set.add(span(9, 10), 0);
    set.add(span(11, 12), 0);
    struct Row
    {
        const char* m_name;
        TVDate m_date;
        bool m_match;
        int m_find;
        int m_rfind;
    };
    const Row rows[] = {
        {"before all", at(8), false, -1, -1},
        {"a start", at(9), true, 0, 0},
        {"an end", at(10), true, 0, 0},
        {"between", at(10, 30), false, -1, 0},
        {"inside the second", at(11, 30), true, 1, 1},
        {"after all", at(13), false, -1, 1},
        {"a blank date", TVDate(TVDate::E_DateBlank), false, -1, 1},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_match, set.match(row.m_date)) << row.m_name;
        EXPECT_EQ(row.m_find, set.safe_find(row.m_date)) << row.m_name;
        EXPECT_EQ(row.m_rfind, set.safe_rfind(row.m_date)) << row.m_name;
    }
}

TEST_F(TVDateSetTest, SpansAndTimesOfTheSet)
{
    TVDateSet set;
    EXPECT_TRUE(set.start().is_invalid());
    EXPECT_TRUE(set.end().is_invalid());
    set.add(span(9, 12), 0);
    set.add(span(10, 11), 1);
    set.add(span(14, 15), 0);
    EXPECT_EQ(at(9), set.start());
    EXPECT_EQ(at(15), set.end());
    EXPECT_EQ(TVDuration(5 * 3600), set.duration());
    // After 10:30: 1:30 of 9-12, 0:30 of 10-11, all of 14-15.
    EXPECT_EQ(TVDuration(3 * 3600), set.time_after(at(10, 30)));
    EXPECT_EQ(TVDuration(2 * 3600), set.time_before(at(10, 30)));
    EXPECT_EQ(TVDuration(0), set.time_after(at(15)));

    EXPECT_EQ((std::vector<int>{0, 1}), set.query_range(span(10, 13)));
    EXPECT_EQ((std::vector<int>{0}), set.query_range(TVDateSlot(at(11, 30))));
    EXPECT_FALSE(set.has_range(span(13, 14))); // touches 14-15 only
    EXPECT_TRUE(set.has_range(span(13, 15)));
}

TEST_F(TVDateSetTest, AllocateFindsTheFirstFreeSpan)
{
    struct Row
    {
        const char* m_name;
        int m_hours;
        int m_minutes;
        TVDateSlot m_within;
        const char* m_found; // "-" when nothing fits
    };
    // Busy 9-10 (type 0) and 10:30-12 (type 1): free are 8-9, 10-10:30, 12 on.
    const Row rows[] = {
        {"before the first entry", 1, 0, span(8, 14), "8-9"},
        {"a gap just long enough", 0, 30, span(9, 14), "10-10:30"},
        {"a gap too short is skipped", 1, 0, span(9, 14), "12-13"},
        {"nothing fits", 3, 0, span(9, 14), "-"},
    };
    for (const Row& row : rows) {
        TVDateSet set;
        set.add(span(9, 10), 0);
        set.add(TVDateSlot(at(10, 30), at(12), false), 1);
        TVDateSlot found;
        bool ok = set.allocate(TVDuration(row.m_hours * 3600L + row.m_minutes * 60L), row.m_within,
                               2, found);
        EXPECT_EQ(row.m_found,
                  ok ? clock(found.get_start()) + "-" + clock(found.get_end()) : std::string("-"))
            << row.m_name;
        EXPECT_EQ(ok ? 3 : 2, set.size()) << row.m_name;
        if (ok) {
            EXPECT_EQ(1u, set.query_range(found).size()) << row.m_name;
        }
    }
}

TEST_F(TVDateSetTest, SafeAddAndCleanupMendOrRefuse)
{
    TVDateSet set;
    EXPECT_EQ(TVErrC_ok, set.safe_add(TVDateSlot(at(12), at(11), false), 0));
    EXPECT_EQ(TVErrC_ok, set.safe_add(TVDateSlot(TVDate(), at(14), false), 0));
    EXPECT_EQ("11-12/0 14-14/0", entries(set));
    int refused = set.safe_add(TVDateSlot(), 0);
    EXPECT_TRUE(istvwarn(refused));
    EXPECT_EQ(TVErrC_InvalidValue, get_tverror()->get_code());
    EXPECT_EQ(2, set.size());

    // Now is 15 March 12:34:56: the 10th is past, the 16th to come.
    TVDateSet mixed;
    mixed.bulk_add(TVDateSlot(TVDate(), utc(2021, 3, 16, 9), false), 0);
    mixed.bulk_add(span(9, 10), 0);
    mixed.bulk_add(TVDateSlot(), 0);
    mixed.cleanup(false);
    EXPECT_EQ(2, mixed.size());
    mixed.cleanup(true);
    ASSERT_EQ(1, mixed.size());
    EXPECT_EQ(utc(2021, 3, 16, 9), mixed[0].m_slot.get_start());
}

TEST_F(TVDateSetTest, SerialFormRoundTripsByteForByte)
{
    TVDateSet set;
    set.set_keepduration(true);
    set.add(TVDateSlot(at(9)), 0);
    set.add(span(10, 11), 3);
    const std::string written = write(set);
    std::ostringstream moment;
    std::ostringstream hour;
    moment << TVDateSlot(at(9));
    hour << span(10, 11);
    EXPECT_EQ("{TVDateSet\n!e!" + moment.str() + ";0\n!e!" + hour.str() + ";3\n!k!1\n}\n",
              written);
    std::unique_ptr<TVDateSet> read_back = read(written);
    ASSERT_NE(nullptr, read_back);
    EXPECT_EQ(set, *read_back);
    EXPECT_EQ(written, write(*read_back));
    EXPECT_EQ("{TVDateSet\n}\n", write(TVDateSet()));
}

TEST_F(TVDateSetTest, ReadingSettlesEntriesAndKeepsUnknownLines)
{
    std::ostringstream late;
    std::ostringstream early;
    std::ostringstream crossing;
    late << span(11, 12);
    early << span(9, 10);
    crossing << TVDateSlot(at(9, 30), at(11), false);
    std::unique_ptr<TVDateSet> set = read("{TVDateSet\n!e!" + late.str() + "\n!e!" + early.str() +
                                          ";0\n!e!" + crossing.str() + ";0\n!zz!newer\n}\n");
    ASSERT_NE(nullptr, set);
    EXPECT_EQ("9-12/0", entries(*set));
    EXPECT_NE(std::string::npos, write(*set).find("!zz!newer\n"));
}
