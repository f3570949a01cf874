#ifndef MATHSQTTEST_H
#define MATHSQTTEST_H

// Fixture of the maths windows' tests: a new maths file in a temporary
// home, a clock in the test's hands, and the verbs that make exercises.

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <initializer_list>
#include <memory>
#include <string>

class MathsQtTest : public TVQuietErrorTest
{
protected:
    // 2 June 2024 12:00:00 GMT.
    static constexpr long C_Start = 1717329600;

    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
        const std::string root = m_dir.path().toStdString();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
        m_db = std::make_unique<MathsDB>();
        ASSERT_EQ(m_db->load(root + "/drill" + MathsDB::C_FileExtension, true, std::string(), true, true, true),
                  TVErrC_ok);
    }

    void TearDown() override
    {
        flush_deletes();
        m_db.reset();
        TVQuietErrorTest::TearDown();
    }

    static void flush_deletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    // A times tables exercise, in order, over the range given.
    int add_tables(std::initializer_list<int> tables, int minimum, int maximum, int number)
    {
        Exercise* exercise = nullptr;
        EXPECT_EQ(m_db->create_exercise(exercise), TVErrC_ok);
        for (int table : tables)
            exercise->set_value(table, true);
        exercise->set_minimum(minimum);
        exercise->set_maximum(maximum);
        exercise->set_number(number);
        exercise->set_name(exercise->generate_name());
        EXPECT_EQ(m_db->complete_operation("Test"), TVErrC_ok);
        return exercise->get_id();
    }

    int new_go(int exercise)
    {
        int id = -1;
        EXPECT_EQ(m_db->add_go(exercise, id), TVErrC_ok);
        return id;
    }

    TestClock m_clock{C_Start};
    QTemporaryDir m_dir;
    std::unique_ptr<MathsDB> m_db;
};

#endif // MATHSQTTEST_H
