#include "LibObject/object/tvobjectindex.h"

#include "LibObject/object/tests/tvtestitem.h"
#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

namespace {

int make_nothing(TVObject*& out, const TVObject*)
{
    out = nullptr;
    return TVErrC_ok;
}

int make_base(TVObject*& out, const TVObject*)
{
    out = new TVTestBase;
    return TVErrC_ok;
}

using ObjectIndexTest = TVObjectTest;

TEST_F(ObjectIndexTest, FirstRegistrationOfANameWins)
{
    TVObjectIndex index;
    int a = -1, b = -1, again = -1;
    index.append("A", make_base, a);
    index.append("B", make_nothing, b);
    index.append("A", make_nothing, again);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(b, 1);
    EXPECT_EQ(again, a);
    EXPECT_EQ(index.size(), 2);
    EXPECT_EQ(index.find_name("A")->get_create_fn(), &make_base);
    EXPECT_EQ(index.find_id(b)->get_name(), "B");
    for (int bad : {-1, 2, 1000})
        EXPECT_EQ(index.find_id(bad), nullptr) << bad;
    EXPECT_EQ(index.find_name("C"), nullptr);
}

TEST_F(ObjectIndexTest, CopyRebuildsTheNameMapAgainstItsOwnEntries)
{
    TVObjectIndex index;
    int id = -1;
    index.append("A", make_base, id);
    index.append("B", make_nothing, id);
    TVObjectIndex copy(index);
    index = TVObjectIndex(); // the source's entries die; the copy's must not
    ASSERT_EQ(copy.size(), 2);
    EXPECT_EQ(copy.find_name("B"), copy.find_id(1));
    EXPECT_EQ(copy.find_name("A")->get_create_fn(), &make_base);
}

TEST_F(ObjectIndexTest, ClassesRegisterBeforeMainUnderTheirNames)
{
    // Found by name without any object of theirs made first.
    for (const char* name : {"TVTestBase", "TVTestItem", "TVTestNote"}) {
        SCOPED_TRACE(name);
        const TVObjectIndexEntry* entry = tvclassindex()->find_name(name);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(TVObject::get_id_from_name(name), entry->get_id());
    }
    EXPECT_EQ(TVObject::get_id_from_name("TVNeverRegistered"), -1);
    // The constructor's own registration lands on the same entry.
    TVTestItem item;
    EXPECT_EQ(item.get_class_id(), TVObject::get_id_from_name("TVTestItem"));
    EXPECT_EQ(item.get_class_name(), "TVTestItem");
}

TEST_F(ObjectIndexTest, ClassOnlyNamedInAFileIsKeptByWholeLinking)
{
    // Nothing in this program refers to TVTestByName's code.
    ASSERT_NE(tvclassindex()->find_name("TVTestByName"), nullptr);
    std::unique_ptr<TVObject> object = read("{TVTestByName\n}\n");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->get_class_name(), "TVTestByName");
    EXPECT_EQ(write(*object), "{TVTestByName\n}\n");
}

} // namespace
