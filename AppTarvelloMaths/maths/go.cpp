#include "AppTarvelloMaths/maths/go.h"

#include "AppTarvelloMaths/maths/question.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
const TVObjectPreReg s_preReg(Go::C_ClassName, Go::create_tvobject);
} // namespace

struct Go::GoImpl {
    int m_exercise = -1;
    TVDateSlot m_time{TVDate::E_DateBlank};
    bool m_complete = false;
    bool m_active = false;
    TVPtrArray<Question> m_questions{true};
};

Go::Go() : d(new GoImpl)
{
    set_defaults(true);
    register_tvobject();
}

Go::Go(const Go& other) : TVDBObject(other), d(new GoImpl(*other.d))
{
    register_tvobject();
}

Go& Go::operator=(const Go& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

Go::~Go() = default;

int Go::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<Go>(out, source, C_ClassName);
}

void Go::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

void Go::set_defaults(bool constructing)
{
    if (!constructing)
        TVDBObject::set_defaults(constructing);
    *d = GoImpl();
}

void Go::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "Go: exercise " << d->m_exercise << ", time " << d->m_time
        << (d->m_complete ? ", complete" : "") << (d->m_active ? ", active" : "") << ", "
        << d->m_questions.size() << " questions\n";
    for (const Question* question : d->m_questions)
        if (question != nullptr)
            question->dump(out, indent + 1);
    TVDBObject::dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const Go& go)
{
    go.dump(out, 0);
    return out;
}

int Go::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "exercise", TVSrlValue<int>(d->m_exercise, -1)));
        TV_PASS_ON(serialise_value(in, out, prefix, "time",
                                   TVSrlValue<TVDateSlot>(d->m_time,
                                                          TVDateSlot(TVDate::E_DateBlank))));
        TV_PASS_ON(serialise_value(in, out, prefix, "complete",
                                   TVSrlValue<bool>(d->m_complete, false)));
        TV_PASS_ON(TVDBObject::serialise(in, out, "TVDBObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void Go::remap_id(int old_id, int new_id)
{
    TVDBObject::remap_id(old_id, new_id);
    if (d->m_exercise == old_id && old_id != new_id) {
        d->m_exercise = new_id;
        mark_changed(TVLOCATION, true);
    }
}

void Go::remap_ids(const std::map<int, int>& ids)
{
    TVDBObject::remap_ids(ids);
    const auto it = ids.find(d->m_exercise);
    if (it != ids.end() && it->second != d->m_exercise) {
        d->m_exercise = it->second;
        mark_changed(TVLOCATION, true);
    }
}

int Go::get_exercise() const
{
    return d->m_exercise;
}

void Go::set_exercise(int exercise)
{
    if (d->m_exercise == exercise)
        return;
    d->m_exercise = exercise;
    mark_changed(TVLOCATION, true);
}

const TVDateSlot& Go::get_time() const
{
    return d->m_time;
}

void Go::set_time(const TVDateSlot& time)
{
    if (d->m_time == time)
        return;
    d->m_time = time;
    mark_changed(TVLOCATION, true);
}

bool Go::is_complete() const
{
    return d->m_complete;
}

bool Go::is_started() const
{
    return d->m_time.is_ok();
}

bool Go::is_active() const
{
    return d->m_active;
}

void Go::add_question(Question* question)
{
    d->m_questions.add(question);
}

int Go::get_nquestions() const
{
    return d->m_questions.size();
}

Question* Go::get_question_no(int index)
{
    if (index < 0 || index >= d->m_questions.size())
        return nullptr;
    return d->m_questions[index];
}

const Question* Go::get_question_no(int index) const
{
    if (index < 0 || index >= d->m_questions.size())
        return nullptr;
    return d->m_questions[index];
}

void Go::update(bool stamp)
{
    if (d->m_questions.empty())
        return;
    if (d->m_complete) {
        d->m_active = false;
    } else {
        d->m_complete = true;
        for (const Question* question : d->m_questions)
            if (question == nullptr || !question->get_complete()) {
                d->m_complete = false;
                break;
            }
        if (d->m_complete)
            d->m_active = false;
    }
    if (!stamp)
        return;

    // The first judged input starts the clock: a blank start takes two
    // readings, a moment; later inputs stretch the slot to the present.
    const TVDate reading = TVDateUtils::unow();
    const TVDate other = d->m_time.get_start().is_ok() ? d->m_time.get_start()
                                                        : TVDateUtils::unow();
    if (other < reading)
        d->m_time.set(other, reading);
    else
        d->m_time.set(reading, other);
    mark_changed(TVLOCATION, true);
}

TVDuration Go::get_duration() const
{
    return d->m_time.duration();
}

void Go::fold_best_time(TVDuration& best, const Go& go, int exercise, int excludeGo)
{
    if (go.get_exercise() != exercise || (excludeGo >= 0 && go.get_id() == excludeGo))
        return;
    const TVDuration duration = go.get_duration();
    if (!(duration > 0))
        return;
    if (best == 0 || best > duration)
        best = duration;
}

bool Go::is_record(const TVDuration& best) const
{
    return best > 0 && get_duration() < best;
}

void Go::restart()
{
    d->m_time = TVDateSlot(TVDate::E_DateBlank);
    d->m_complete = false;
    d->m_active = true;
}

void Go::clear()
{
    d->m_time = TVDateSlot(TVDate::E_DateBlank);
    d->m_complete = false;
    d->m_active = false;
    d->m_questions.clear();
}
