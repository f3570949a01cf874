// Building the tree of a database from the parent ids of a flat list.

#include "LibDatabase/db/tvresolvecontainers.h"

#include "TestSupport/tvdbtestnode.h"
#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

constexpr int C_RootId = 0;

// A database in miniature: a root node and a flat, owning list of nodes
// found by id, as a file leaves them.
class ResolveTest : public TVQuietErrorTest
{
protected:
    ResolveTest() { m_root.set_id(C_RootId, TVDateUtils::now(), true); }

    // A node under parent in container ctag (a parent of -1: top level).
    TVDBTestNode& add(int id, int parent, const std::string& ctag, const std::string& mtag = "")
    {
        TVDBTestNode* node = new TVDBTestNode("n" + std::to_string(id));
        node->set_id(id, TVDateUtils::now(), true);
        TVDBTestNode stand_in;
        stand_in.set_id(parent, TVDateUtils::now(), true);
        node->set_parent(parent < 0 ? nullptr : &stand_in, ctag, mtag, nullptr);
        node->set_parent_ptr(nullptr, nullptr);
        m_objects.add(node);
        m_byId[id] = node;
        return *node;
    }

    int resolve()
    {
        return resolve_containers(m_root, nullptr, m_objects, [this](int id) -> TVDBObject* {
            auto it = m_byId.find(id);
            return it == m_byId.end() ? nullptr : it->second;
        });
    }

    static std::vector<int> ids(const TVDBContainer<TVDBTestNode>& c)
    {
        std::vector<int> out;
        for (const TVDBTestNode* n : c)
            out.push_back(n->get_id());
        return out;
    }
    static std::vector<int> ids(const TVDBContainer<TVDBObject>& c)
    {
        std::vector<int> out;
        for (const TVDBObject* n : c)
            out.push_back(n->get_id());
        return out;
    }

    TVDBTestNode m_root{"root"};
    TVPtrArray<TVDBObject> m_objects{true};
    std::map<int, TVDBObject*> m_byId;
};

TEST_F(ResolveTest, ChildrenLandInTheirTaggedTheEmptyAndTheDatabaseWideContainers)
{
    add(1, C_RootId, "kids");
    add(2, 1, "kids", "Leaf");
    add(3, 1, "other");
    add(4, 2, "kids");
    EXPECT_EQ(resolve(), 0);

    const auto& one = dynamic_cast<TVDBTestNode&>(*m_byId[1]);
    EXPECT_EQ(ids(m_root.m_kids), std::vector<int>{1});
    EXPECT_EQ(ids(one.m_kids), std::vector<int>{2});
    // "other" has no container of its own: only the catch-all lists it.
    EXPECT_EQ(ids(one.m_all), (std::vector<int>{2, 3}));
    // Every "kids" of the tree, whoever the parent.
    EXPECT_EQ(ids(m_root.m_dbKids), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(m_byId[4]->get_parent(), m_byId[2]);
    EXPECT_EQ(one.get_child_by_mtag("Leaf"), m_byId[2]);
    EXPECT_EQ(one.get_num_member_tag("Leaf"), 1); // in two containers, counted once
}

TEST_F(ResolveTest, DeletedAndTopLevelObjectsStandInNoContainer)
{
    add(1, C_RootId, "kids").set_state('D');
    add(2, -1, "kids");
    add(3, 1, "kids");
    EXPECT_EQ(resolve(), 0);
    EXPECT_TRUE(ids(m_root.m_kids).empty());
    EXPECT_TRUE(ids(m_root.m_all).empty());
    // The child of a tombstone still finds its parent.
    EXPECT_EQ(m_byId[3]->get_parent(), m_byId[1]);
}

TEST_F(ResolveTest, OrphanIsKeptAsDeletedUnderTheRoot)
{
    add(1, C_RootId, "kids");
    add(2, 77, "kids", "Leaf");
    EXPECT_EQ(resolve(), 1);

    const TVDBObject& orphan = *m_byId[2];
    EXPECT_EQ(orphan.get_obj_state(), 'D');
    EXPECT_EQ(orphan.get_parent(), &m_root);
    EXPECT_EQ(orphan.get_parent_id(), C_RootId);
    EXPECT_EQ(orphan.get_container_tag(), "");
    EXPECT_EQ(orphan.get_member_tag(), "");
    EXPECT_EQ(ids(m_root.m_dbKids), std::vector<int>{1});
    // Once deleted it stays out: a second pass finds no orphan.
    EXPECT_EQ(resolve(), 0);
}

TEST_F(ResolveTest, ResolvingAgainRebuildsRatherThanAppends)
{
    add(1, C_RootId, "kids");
    add(2, 1, "kids");
    resolve();
    m_byId[2]->set_state('D');
    resolve();
    EXPECT_EQ(ids(m_root.m_dbKids), std::vector<int>{1});
    EXPECT_TRUE(ids(dynamic_cast<TVDBTestNode&>(*m_byId[1]).m_kids).empty());
}

TEST_F(ResolveTest, ContainerRefusesAnObjectOfAnotherType)
{
    TVDBObject plain;
    plain.set_id(9, TVDateUtils::now(), true);
    EXPECT_TRUE(istvwarn(m_root.m_kids.add_object(&plain)));
    EXPECT_EQ(get_tverror()->get_code(), TVErrC_DynamicCast);
    get_tverror()->clear_all();
    EXPECT_EQ(m_root.m_all.add_object(&plain), TVErrC_ok);
    EXPECT_EQ(m_root.m_all.find(9), &plain);
}

} // namespace
