#include "TestSupport/tvdbfiletest.h"

#include <QtGlobal>

#include <fstream>
#include <sstream>

void TVDBFileTest::SetUp()
{
    TVQuietErrorTest::SetUp();
    // Errors come back as values, so each case can look at what survived.
    get_tverror()->set_action(TVActContinue, TVSevError);
    ASSERT_TRUE(m_dir.isValid());
    use_folder("db");
}

void TVDBFileTest::use_folder(const std::string& name)
{
    const std::string root = m_dir.path().toStdString() + "/" + name;
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
    qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
    m_file = root + "/maths.tvmaths";
}

std::unique_ptr<TVDatabase> TVDBFileTest::reopen()
{
    auto db = std::make_unique<TVDatabase>();
    db->set_app_type(C_AppType);
    const int result = db->load(m_file, true, std::string(), true, true, true);
    EXPECT_EQ(result, TVErrC_ok) << take_messages();
    return db;
}

int TVDBFileTest::add(TVDatabase& db, const std::string& name)
{
    return db.add_object(new TVDBTestNode(name), nullptr, "", "", -1, "Add " + name);
}

std::set<std::string> TVDBFileTest::names(const TVDatabase& db)
{
    std::set<std::string> found;
    for (int i = 0; i < db.get_nobjects(); ++i)
        if (const auto* node = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i)))
            if (!node->is_deleted())
                found.insert(node->m_name);
    return found;
}

std::string TVDBFileTest::take_messages()
{
    std::string text;
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i)
        text += error->error_at(i)->get_details(TVAspectSystem) + " | " +
                error->error_at(i)->get_details(TVAspectUser) + "\n";
    error->clear_all();
    return text;
}

std::string TVDBFileTest::slurp(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

void TVDBFileTest::spill(const std::string& file, const std::string& text)
{
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
}
