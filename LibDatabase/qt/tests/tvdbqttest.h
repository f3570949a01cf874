#ifndef TVDBQTTEST_H
#define TVDBQTTEST_H

// Fixture verbs for the database window and its flows: a maths file in a
// temporary home (data, cache and scratch folders inside it), an
// application object that names the file extension, a clock in the test's
// hands, exercises added as named operations, a flow run to its end by
// draining the event loop, and the lock a dead process leaves behind.

#include "AppTarvelloMaths/maths/mathsdb.h"
#include "LibCore/application/tvapplication.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <gtest/gtest.h>

#include <QObject>
#include <QTemporaryDir>

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

class TVDBQtTest : public TVQuietErrorTest
{
protected:
    // 2 June 2024 12:00:00 GMT.
    static constexpr long C_Start = 1717329600;
    static constexpr const char* C_Extension = ".tvmaths";

    void SetUp() override;
    void TearDown() override;

    // The identity of the test's application object.
    static TVAppIdentity identity();

    // Adds an exercise called name as one operation "Add <name>".
    static int add(MathsDB& db, const std::string& name);
    // The names of the exercises.
    static std::set<std::string> names(const MathsDB& db);
    // A fresh saved maths file holding exercises of those names.
    void write_file(const std::string& file, const std::set<std::string>& exercises);
    // Runs the event loop until done() holds (bounded; no sleeping).
    static bool drain(const std::function<bool()>& done);
    // A lock file as a process that died holding it leaves it.
    static void leave_lock_behind(const std::string& file);
    std::string scratch(const std::string& ext) const;

    static std::string slurp(const std::string& file);
    static void spill(const std::string& file, const std::string& text);

    TestClock m_clock{C_Start};
    QTemporaryDir m_dir;
    std::unique_ptr<TVApplication> m_app;
    // The application's default file, so a load needs no first-use choice.
    std::string m_file;
    std::unique_ptr<MathsDB> m_db;
};

#endif // TVDBQTTEST_H
