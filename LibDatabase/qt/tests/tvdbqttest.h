#ifndef TVDBQTTEST_H
#define TVDBQTTEST_H

// Fixture verbs for the database window and its flows, over those of the
// engine's file tests (nodes added as named operations, their names, files
// read and written by the test): a file of the tests' own database class
// in a temporary home (data, cache and scratch folders inside it), an
// application object that names the file extension, a flow run to its end
// by draining the event loop, and the lock a dead process leaves behind.

#include "LibCore/application/tvapplication.h"
#include "LibDatabase/qt/tests/tvdbqttestdb.h"
#include "TestSupport/tvdbfiletest.h"

#include <gtest/gtest.h>

#include <QObject>

#include <functional>
#include <memory>
#include <set>
#include <string>

// Records how a flow ended.
class FlowEnd : public QObject
{
    Q_OBJECT

public:
    // "complete <file>", "failed", "cancelled"; empty while running.
    std::string m_end;

public slots:
    void complete(std::string file) { m_end = "complete " + file; }
    void failed() { m_end = "failed"; }
    void cancelled() { m_end = "cancelled"; }
    void unloaded() { m_end = "complete"; }
};

class TVDBQtTest : public TVDBFileTest
{
protected:
    static constexpr const char* C_Extension = ".tvmaths";

    void SetUp() override;
    void TearDown() override;

    // The identity of the test's application object.
    static TVAppIdentity identity();

    // A fresh saved file holding nodes of those names.
    void write_file(const std::string& file, const std::set<std::string>& nodes);
    // The id of the live node of that name; -1 when there is none.
    static int node_id(const TVDatabase& db, const std::string& name);
    // Runs the event loop until done() holds (bounded; no sleeping).
    static bool drain(const std::function<bool()>& done);
    // A lock file as a process that died holding it leaves it.
    static void leave_lock_behind(const std::string& file);
    std::string scratch(const std::string& ext) const;

    std::unique_ptr<TVApplication> m_app;
    // m_file is the application's default file, so a load needs no
    // first-use choice.
    std::unique_ptr<TVDBQtTestDB> m_db;
};

#endif // TVDBQTTEST_H
