#ifndef TVDBFILETEST_H
#define TVDBFILETEST_H

// Fixture verbs for the tests of the database's files: a database of
// TVDBTestNode objects in a temporary folder (scratch and cache folders
// inside it too), operations that name what they add, a reopen as after a
// restart, and the text of every error a call left behind.

#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbtestnode.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>
#include <set>
#include <string>

class TVDBFileTest : public TVQuietErrorTest
{
protected:
    static constexpr const char* C_AppType = "TestApp";
    // 2 June 2024 12:00:00 GMT.
    static constexpr long C_Start = 1717329600;

    void SetUp() override;

    // Points the data and cache folders at a fresh folder of the
    // temporary directory and names the main file in it.
    void use_folder(const std::string& name);
    // A database of C_AppType loaded as after a restart: the partial file
    // kept and replayed, stale intermediate files cleared away.
    std::unique_ptr<TVDatabase> reopen();
    // Adds a node called name as one operation; returns the result.
    static int add(TVDatabase& db, const std::string& name);
    // The names of the live nodes.
    static std::set<std::string> names(const TVDatabase& db);
    // Every pending error's texts, system and user, newest first; clears them.
    static std::string take_messages();

    static std::string slurp(const std::string& file);
    static void spill(const std::string& file, const std::string& text);

    TestClock m_clock{C_Start};
    QTemporaryDir m_dir;
    std::string m_file;
};

#endif // TVDBFILETEST_H
