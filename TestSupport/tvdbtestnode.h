#ifndef TVDBTESTNODE_H
#define TVDBTESTNODE_H

// A stored class of the tests, with a name ("n", left out when empty)
// ahead of TVDBObject's lines, and three containers as a database-like
// class would declare them:
//
//   "kids"     TVDBTestNode children whose container tag is "kids"
//   ""         every child, whatever its tag
//   "DB:kids"  all "kids" of the tree, when this node is the root

#include "LibDatabase/db/tvdbcontainer.h"
#include "LibDatabase/db/tvdbobject.h"

#include <string>

class TVDBTestNode : public TVDBObject
{
public:
    static constexpr const char* C_KidsTag = "kids";

    TVDBTestNode();
    explicit TVDBTestNode(const std::string& name);
    TVDBTestNode(const TVDBTestNode& other);
    TVDBTestNode& operator=(const TVDBTestNode& other);
    ~TVDBTestNode() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    std::string m_name;
    TVDBContainer<TVDBTestNode> m_kids{C_KidsTag};
    TVDBContainer<TVDBObject> m_all{""};
    TVDBContainer<TVDBTestNode> m_dbKids{"DB:kids"};

private:
    void register_containers();
};

#endif // TVDBTESTNODE_H
