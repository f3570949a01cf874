// An exercise as the editor changes it, and the questions it makes: one
// block of each type, whole runs with repeats and cuts, and the shuffle.

#include "AppTarvelloMaths/maths/exercise.h"

#include "AppTarvelloMaths/maths/tests/mathstest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

class ExerciseTest : public MathsTest
{
protected:
    TVPtrArray<Question> m_incorrect{true};

    static Exercise make(int type, const std::vector<int>& values, int minimum, int maximum,
                         int number = 12, int sequence = Exercise::C_SequenceInOrder)
    {
        Exercise exercise;
        exercise.set_type(type);
        for (int value : values)
            exercise.set_value(value, true);
        exercise.set_minimum(minimum);
        exercise.set_maximum(maximum);
        exercise.set_number(number);
        exercise.set_sequence(sequence);
        return exercise;
    }

    Go run(const Exercise& exercise)
    {
        Go go;
        EXPECT_EQ(exercise.generate_questions(go, m_incorrect), TVErrC_ok);
        return go;
    }

    // How often each text was asked.
    static std::map<std::string, int> counts(const Go& go)
    {
        std::map<std::string, int> seen;
        for (int i = 0; i < go.get_nquestions(); ++i)
            ++seen[go.get_question_no(i)->get_text()];
        return seen;
    }
};

TEST_F(ExerciseTest, ListsComeInTheEditorsOrderWithBareCodes)
{
    std::string types;
    for (const TVIdEntry& entry : Exercise::get_types())
        types += std::to_string(entry.get_id().get_id()) + entry.get_text() + ";";
    EXPECT_EQ(types, "0Times Tables;3Division;1Addition;2Subtraction;100Repeat Incorrect;");
    EXPECT_EQ(Exercise::get_sequences().get_row_id(1), TVId(0, -1, -1));
    EXPECT_EQ(Exercise::get_sequences().get_row_name(0), "In Order");
    EXPECT_EQ(Exercise::get_schedules().get_name_id("Weekly"), TVId(3, -1, -1));
}

TEST_F(ExerciseTest, ChangeOfTypePresetsRangeSequenceAndNumber)
{
    struct Row {
        const char* name;
        int from;
        int to;
        int minimum, maximum, sequence, number;
    };
    // Each exercise starts from 3..9, two tables, number 5, random.
    const std::vector<Row> rows = {
        {"ToTimesTablesInOrder", 3, 0, 1, 12, 1, 24},
        {"ToDivisionRandom", 0, 3, 1, 12, 0, 24},
        {"ToAddition", 0, 1, 10, 20, 0, 15},
        {"ToSubtraction", 3, 2, 10, 20, 0, 15},
        {"ToRepeatIncorrectKeepsAll", 0, 100, 3, 9, 0, 5},
        {"SameTypeKeepsAll", 0, 0, 3, 9, 0, 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Exercise exercise = make(row.from, {4, 6}, 3, 9, 5, Exercise::C_SequenceRandom);
        exercise.set_type(row.to);
        EXPECT_EQ(exercise.get_type(), row.to);
        EXPECT_EQ(exercise.get_minimum(), row.minimum);
        EXPECT_EQ(exercise.get_maximum(), row.maximum);
        EXPECT_EQ(exercise.get_sequence(), row.sequence);
        EXPECT_EQ(exercise.get_number(), row.number);
    }
}

TEST_F(ExerciseTest, GeneratedNameSaysWhatIsPractised)
{
    struct Row {
        const char* name;
        int type;
        std::vector<int> values;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"TablesInListOrder", 0, {7, 2, 5}, "7, 2, 5 times tables"},
        {"NoTablesKeepsLeadingBlank", 0, {}, " times tables"},
        {"Addition", 1, {}, "Adding to 20"},
        {"Subtraction", 2, {}, "Subtracting from 20"},
        {"Division", 3, {4}, "Division by 4"},
        {"DivisionWithoutTablesKeepsBlank", 3, {}, "Division by "},
        {"Repeat", 100, {}, "Repeat incorrect answers"},
        {"UnknownType", 7, {3}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Exercise exercise = make(row.type, row.values, 1, 20);
        EXPECT_EQ(exercise.generate_name(), row.expected);
    }
}

TEST_F(ExerciseTest, SanityCheckStopsAtTheFirstFault)
{
    struct Row {
        const char* name;
        const char* exerciseName;
        int type;
        std::vector<int> values;
        int minimum, maximum;
        const char* message;
    };
    const std::vector<Row> rows = {
        {"NoName", "", 0, {}, 5, 1, "You need to give the exercise a name."},
        {"RangeBackwards", "x", 0, {}, 5, 1, "The maximum is less than the minimum."},
        {"TablesMissing", "x", 3, {}, 1, 5, "You need to supply some times tables to test."},
        {"RepeatNeedsARangeToo", "x", 100, {}, 5, 1, "The maximum is less than the minimum."},
        {"AdditionNeedsNoTables", "x", 1, {}, 1, 5, ""},
        {"GoodTables", "x", 0, {3}, 1, 1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Exercise exercise = make(row.type, row.values, row.minimum, row.maximum);
        exercise.set_name(row.exerciseName);
        std::string message = "stale";
        EXPECT_EQ(exercise.sanity_check(message), std::string(row.message).empty());
        EXPECT_EQ(message, row.message);
    }
}

TEST_F(ExerciseTest, ValuesKeepSelectionOrderAndReadWithAtoi)
{
    Exercise exercise;
    exercise.set_values("5, 2,5 ,x");
    EXPECT_EQ(exercise.get_values(), "5, 2, 5, 0");
    exercise.set_value(5, false);
    exercise.set_value(9, true);
    exercise.set_value(2, true);
    EXPECT_EQ(exercise.get_values(), "2, 0, 9");
    EXPECT_EQ(exercise.standard_number(), 36);

    Exercise other = exercise;
    other.set_sequence(Exercise::C_SequenceRandom);
    EXPECT_TRUE(exercise.equivalent(other));
    other.set_values("0, 2, 9");
    EXPECT_FALSE(exercise.equivalent(other));
}

// Each list worked out by hand from the loops of the block.
TEST_F(ExerciseTest, OneBlockOfEachType)
{
    m_incorrect.add(new Question("6 x 7", 42));
    m_incorrect.add(new Question("9 - 4", 5));
    TVPtrArray<Question> none(true);
    struct Row {
        const char* name;
        Exercise exercise;
        bool withIncorrect;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {"TimesTable", make(0, {7}, 1, 3), false, "7 x 1=7|7 x 2=14|7 x 3=21"},
        {"TablesInListOrder", make(0, {3, 2}, 2, 3), false, "3 x 2=6|3 x 3=9|2 x 2=4|2 x 3=6"},
        {"SevenDigitProduct", make(0, {1234567}, 1, 1), false, "1234567 x 1=1.23457e+06"},
        {"Division", make(3, {4}, 1, 3), false, "4 / 4=1|8 / 4=2|12 / 4=3"},
        {"DivisionByZeroTableAsItStands", make(3, {0}, 1, 2), false, "0 / 0=1|0 / 0=2"},
        {"AdditionEverySplit", make(1, {}, 0, 1), false, "0 + 0=0|0 + 1=1|1 + 0=1"},
        {"AdditionSkipsNegativeTotals", make(1, {}, -2, 1), false, "0 + 0=0|0 + 1=1|1 + 0=1"},
        {"AdditionAllNegative", make(1, {}, -3, -1), false, ""},
        {"Subtraction", make(2, {}, 2, 2), false, "2 - 0=2|2 - 1=1|2 - 2=0"},
        {"TablesWithoutValues", make(0, {}, 1, 12), false, ""},
        {"RepeatWithNothingMissed", make(100, {}, 1, 12), false, "1+1=2"},
        {"RepeatCopiesTheMissed", make(100, {}, 1, 12), true, "6 x 7=42|9 - 4=5"},
        {"UnknownType", make(5, {3}, 1, 12), false, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TVPtrArray<Question> out(true);
        EXPECT_EQ(row.exercise.make_question_block(out, row.withIncorrect ? m_incorrect : none),
                  TVErrC_ok);
        EXPECT_EQ(flatten(out), row.expected);
    }
}

TEST_F(ExerciseTest, InOrderRunRepeatsWholeBlocksAndCutsTheLast)
{
    struct Row {
        const char* name;
        int type;
        std::vector<int> values;
        int minimum, maximum, number;
        const char* expected;
    };
    const char* twice = "2 x 1|2 x 2|2 x 3|3 x 1|3 x 2|3 x 3|2 x 1|2 x 2|2 x 3|3 x 1|3 x 2|3 x 3";
    const std::vector<Row> rows = {
        {"BelowOneBlockTakesTheFirst", 0, {2, 3}, 1, 3, 4, "2 x 1|2 x 2|2 x 3|3 x 1"},
        {"OneBlock", 0, {2, 3}, 1, 3, 6, "2 x 1|2 x 2|2 x 3|3 x 1|3 x 2|3 x 3"},
        {"AboveOneBlockRepeats", 0, {2, 3}, 1, 3, 8,
         "2 x 1|2 x 2|2 x 3|3 x 1|3 x 2|3 x 3|2 x 1|2 x 2"},
        {"ExactlyTwoBlocks", 0, {2, 3}, 1, 3, 12, twice},
        {"ZeroAsksNothing", 0, {2, 3}, 1, 3, 0, ""},
        {"NoTablesEndsAfterOneRound", 0, {}, 1, 12, 12, ""},
        {"NegativeRangeEndsAfterOneRound", 1, {}, -5, -1, 5, ""},
        {"RepeatWithNothingMissed", 100, {}, 1, 12, 3, "1+1|1+1|1+1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(flatten(run(make(row.type, row.values, row.minimum, row.maximum, row.number))),
                  row.expected);
    }
}

TEST_F(ExerciseTest, RandomRunDrawsFromAllRepeats)
{
    const std::map<std::string, int> block = {{"2 x 1", 1}, {"2 x 2", 1}, {"2 x 3", 1},
                                              {"3 x 1", 1}, {"3 x 2", 1}, {"3 x 3", 1}};
    struct Row {
        const char* name;
        int number;
        int size;
        int mostOfOne; // the most any question may be asked
    };
    const std::vector<Row> rows = {
        {"BelowOneBlockIsASample", 4, 4, 1},
        {"OneBlockIsAPermutation", 6, 6, 1},
        {"TwoBlocksAskEachTwice", 12, 12, 2},
        {"AboveTwoBlocksDrawsFromThree", 15, 15, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Go go = run(make(0, {2, 3}, 1, 3, row.number, Exercise::C_SequenceRandom));
        ASSERT_EQ(go.get_nquestions(), row.size);
        for (const auto& [text, count] : counts(go)) {
            EXPECT_EQ(block.count(text), 1u) << text;
            EXPECT_LE(count, row.mostOfOne) << text;
        }
        if (row.size == 6 * row.mostOfOne) {
            EXPECT_EQ(counts(go).size(), block.size());
        }
    }
}

// The model: draw index rand() % (n - i), move that element to the back.
TEST_F(ExerciseTest, ShuffleFollowsTheSeededDraws)
{
    for (int n : {0, 1, 2, 7, 30}) {
        SCOPED_TRACE(n);
        TVPtrArray<Question> list(true);
        std::vector<std::string> model;
        for (int i = 0; i < n; ++i) {
            list.add(new Question("q" + std::to_string(i), i));
            model.push_back("q" + std::to_string(i));
        }
        std::srand(4711);
        for (int i = 0; i < n; ++i) {
            const int r = std::rand() % (n - i);
            const std::string drawn = model[static_cast<size_t>(r)];
            model.erase(model.begin() + r);
            model.push_back(drawn);
        }
        ASSERT_EQ(Exercise::shuffle(list, 4711), TVErrC_ok);
        std::vector<std::string> texts;
        for (const Question* question : list)
            texts.push_back(question->get_text());
        EXPECT_EQ(texts, model);
    }
}

} // namespace
