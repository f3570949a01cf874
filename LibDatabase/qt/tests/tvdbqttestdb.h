#ifndef TVDBQTTESTDB_H
#define TVDBQTTESTDB_H

// TVDBQtTestDB: the database of the workspace's tests, in the place of a
// program's own. Its files are of the type C_AppType and hold TVDBTestNode
// objects, each a name (TestSupport/tvdbtestnode.h). As a program's
// database does, it counts as holding the user's data once it has a node,
// so that such a save is verified, and it verifies with a copy of its own
// kind.

#include "LibDatabase/db/tvdatabase.h"

#include <string>

class TVDBQtTestDB : public TVDatabase
{
public:
    static constexpr const char* C_AppType = "TestApp";

    TVDBQtTestDB();

    bool has_user_data() const override;
    // An empty TVDBQtTestDB of that type; the caller owns it.
    TVDatabase* create_verification_db(const std::string& app_type) const override;
};

#endif // TVDBQTTESTDB_H
