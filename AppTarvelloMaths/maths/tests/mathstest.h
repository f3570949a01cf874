#ifndef MATHSTEST_H
#define MATHSTEST_H

// Fixture verbs shared by the maths tests: a clock in the test's hands, and
// a run's questions flattened to "text=solution|..." for comparison with
// lists written out by hand.

#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/question.h"
#include "TestSupport/tvobjecttest.h"
#include "TestSupport/tvtestclock.h"

#include <sstream>
#include <string>

class MathsTest : public TVObjectTest
{
protected:
    // 2 June 2024 12:00:00 GMT.
    static constexpr long C_Start = 1717329600;
    TestClock m_clock{C_Start};

    static std::string flatten(const TVPtrArray<Question>& questions)
    {
        std::string text;
        for (const Question* question : questions)
            text += (text.empty() ? "" : "|") + question->get_text() + "=" +
                    question->solution_text();
        return text;
    }

    static std::string flatten(const Go& go)
    {
        std::string text;
        for (int i = 0; i < go.get_nquestions(); ++i)
            text += (text.empty() ? "" : "|") + go.get_question_no(i)->get_text();
        return text;
    }
};

#endif // MATHSTEST_H
