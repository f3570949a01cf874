#include "LibCore/ptrarray/tvptrarray.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "TestSupport/tvraise.h"

namespace {

// Counts live instances, so a test can tell who deleted what.
struct Counted {
    static int live;
    int value;
    explicit Counted(int v) : value(v) { ++live; }
    Counted(const Counted& other) : value(other.value) { ++live; }
    ~Counted() { --live; }
};
int Counted::live = 0;

class PtrArrayTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        Counted::live = 0;
    }
    void TearDown() override
    {
        EXPECT_EQ(Counted::live, 0) << "elements leaked or deleted twice";
        TVQuietErrorTest::TearDown();
    }

    static void fill(TVPtrArray<Counted>& array, std::initializer_list<int> values)
    {
        for (int v : values)
            array.add(new Counted(v));
    }

    static std::vector<int> values(const TVPtrArray<Counted>& array)
    {
        std::vector<int> out;
        for (Counted* c : array)
            out.push_back(c->value);
        return out;
    }
};

TEST_F(PtrArrayTest, NonOwningArrayNeverDeletes)
{
    Counted a(1), b(2);
    {
        TVPtrArray<Counted> array;
        array.add(&a);
        array.add(&b);
        EXPECT_EQ(array.erase(0), TVErrC_ok);
        array.clear();
        array.add(&a);
    }
    EXPECT_EQ(Counted::live, 2);
}

TEST_F(PtrArrayTest, CheckedCallsRaiseOnABadIndex)
{
    TVPtrArray<Counted> array(true);
    fill(array, {1, 2, 3});
    struct Row {
        const char* name;
        std::function<void()> call;
        const char* message;
    };
    const Row rows[] = {
        {"get past end", [&] { (void)array.get(3); }, "Element 3 out of bounds (3 items)"},
        {"get negative", [&] { (void)array.get(-1); }, "Element -1 out of bounds (3 items)"},
        {"remove", [&] { delete array.remove(7); }, "Element 7 out of bounds (3 items)"},
        {"erase", [&] { (void)array.erase(3); }, "Element 3 out of bounds (3 items)"},
        // The rejected element belongs to the owning array, which must not leak it.
        {"insert", [&] { (void)array.insert(5, new Counted(9)); },
         "Element 5 out of bounds (3 items)"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        TVRaised raised = tv_catch_raise(r.call);
        EXPECT_TRUE(raised.thrown);
        EXPECT_EQ(raised.code, TVErrC_ArrayBounds);
        EXPECT_EQ(raised.text, r.message);
        EXPECT_EQ(array.size(), 3);
        EXPECT_EQ(Counted::live, 3);
    }
}

TEST_F(PtrArrayTest, CheckedCallsGiveNullWhenErrorsContinue)
{
    get_tverror()->set_action(TVActContinue, TVSevError);
    TVPtrArray<Counted> array(true);
    fill(array, {1});
    EXPECT_EQ(array.get(1), nullptr);
    EXPECT_EQ(array.remove(-1), nullptr);
    EXPECT_TRUE(istverr(array.erase(2)));
    EXPECT_EQ(get_tverror()->get_code(), TVErrC_ArrayBounds);
    EXPECT_EQ(array.size(), 1);
}

TEST_F(PtrArrayTest, CopyOfAnOwningArrayIsDeepAndOfABorrowingOneShallow)
{
    TVPtrArray<Counted> owner(true);
    fill(owner, {1, 2});
    TVPtrArray<Counted> copy(owner);
    EXPECT_EQ(Counted::live, 4);
    EXPECT_NE(copy[0], owner[0]);
    copy[0]->value = 10;
    EXPECT_EQ(values(owner), (std::vector<int>{1, 2}));

    TVPtrArray<Counted> borrower;
    borrower.add(owner[1]);
    TVPtrArray<Counted> view;
    view = borrower;
    EXPECT_EQ(view[0], owner[1]);
    EXPECT_FALSE(view.owns());

    copy = owner;  // assignment drops the old copies first
    EXPECT_EQ(Counted::live, 4);
    EXPECT_EQ(values(copy), (std::vector<int>{1, 2}));
}

TEST_F(PtrArrayTest, MovedArrayTakesTheElements)
{
    TVPtrArray<Counted> source(true);
    fill(source, {1, 2});
    TVPtrArray<Counted> target(std::move(source));
    EXPECT_EQ(values(target), (std::vector<int>{1, 2}));
    TVPtrArray<Counted> other(true);
    fill(other, {3});
    other = std::move(target);
    EXPECT_EQ(Counted::live, 2);
    EXPECT_EQ(values(other), (std::vector<int>{1, 2}));
}

TEST_F(PtrArrayTest, SortOrdersByTheElements)
{
    TVPtrArray<Counted> array(true);
    fill(array, {3, 1, 2});
    array.sort([](const Counted* a, const Counted* b) { return a->value < b->value; });
    EXPECT_EQ(values(array), (std::vector<int>{1, 2, 3}));
}

// Random adds, inserts, erases and removals on an owning array and on a
// plain vector of values; the two must agree after every step, and the
// live count must equal the size (nothing leaked, nothing freed early).
// A removed element is the caller's: the test deletes it, and ASan would
// report a second delete by the array.
TEST_F(PtrArrayTest, RandomOperationsMatchAPlainVector)
{
    const unsigned seed = 2024;
    std::cout << "ptr array seed " << seed << "\n";
    std::mt19937 rng(seed);
    TVPtrArray<Counted> array(true);
    std::vector<int> model;
    for (int step = 0; step < 3000; ++step) {
        int size = static_cast<int>(model.size());
        int op = static_cast<int>(rng() % 5);
        int v = step;
        if (op == 0 || size == 0) {
            array.add(new Counted(v));
            model.push_back(v);
        } else if (op == 1) {
            int at = static_cast<int>(rng() % static_cast<unsigned>(size + 1));
            ASSERT_EQ(array.insert(at, new Counted(v)), TVErrC_ok);
            model.insert(model.begin() + at, v);
        } else if (op == 2) {
            int at = static_cast<int>(rng() % static_cast<unsigned>(size));
            ASSERT_EQ(array.erase(at), TVErrC_ok);
            model.erase(model.begin() + at);
        } else if (op == 3) {
            int at = static_cast<int>(rng() % static_cast<unsigned>(size));
            Counted* taken = array.remove(at);
            ASSERT_NE(taken, nullptr);
            ASSERT_EQ(taken->value, model[static_cast<size_t>(at)]);
            delete taken;
            model.erase(model.begin() + at);
        } else {
            int at = static_cast<int>(rng() % static_cast<unsigned>(size));
            ASSERT_EQ(array.get(at)->value, model[static_cast<size_t>(at)]);
        }
        ASSERT_EQ(values(array), model) << "step " << step;
        ASSERT_EQ(Counted::live, static_cast<int>(model.size())) << "step " << step;
    }
    ASSERT_FALSE(model.empty());
    EXPECT_EQ(array.first()->value, model.front());
    EXPECT_EQ(array.index_of(array.last()), array.size() - 1);
    array.clear();
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(array.first(), nullptr);
}

// ---- TVPtrArrayIndex --------------------------------------------------------

class PtrArrayIndexTest : public PtrArrayTest
{
protected:
    static void fill(TVPtrArrayIndex<Counted>& index,
                     std::initializer_list<std::pair<const char*, int>> entries)
    {
        for (const auto& e : entries) {
            Counted* c = new Counted(e.second);
            if (!index.add(e.first, c))
                delete c;
        }
    }
};

TEST_F(PtrArrayIndexTest, KeepsInsertionOrderFindsByKeyAndRefusesATakenKey)
{
    TVPtrArrayIndex<Counted> index(true);
    fill(index, {{"zeta", 1}, {"alpha", 2}, {"mid", 3}});
    EXPECT_EQ(index[0]->value, 1);
    EXPECT_EQ(index.get("mid"), index[2]);
    EXPECT_EQ(index.index_of("alpha"), 1);
    EXPECT_EQ(index.index_of("nobody"), -1);
    EXPECT_EQ(index.find("nobody"), nullptr);
    EXPECT_EQ(index.index().begin()->first, "alpha");  // the map is in key order

    // A taken key leaves the new element with the caller.
    Counted* second = new Counted(9);
    EXPECT_FALSE(index.add("alpha", second));
    EXPECT_EQ(index.find("alpha")->value, 2);
    delete second;

    EXPECT_TRUE(index.erase("alpha"));
    EXPECT_FALSE(index.erase("alpha"));
    EXPECT_EQ(Counted::live, 2);
    EXPECT_EQ(index.get(1)->value, 3);
    index.clear();
    EXPECT_EQ(Counted::live, 0);
    EXPECT_TRUE(index.index().empty());
}

TEST_F(PtrArrayIndexTest, FailedLookupsRaise)
{
    TVPtrArrayIndex<Counted> index(true);
    fill(index, {{"a", 1}});
    TVRaised byKey = tv_catch_raise([&] { (void)index.get("b"); });
    EXPECT_EQ(byKey.code, TVErrC_ArrayBounds);
    EXPECT_EQ(byKey.text, "Value not found.");
    TVRaised byIndex = tv_catch_raise([&] { (void)index.get(1); });
    EXPECT_EQ(byIndex.code, TVErrC_ArrayBounds);
    EXPECT_EQ(byIndex.text, "Index 1 out of bounds.");

    get_tverror()->set_action(TVActContinue, TVSevError);
    EXPECT_EQ(index.get("b"), nullptr);
    EXPECT_EQ(index.get(-1), nullptr);
}

TEST_F(PtrArrayIndexTest, CopyRebuildsTheMapAgainstTheCopies)
{
    TVPtrArrayIndex<Counted> original(true);
    fill(original, {{"b", 1}, {"a", 2}, {"c", 3}});
    TVPtrArrayIndex<Counted> copy(original);
    EXPECT_EQ(Counted::live, 6);
    for (const char* key : {"a", "b", "c"}) {
        SCOPED_TRACE(key);
        Counted* mine = copy.find(key);
        ASSERT_NE(mine, nullptr);
        EXPECT_NE(mine, original.find(key));               // not the source's element
        EXPECT_EQ(mine, copy[original.index_of(key)]);     // but the copy in its place
        EXPECT_EQ(mine->value, original.find(key)->value);
    }
    TVPtrArrayIndex<Counted> assigned(true);
    fill(assigned, {{"x", 9}});
    assigned = original;
    EXPECT_EQ(assigned.find("x"), nullptr);
    EXPECT_EQ(assigned.find("c"), assigned[2]);
    EXPECT_EQ(Counted::live, 9);
}

} // namespace
