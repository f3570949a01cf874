#ifndef MATHSFILETEST_H
#define MATHSFILETEST_H

// MathsFileTest: a maths file in a temporary folder, written by MathsDB as
// the program would, for the tests that read it back through tvdb; the
// side files lie where the tool will look (XDG folders of the folder).
// Helpers: answer a run on the test's clock, find the session's open
// run of an exercise, add an exercise.

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/maths/session.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <QTemporaryDir>
#include <QtGlobal>

#include <memory>
#include <string>

class MathsFileTest : public TVQuietErrorTest
{
protected:
    static constexpr long C_Day = 86400;

    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
        // The tool inherits these, so it finds the side files where we left them.
        const std::string root = m_dir.path().toStdString();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
        m_file = root + "/progress" + MathsDB::C_FileExtension;
    }

    // Answers every question of go but the last `leave`, `seconds` apart;
    // the clock starts at the first answer, so a whole run of n questions
    // lasts (n - 1) * seconds.
    void answer(Go& go, double seconds, int leave = 0)
    {
        ASSERT_EQ(m_db->fill_questions(go), TVErrC_ok);
        go.restart();
        const long whole = static_cast<long>(seconds);
        const int micro = static_cast<int>((seconds - whole) * 1e6 + 0.5);
        for (int i = 0; i + leave < go.get_nquestions(); ++i) {
            m_clock.advance(whole, micro);
            Question* question = go.get_question_no(i);
            ASSERT_EQ(question->set_answer(question->solution_text(), true), TVErrC_okFinished);
            go.update(true);
        }
        ASSERT_EQ(go.is_complete(), leave == 0);
    }

    // The session's open run of exercise.
    Go& open_go(int exercise)
    {
        const Session* session = m_db->current_session();
        for (int i = 0; session != nullptr && i < session->get_ngos(); ++i) {
            Go* go = m_db->get_go_id(session->get_go_no(i));
            if (go != nullptr && go->get_exercise() == exercise && !go->is_complete())
                return *go;
        }
        ADD_FAILURE() << "no open run of exercise " << exercise;
        static Go none;
        return none;
    }

    int add_exercise(const std::string& name, int type)
    {
        Exercise* exercise = nullptr;
        EXPECT_EQ(m_db->create_exercise(exercise), TVErrC_ok);
        exercise->set_type(type);
        exercise->set_value(3, true);
        exercise->set_number(2);
        exercise->set_name(name);
        return exercise->get_id();
    }

    // 2 June 2024 12:00 GMT, unless a test sets it.
    TestClock m_clock{1717329600};
    QTemporaryDir m_dir;
    std::string m_file;
    std::unique_ptr<MathsDB> m_db;
};

#endif // MATHSFILETEST_H
