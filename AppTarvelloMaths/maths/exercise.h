#ifndef EXERCISE_H
#define EXERCISE_H

// Exercise: a drill as the parent defines it, and the maker of the
// questions of its runs.
//
// The range is a table's multipliers for times tables and division, but
// the totals for addition and subtraction: addition from 10 to 20 asks
// every split of every total. m_timeLimit and m_maxMistakes only travel
// with the object; no run reads them.
//
// Serial form, under the body's prefix, defaults left out:
//   "name" text, ""          "number" 12         "active" 0|1, 1
//   "type" 0                 "sequencing" 1      "schedule" 1
//   "minimum" 1              "maxTime" 0
//   "maximum" 12             "maxMistakes" 12
//   "value" one line per selected table, in order
//   "TVDBObject" block

#include "LibCore/ptrarray/tvidstring.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDate/core/tvduration.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class Go;
class Question;

class Exercise : public TVDBObject
{
public:
    static constexpr const char* C_ClassName = "Exercise";

    // Type codes, as stored; get_types() gives the editor's order.
    static constexpr int C_TypeTimesTables = 0;
    static constexpr int C_TypeAddition = 1;
    static constexpr int C_TypeSubtraction = 2;
    static constexpr int C_TypeDivision = 3;
    static constexpr int C_TypeRepeatIncorrect = 100;

    static constexpr int C_SequenceRandom = 0;
    static constexpr int C_SequenceInOrder = 1;

    static constexpr int C_ScheduleEachSession = 1;
    static constexpr int C_ScheduleDaily = 2;
    static constexpr int C_ScheduleWeekly = 3;

    Exercise();
    Exercise(const Exercise& other);
    Exercise& operator=(const Exercise& other);
    ~Exercise() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void dump(std::ostream& out, int indent) const override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void register_tvobject() override;
    // Its data is in compiled fields that no object spec describes.
    bool uses_spec() const override { return false; }
    void remap_id(int old_id, int new_id) override;

    void set_defaults(bool constructing);

    // The combo box lists; each id is the code alone, (code, -1, -1).
    static TVIdString get_types();
    static TVIdString get_sequences();
    static TVIdString get_schedules();

    // ---- Fields ---------------------------------------------------------------
    // Each setter marks the object changed only when the value differs.

    const std::string& get_name() const;
    void set_name(const std::string& name);
    int get_type() const;
    // Also presets the range, sequencing and number for the new type.
    void set_type(int type);
    int get_minimum() const;
    void set_minimum(int minimum);
    int get_maximum() const;
    void set_maximum(int maximum);
    int get_number() const;
    void set_number(int number);
    int get_sequence() const;
    void set_sequence(int sequence);
    const TVDuration& get_timelimit() const;
    void set_timelimit(const TVDuration& limit);
    int get_maxmistakes() const;
    void set_maxmistakes(int mistakes);
    bool get_active() const;
    void set_active(bool active);
    int get_schedule() const;
    void set_schedule(int schedule);

    // The selected tables, in the order of selection.
    bool value_used(int value) const;
    // Adds value unless present, or removes every occurrence; marks the
    // object changed either way.
    void set_value(int value, bool used);
    const std::vector<int>& get_value_list() const;
    // "2, 5, 7"; "" for none.
    std::string get_values() const;
    // Comma-separated, each piece by atoi.
    void set_values(const std::string& text);

    // ---- Rules ----------------------------------------------------------------

    // Questions in one full pass.
    int standard_number() const;
    std::string generate_name() const;
    // False, with the reason in message, if the exercise may not be saved.
    bool sanity_check(std::string& message) const;
    // Would make the same questions: sequencing aside, the same type,
    // range, tables in order and number.
    bool equivalent(const Exercise& other) const;

    // ---- Questions ------------------------------------------------------------

    // Fills go with m_number questions: whole blocks repeated as needed,
    // shuffled together when random, the last cut. incorrect is the
    // program's list of missed questions, for Repeat Incorrect.
    [[nodiscard]] int generate_questions(Go& go, const TVPtrArray<Question>& incorrect) const;
    // Appends one block, in generated order; out must own its elements.
    [[nodiscard]] int make_question_block(TVPtrArray<Question>& out,
                                          const TVPtrArray<Question>& incorrect) const;
    // Seeds the C library's rand with time(nullptr) and shuffles: two
    // shuffles in one second permute a list alike.
    [[nodiscard]] static int shuffle(TVPtrArray<Question>& list);
    // The same with a seed of the caller's choice.
    [[nodiscard]] static int shuffle(TVPtrArray<Question>& list, unsigned seed);

    // Whether go still stands for this exercise in a session that began at
    // date: an open run always; a complete one by the sequencing (0 always,
    // 1 if it started not before date, 2 not before today's midnight, 3 not
    // before Monday's, any other value never). The schedule has no say.
    bool go_time_expired(const Go& go, const TVDate& date) const;

private:
    struct ExerciseImpl;
    std::unique_ptr<ExerciseImpl> d;
};

std::ostream& operator<<(std::ostream& out, const Exercise& exercise);

#endif // EXERCISE_H
