#include "LibObject/object/tvobject.h"

#include "LibObject/object/tests/tvtestitem.h"
#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace {

class ObjectTest : public TVObjectTest
{
protected:
    // An item with a value in every kind of member, nested objects included.
    static void fill(TVTestItem& item, int seed)
    {
        item.m_key = seed;
        item.m_name = "name" + std::to_string(seed);
        item.m_flag = true;
        item.m_count = seed * 10;
        item.m_ratio = seed + 0.25;
        item.m_ref = TVId(seed, 1, 2);
        item.m_span = TVDuration(0, seed * 60, 0);
        item.m_text = "text\nof " + std::to_string(seed);
        item.m_numbers = {seed, seed + 1};
        item.m_words.add(new std::string("w"));
        (void)item.m_settings.add("k", new std::string(std::to_string(seed)));
        auto* kid = new TVTestItem;
        kid->m_count = seed + 100;
        kid->m_kids.add(new TVTestBase);
        item.m_kids.add(kid);
        auto* note = new TVTestNote;
        note->m_weight = seed;
        item.m_notes.add(note);
        item.m_lines.add(new std::string("{raw"));
    }
};

TEST_F(ObjectTest, ObjectOfNoRegisteredClassFailsAsTabledAndNeverCrashes)
{
    const TVObject plain;
    EXPECT_EQ(plain.get_class_id(), -1);
    EXPECT_EQ(plain.get_class_name(), "");

    EXPECT_EQ(plain.clone_class(), nullptr);
    TVRaised r = take_pending();
    EXPECT_EQ(r.code, TVObject::TVErrC_ObjectNotRegistered);
    EXPECT_EQ(r.text, "Object has invalid id -1");

    std::ostringstream out;
    r = tv_catch_raise([&] { (void)plain.write_class(out, C_Version); });
    EXPECT_TRUE(r.thrown);
    EXPECT_EQ(r.code, TVObject::TVErrC_ObjectNotRegistered);
    EXPECT_EQ(r.text, "Object has invalid id -1");
    EXPECT_EQ(out.str(), "");

    const TVObjectIndexEntry* entry = nullptr;
    r = tv_catch_raise([&] { (void)plain.get_class_index_entry("TVNoSuchClass", entry); });
    EXPECT_EQ(r.text, "Object TVNoSuchClass not in class index");
    EXPECT_EQ(entry, nullptr);
}

TEST_F(ObjectTest, FactoryRefusesASourceOfAnotherClass)
{
    const TVTestNote note;
    TVObject* out = nullptr;
    const TVRaised r = tv_catch_raise([&] { (void)TVTestItem::create_tvobject(out, &note); });
    EXPECT_EQ(r.code, TVErrC_DynamicCast);
    EXPECT_EQ(r.text, "Dynamic cast to TVTestItem failed.");
    EXPECT_EQ(out, nullptr);
}

TEST_F(ObjectTest, CloneKeepsTheDynamicClassBehindABasePointer)
{
    TVTestItem item;
    fill(item, 3);
    const TVTestBase& base = item;
    std::unique_ptr<TVObject> clone(base.clone_class());
    ASSERT_NE(clone, nullptr);
    EXPECT_NE(dynamic_cast<TVTestItem*>(clone.get()), nullptr);
    EXPECT_EQ(write(*clone), write(item));
}

TEST_F(ObjectTest, DerivedAssignAndCompareGoThroughTheSerialForm)
{
    TVTestItem source, target;
    fill(source, 1);
    fill(target, 2);
    target.m_scale = 7.5;       // at its default in source: must be reset
    target.m_letter = 'q';
    EXPECT_FALSE(target.derived_compare(source, C_Version));

    TVTestBase& viaBase = target;
    ASSERT_EQ(viaBase.derived_assign(source, C_Version), TVErrC_ok);
    EXPECT_TRUE(target.derived_compare(source, C_Version));
    EXPECT_EQ(write(target), write(source));
    EXPECT_EQ(target.m_scale, 0.0);
    EXPECT_EQ(target.m_letter, TVTestItem::C_DefaultChar);
    EXPECT_EQ(target.m_text, "text\nof 1");
    ASSERT_EQ(target.m_kids.size(), 1);
    EXPECT_EQ(dynamic_cast<TVTestItem*>(target.m_kids[0])->m_count, 101);
}

TEST_F(ObjectTest, ObjectsDifferingOnlyInReadEntriesCompareDifferent)
{
    std::unique_ptr<TVTestItem> a = read<TVTestItem>("{TVTestItem\n!i!1\n!zz!new\n}\n");
    std::unique_ptr<TVTestItem> b = read<TVTestItem>("{TVTestItem\n!i!1\n}\n");
    ASSERT_TRUE(a && b);
    EXPECT_FALSE(a->derived_compare(*b, C_Version));
    EXPECT_FALSE(*a == *b);
    b->clear_unhandled_data();
    a->clear_unhandled_data();
    EXPECT_TRUE(a->derived_compare(*b, C_Version));
}

TEST_F(ObjectTest, CopyDeepCopiesTheReadEntries)
{
    std::unique_ptr<TVTestItem> original = read<TVTestItem>("{TVTestItem\n!zz!1\n!yy!2\n}\n");
    ASSERT_NE(original, nullptr);
    TVTestItem copy(*original);
    EXPECT_TRUE(copy == *original);
    ASSERT_EQ(original->remove_serentry(0), TVErrC_ok);
    EXPECT_EQ(copy.get_nserentries(), 2);
    EXPECT_EQ(copy.get_serentry(0)->get_value(), "1");
    EXPECT_FALSE(copy == *original);
    const TVTestItem& same = copy;
    copy = same; // assignment to oneself keeps everything
    EXPECT_EQ(copy.get_nserentries(), 2);
    EXPECT_EQ(copy.get_serentry(5), nullptr);
}

TEST_F(ObjectTest, ObjectFromStringMakesTheClassTheTextNames)
{
    TVObject* made = nullptr;
    ASSERT_EQ(TVObject::object_from_string("junk\n{TVTestNote\n!w!4\n!x!hi\n}\n", made, C_Version),
              TVErrC_ok);
    std::unique_ptr<TVObject> owned(made);
    auto* note = dynamic_cast<TVTestNote*>(made);
    ASSERT_NE(note, nullptr);
    EXPECT_EQ(note->m_weight, 4);
    EXPECT_EQ(note->m_text, "hi");
    std::string text;
    ASSERT_EQ(note->object_to_string(text, C_Version), TVErrC_ok);
    EXPECT_EQ(text, "{TVTestNote\n!w!4\n!x!hi\n}\n");
}

} // namespace
