#include "LibCore/log/tvdump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A record with a nested member, dumped the way the program's classes do.
struct Inner {
    int m_value = 7;
    void dump(std::ostream& out, int indent) const
    {
        TVDump dump("Inner", out, indent);
        dump.add_entry("m_value", m_value);
    }
};

struct Outer {
    struct Impl {
        int m_count = 3;
        std::vector<std::string> m_names{"a", "b"};
        Inner m_inner;
        const Inner* m_missing = nullptr;
    };
    Impl storage;
    Impl* impl = &storage;

    void dump(std::ostream& out, int indent) const
    {
        TVDump dump("Outer", out, indent);
        TVDUMP_ENTRY(dump, impl->m_count);
        dump.add_array("m_names", impl->m_names);
        dump.add_dump("m_inner", impl->m_inner);
        dump.add_dump("m_missing", impl->m_missing);
    }
};

std::string dump_of(const Outer& outer, int indent)
{
    std::ostringstream out;
    outer.dump(out, indent);
    return out.str();
}

} // namespace

TEST(DumpTest, WritesHeadingAlignedFieldsIndexedArraysAndNestedDumps)
{
    EXPECT_EQ(dump_of(Outer(), 0), "Outer Object:\n"
                                   " m_count    = 3\n"
                                   " m_names[0] = a\n"
                                   " m_names[1] = b\n"
                                   " m_inner:\n"
                                   "    Inner Object:\n"
                                   "     m_value = 7\n"
                                   " m_missing  = null\n");
}

TEST(DumpTest, EveryLineCarriesTheIndentOfItsLevel)
{
    const std::string text = dump_of(Outer(), 2);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        EXPECT_EQ(line.compare(0, 8, std::string(8, ' ')), 0) << line;
    EXPECT_NE(text.find("\n            Inner Object:\n"), std::string::npos) << text;
    EXPECT_EQ(TVDump::indent_string(-2), "");
}

TEST(DumpTest, FormatNameCutsOnlyAWholeLeaderBeforeMemberAccess)
{
    struct Row {
        const char* name;
        int index;
        const char* expected;
    };
    const Row rows[] = {
        {"impl->m_count", -1, "m_count"},
        {"impl.m_count", -1, "m_count"},
        {"d->m_list", 0, "m_list[0]"},
        {"implied", -1, "implied"},   // a leader as a prefix of a word stays
        {"data->m_x", -1, "data->m_x"},
        {"impl->", -1, "impl->"},     // nothing behind the leader: left alone
        {"m_impl->m_x", -1, "m_impl->m_x"},
        {"impl->d->m_x", -1, "d->m_x"}, // one leader only
    };
    for (const Row& row : rows)
        EXPECT_EQ(TVDump::format_name(row.name, row.index), row.expected) << row.name;
}

TEST(DumpTest, AddedLeaderIsCutToo)
{
    EXPECT_EQ(TVDump::format_name("m_priv->m_x", -1), "m_priv->m_x");
    TVDump::add_leader("m_priv");
    TVDump::add_leader("m_priv");
    EXPECT_EQ(TVDump::format_name("m_priv->m_x", -1), "m_x");
    EXPECT_EQ(std::count(TVDump::m_leader.begin(), TVDump::m_leader.end(), "m_priv"), 1);
    TVDump::m_leader.erase(std::find(TVDump::m_leader.begin(), TVDump::m_leader.end(), "m_priv"));
}

TEST(DumpTest, LongValueWrapsUnderTheValueColumnWithinTheLineWidth)
{
    std::string words;
    for (int i = 0; i < 40; ++i)
        words += "word" + std::to_string(i) + " ";
    std::ostringstream out;
    {
        TVDump dump("Long", out, 1);
        dump.add_entry("m_text", words);
        dump.add_entry("m_lines", "first\nsecond");
    }
    std::istringstream lines(out.str());
    std::vector<std::string> all;
    for (std::string line; std::getline(lines, line);)
        all.push_back(line);
    ASSERT_GE(all.size(), 4u);
    const std::string under(std::string("     m_text  = ").size(), ' ');
    EXPECT_EQ(all[1].compare(0, 20, "     m_text  = word0"), 0) << all[1];
    for (size_t i = 1; i + 2 < all.size(); ++i) {
        EXPECT_LE(all[i].size(), static_cast<size_t>(TVDump::m_lineWidth)) << all[i];
        if (i > 1) {
            EXPECT_EQ(all[i].compare(0, under.size(), under), 0) << all[i];
        }
    }
    EXPECT_EQ(all[all.size() - 2], "     m_lines = first");
    EXPECT_EQ(all.back(), under + "second");
}

TEST(DumpTest, WriteFlushesEarlyAndTheDestructorWritesOnlyWhatCameLater)
{
    std::ostringstream out;
    {
        TVDump dump("Early", out, 0);
        dump.add_entry("m_a", 1);
        dump.write();
        EXPECT_EQ(out.str(), "Early Object:\n m_a = 1\n");
        dump.add_entry("m_b", 2);
    }
    EXPECT_EQ(out.str(), "Early Object:\n m_a = 1\n m_b = 2\n");
}
