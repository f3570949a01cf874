#include "LibDatabase/qt/tests/tvdbqttestdb.h"

#include "TestSupport/tvdbtestnode.h"

TVDBQtTestDB::TVDBQtTestDB()
{
    set_app_type(C_AppType);
}

bool TVDBQtTestDB::has_user_data() const
{
    for (int i = 0; i < get_nobjects(); ++i)
        if (dynamic_cast<const TVDBTestNode*>(get_object_by_index(i)) != nullptr)
            return true;
    return false;
}

TVDatabase* TVDBQtTestDB::create_verification_db(const std::string& app_type) const
{
    auto* db = new TVDBQtTestDB;
    db->set_app_type(app_type);
    return db;
}
