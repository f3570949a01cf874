// Judging typed answers: when an input is judged, and what a judged input
// does to the flags and the wrong count.

#include "AppTarvelloMaths/maths/question.h"

#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using QuestionTest = TVQuietErrorTest;

struct JudgeRow {
    const char* name;
    double solution;
    const char* input;
    bool final;
    const char* result; // "finished", "failed" or "waiting"
    bool complete;      // and correct, always together
    int wrongCount;
};

std::string result_name(int result)
{
    if (result == TVErrC_okFinished)
        return "finished";
    if (result == TVErrC_okFailed)
        return "failed";
    if (result == TVErrC_okNotFinished)
        return "waiting";
    return "other";
}

TEST_F(QuestionTest, InputIsJudgedOnceAsLongAsTheSolutionText)
{
    const std::vector<JudgeRow> rows = {
        {"OneDigitRight", 5, "5", false, "finished", true, 0},
        {"OneDigitWrongAtOnce", 5, "7", false, "failed", false, 1},
        {"LongerThanSolutionIsJudged", 5, "55", false, "failed", false, 1},
        {"TwoDigitsFirstKeyWaits", 12, "1", false, "waiting", false, 0},
        {"TwoDigitsRight", 12, "12", false, "finished", true, 0},
        {"TwoDigitsWrong", 12, "13", false, "failed", false, 1},
        {"ShortInputJudgedWhenFinal", 12, "1", true, "failed", false, 1},
        {"LeadingZeroCompletesButFails", 7, "07", false, "failed", true, 1},
        {"ThreeDigitsWaitAtTwo", 144, "14", false, "waiting", false, 0},
        {"ThreeDigitsRight", 144, "144", false, "finished", true, 0},
        {"ZeroRight", 0, "0", false, "finished", true, 0},
        {"ZeroAndLetterReadsAsZero", 0, "x", false, "failed", true, 1},
        // "%g" gives 1.23457e+06, eleven bytes: seven digits are too short.
        {"SevenDigitsNotYetJudged", 1234567, "1234567", false, "waiting", false, 0},
        {"SevenDigitsFinalIsRightButFails", 1234567, "1234567", true, "failed", true, 1},
        {"ExponentTextMatchesButNumberDiffers", 1234567, "1.23457e+06", false, "finished", false,
         0},
    };
    for (const JudgeRow& row : rows) {
        SCOPED_TRACE(row.name);
        Question question("q", row.solution);
        EXPECT_EQ(result_name(question.set_answer(row.input, row.final)), row.result);
        EXPECT_EQ(question.get_complete(), row.complete);
        EXPECT_EQ(question.get_correct(), row.complete);
        EXPECT_EQ(question.get_wrongcount(), row.wrongCount);
    }
}

TEST_F(QuestionTest, WaitingInputChangesNothing)
{
    Question question("6 x 7", 42);
    ASSERT_EQ(question.set_answer("13", false), TVErrC_okFailed);
    EXPECT_EQ(question.set_answer("4", false), TVErrC_okNotFinished);
    EXPECT_EQ(question.get_answer(), 13);
    EXPECT_EQ(question.get_wrongcount(), 1);
}

TEST_F(QuestionTest, WrongTextFollowsTheLastJudgedInput)
{
    struct Row {
        const char* name;
        std::vector<const char*> inputs;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"NothingTyped", {}, ""},
        {"RightFirstTime", {"12"}, ""},
        {"StillWrong", {"13"}, "Not 13"},
        {"TwoWrongThenRight", {"13", "14", "12"}, "2 wrong"},
        {"RightAfterWrongWithLeadingZero", {"13", "012"}, "2 wrong"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Question question("3 x 4", 12);
        for (const char* input : row.inputs)
            (void)question.set_answer(input, false);
        EXPECT_EQ(question.wrong_text(), row.expected);
    }
}

TEST_F(QuestionTest, NumericAnswerJudgesWithoutCounting)
{
    Question question("3 x 4", 12);
    ASSERT_EQ(question.set_answer("13", false), TVErrC_okFailed);
    question.set_answer(12.00000001);
    EXPECT_TRUE(question.get_complete());
    EXPECT_TRUE(question.get_correct());
    EXPECT_EQ(question.wrong_text(), "1 wrong");
    question.set_answer(12.001);
    EXPECT_FALSE(question.get_complete());
}

} // namespace
