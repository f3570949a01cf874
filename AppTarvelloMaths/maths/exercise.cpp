#include "AppTarvelloMaths/maths/exercise.h"

#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/question.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <ostream>

namespace {
const TVObjectPreReg s_preReg(Exercise::C_ClassName, Exercise::create_tvobject);

// A table has twelve multipliers unless the range says otherwise.
constexpr int C_TableLength = 12;
// Addition and subtraction runs when nothing else is said.
constexpr int C_SumsNumber = 15;
// A full pass of a type without a range of its own.
constexpr int C_OtherNumber = 20;

std::string join_values(const std::vector<int>& values)
{
    std::string text;
    for (int value : values)
        tv_add_csv_entry(text, std::to_string(value));
    return text;
}
} // namespace

struct Exercise::ExerciseImpl {
    std::string m_name;
    int m_type = C_TypeTimesTables;
    int m_minimum = 1;
    int m_maximum = C_TableLength;
    std::vector<int> m_values;
    int m_number = C_TableLength;
    int m_sequence = C_SequenceInOrder;
    TVDuration m_timeLimit;
    int m_maxMistakes = C_TableLength;
    bool m_active = true;
    int m_schedule = C_ScheduleEachSession;
};

Exercise::Exercise() : d(new ExerciseImpl)
{
    set_defaults(true);
    register_tvobject();
}

Exercise::Exercise(const Exercise& other) : TVDBObject(other), d(new ExerciseImpl(*other.d))
{
    register_tvobject();
}

Exercise& Exercise::operator=(const Exercise& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

Exercise::~Exercise() = default;

int Exercise::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<Exercise>(out, source, C_ClassName);
}

void Exercise::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

void Exercise::set_defaults(bool constructing)
{
    if (!constructing)
        TVDBObject::set_defaults(constructing);
    *d = ExerciseImpl();
}

void Exercise::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "Exercise: \"" << d->m_name << "\" type " << d->m_type << ", range "
        << d->m_minimum << " to " << d->m_maximum << ", values (" << get_values() << "), number "
        << d->m_number << ", sequencing " << d->m_sequence << ", time limit " << d->m_timeLimit
        << ", max mistakes " << d->m_maxMistakes << (d->m_active ? ", active" : ", inactive")
        << ", schedule " << d->m_schedule << '\n';
    TVDBObject::dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const Exercise& exercise)
{
    exercise.dump(out, 0);
    return out;
}

int Exercise::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                        int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "name", d->m_name, true));
        TV_PASS_ON(serialise_value(in, out, prefix, "type",
                                   TVSrlValue<int>(d->m_type, C_TypeTimesTables)));
        TV_PASS_ON(serialise_value(in, out, prefix, "minimum", TVSrlValue<int>(d->m_minimum, 1)));
        TV_PASS_ON(serialise_value(in, out, prefix, "maximum",
                                   TVSrlValue<int>(d->m_maximum, C_TableLength)));
        TV_PASS_ON(serialise_value(in, out, prefix, "value", TVSrlValueVector<int>(d->m_values)));
        TV_PASS_ON(serialise_value(in, out, prefix, "number",
                                   TVSrlValue<int>(d->m_number, C_TableLength)));
        TV_PASS_ON(serialise_value(in, out, prefix, "sequencing",
                                   TVSrlValue<int>(d->m_sequence, C_SequenceInOrder)));
        TV_PASS_ON(serialise_value(in, out, prefix, "maxTime",
                                   TVSrlValue<TVDuration>(d->m_timeLimit, TVDuration())));
        TV_PASS_ON(serialise_value(in, out, prefix, "maxMistakes",
                                   TVSrlValue<int>(d->m_maxMistakes, C_TableLength)));
        TV_PASS_ON(serialise_value(in, out, prefix, "active", TVSrlValue<bool>(d->m_active, true)));
        TV_PASS_ON(serialise_value(in, out, prefix, "schedule",
                                   TVSrlValue<int>(d->m_schedule, C_ScheduleEachSession)));
        TV_PASS_ON(TVDBObject::serialise(in, out, "TVDBObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// An exercise refers to nothing by id beyond what TVDBObject follows.
void Exercise::remap_id(int old_id, int new_id)
{
    TVDBObject::remap_id(old_id, new_id);
}

// ---- Lists -------------------------------------------------------------------

TVIdString Exercise::get_types()
{
    TVIdString list;
    list.add(TVId(C_TypeTimesTables, -1, -1), "Times Tables");
    list.add(TVId(C_TypeDivision, -1, -1), "Division");
    list.add(TVId(C_TypeAddition, -1, -1), "Addition");
    list.add(TVId(C_TypeSubtraction, -1, -1), "Subtraction");
    list.add(TVId(C_TypeRepeatIncorrect, -1, -1), "Repeat Incorrect");
    return list;
}

TVIdString Exercise::get_sequences()
{
    TVIdString list;
    list.add(TVId(C_SequenceInOrder, -1, -1), "In Order");
    list.add(TVId(C_SequenceRandom, -1, -1), "Random");
    return list;
}

TVIdString Exercise::get_schedules()
{
    TVIdString list;
    list.add(TVId(C_ScheduleEachSession, -1, -1), "Each Session");
    list.add(TVId(C_ScheduleDaily, -1, -1), "Daily");
    list.add(TVId(C_ScheduleWeekly, -1, -1), "Weekly");
    return list;
}

// ---- Fields ------------------------------------------------------------------

namespace {
template <class T>
bool assign_if_different(T& member, const T& value)
{
    if (member == value)
        return false;
    member = value;
    return true;
}
} // namespace

const std::string& Exercise::get_name() const
{
    return d->m_name;
}

void Exercise::set_name(const std::string& name)
{
    if (assign_if_different(d->m_name, name))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_type() const
{
    return d->m_type;
}

void Exercise::set_type(int type)
{
    if (d->m_type == type)
        return;
    d->m_type = type;
    const int tables = C_TableLength * static_cast<int>(d->m_values.size());
    switch (type) {
    case C_TypeTimesTables:
    case C_TypeDivision:
        d->m_minimum = 1;
        d->m_maximum = C_TableLength;
        // Tables are learnt in order; division is practised mixed up.
        d->m_sequence = type == C_TypeTimesTables ? C_SequenceInOrder : C_SequenceRandom;
        d->m_number = tables;
        break;
    case C_TypeAddition:
    case C_TypeSubtraction:
        d->m_minimum = 10;
        d->m_maximum = 20;
        d->m_sequence = C_SequenceRandom;
        d->m_number = C_SumsNumber;
        break;
    default:
        break;
    }
    mark_changed(TVLOCATION, true);
}

int Exercise::get_minimum() const
{
    return d->m_minimum;
}

void Exercise::set_minimum(int minimum)
{
    if (assign_if_different(d->m_minimum, minimum))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_maximum() const
{
    return d->m_maximum;
}

void Exercise::set_maximum(int maximum)
{
    if (assign_if_different(d->m_maximum, maximum))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_number() const
{
    return d->m_number;
}

void Exercise::set_number(int number)
{
    if (assign_if_different(d->m_number, number))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_sequence() const
{
    return d->m_sequence;
}

void Exercise::set_sequence(int sequence)
{
    if (assign_if_different(d->m_sequence, sequence))
        mark_changed(TVLOCATION, true);
}

const TVDuration& Exercise::get_timelimit() const
{
    return d->m_timeLimit;
}

void Exercise::set_timelimit(const TVDuration& limit)
{
    if (assign_if_different(d->m_timeLimit, limit))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_maxmistakes() const
{
    return d->m_maxMistakes;
}

void Exercise::set_maxmistakes(int mistakes)
{
    if (assign_if_different(d->m_maxMistakes, mistakes))
        mark_changed(TVLOCATION, true);
}

bool Exercise::get_active() const
{
    return d->m_active;
}

void Exercise::set_active(bool active)
{
    if (assign_if_different(d->m_active, active))
        mark_changed(TVLOCATION, true);
}

int Exercise::get_schedule() const
{
    return d->m_schedule;
}

void Exercise::set_schedule(int schedule)
{
    if (assign_if_different(d->m_schedule, schedule))
        mark_changed(TVLOCATION, true);
}

bool Exercise::value_used(int value) const
{
    return std::find(d->m_values.begin(), d->m_values.end(), value) != d->m_values.end();
}

void Exercise::set_value(int value, bool used)
{
    std::vector<int>& values = d->m_values;
    if (used) {
        if (!value_used(value))
            values.push_back(value);
    } else {
        for (int i = static_cast<int>(values.size()) - 1; i >= 0; --i)
            if (values[static_cast<size_t>(i)] == value)
                values.erase(values.begin() + i);
    }
    mark_changed(TVLOCATION, true);
}

const std::vector<int>& Exercise::get_value_list() const
{
    return d->m_values;
}

std::string Exercise::get_values() const
{
    return join_values(d->m_values);
}

void Exercise::set_values(const std::string& text)
{
    std::vector<int> values;
    for (const std::string& piece : tv_tokenise(text, ','))
        values.push_back(std::atoi(piece.c_str()));
    if (assign_if_different(d->m_values, values))
        mark_changed(TVLOCATION, true);
}

// ---- Rules -------------------------------------------------------------------

int Exercise::standard_number() const
{
    switch (d->m_type) {
    case C_TypeTimesTables:
    case C_TypeDivision:
        return (d->m_maximum - d->m_minimum + 1) * static_cast<int>(d->m_values.size());
    case C_TypeAddition:
    case C_TypeSubtraction:
        return d->m_number == 0 ? C_SumsNumber : d->m_number;
    default:
        return C_OtherNumber;
    }
}

std::string Exercise::generate_name() const
{
    switch (d->m_type) {
    case C_TypeTimesTables:
        return get_values() + " times tables";
    case C_TypeAddition:
        return "Adding to " + std::to_string(d->m_maximum);
    case C_TypeSubtraction:
        return "Subtracting from " + std::to_string(d->m_maximum);
    case C_TypeDivision:
        return "Division by " + get_values();
    case C_TypeRepeatIncorrect:
        return "Repeat incorrect answers";
    default:
        return std::string();
    }
}

bool Exercise::sanity_check(std::string& message) const
{
    message.clear();
    if (d->m_name.empty())
        message = "You need to give the exercise a name.";
    else if (d->m_minimum > d->m_maximum)
        message = "The maximum is less than the minimum.";
    else if ((d->m_type == C_TypeTimesTables || d->m_type == C_TypeDivision) &&
             d->m_values.empty())
        message = "You need to supply some times tables to test.";
    return message.empty();
}

bool Exercise::equivalent(const Exercise& other) const
{
    return d->m_type == other.d->m_type && d->m_minimum == other.d->m_minimum &&
           d->m_maximum == other.d->m_maximum && d->m_values == other.d->m_values &&
           d->m_number == other.d->m_number;
}

// ---- Questions ---------------------------------------------------------------

int Exercise::make_question_block(TVPtrArray<Question>& out,
                                  const TVPtrArray<Question>& incorrect) const
{
    const int low = d->m_minimum;
    const int high = d->m_maximum;
    switch (d->m_type) {
    case C_TypeTimesTables:
        for (int v : d->m_values)
            for (int q = low; q <= high; ++q)
                out.add(new Question(tv_sprintf("%d x %d", v, q), v * q));
        break;
    case C_TypeDivision:
        // A table of 0 makes "0 / 0"; the editor offers no such table.
        for (int v : d->m_values)
            for (int q = low; q <= high; ++q)
                out.add(new Question(tv_sprintf("%d / %d", v * q, v), q));
        break;
    case C_TypeAddition:
        for (int t = std::max(low, 0); t <= high; ++t)
            for (int a = 0; a <= t; ++a)
                out.add(new Question(tv_sprintf("%d + %d", a, t - a), t));
        break;
    case C_TypeSubtraction:
        for (int t = std::max(low, 0); t <= high; ++t)
            for (int x = 0; x <= t; ++x)
                out.add(new Question(tv_sprintf("%d - %d", t, x), t - x));
        break;
    case C_TypeRepeatIncorrect:
        // Nothing missed yet: a token question keeps the run possible.
        if (incorrect.empty())
            out.add(new Question("1+1", 2));
        for (const Question* question : incorrect)
            if (question != nullptr)
                out.add(new Question(*question));
        break;
    default:
        break;
    }
    return TVErrC_ok;
}

int Exercise::shuffle(TVPtrArray<Question>& list)
{
    return shuffle(list, static_cast<unsigned>(std::time(nullptr)));
}

int Exercise::shuffle(TVPtrArray<Question>& list, unsigned seed)
{
    std::srand(seed);
    // Each round draws one of the n - i elements not yet drawn (they stay
    // at the front) and moves it to the back.
    const int n = list.size();
    for (int i = 0; i < n; ++i) {
        const int r = std::rand() % (n - i);
        Question* drawn = list.remove(r);
        if (drawn == nullptr && get_tverror()->is_error())
            return tv_trail_return(tverrorvalue(), TVLOCATION);
        list.add(drawn);
    }
    return TVErrC_ok;
}

int Exercise::generate_questions(Go& go, const TVPtrArray<Question>& incorrect) const
{
    try {
        TVPtrArray<Question> pool(true);
        // Whole blocks until there are enough; a block that adds nothing
        // (no tables, a range below zero) ends the loop too.
        int previous = 0;
        for (;;) {
            TV_PASS_ON(make_question_block(pool, incorrect));
            if (d->m_number <= pool.size() || pool.size() == previous)
                break;
            previous = pool.size();
        }
        // The repeats are shuffled together, so a random run may ask a
        // question twice at any distance.
        if (d->m_sequence == C_SequenceRandom)
            TV_PASS_ON(shuffle(pool));

        const int n = std::min(d->m_number, pool.size());
        for (int i = 0; i < n; ++i) {
            Question* question = pool.remove(0);
            if (question == nullptr && get_tverror()->is_error())
                return tv_trail_return(tverrorvalue(), TVLOCATION);
            go.add_question(question);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool Exercise::go_time_expired(const Go& go, const TVDate& date) const
{
    if (!go.is_complete())
        return true;
    // Decided by the sequencing, not the schedule: that is how runs have
    // always fallen due, and the sessions rely on it.
    const TVDate& start = go.get_time().get_start();
    switch (d->m_sequence) {
    case 0:
        return true;
    case 1:
        return !(start < date);
    case 2:
        return !(start < TVDateUtils::read_date("12:00AM", nullptr, nullptr));
    case 3:
        return !(start < TVDateUtils::read_date("Mon 12:00AM", nullptr, nullptr));
    default:
        return false;
    }
}
