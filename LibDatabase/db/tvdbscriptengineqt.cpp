#include "LibDatabase/db/tvdbscriptengineqt.h"

#include "LibCore/param/tvparam.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvdbscripthost.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibDate/core/tvdateutils.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QRegularExpression>
#include <QScriptContext>
#include <QScriptEngineAgent>
#include <QThread>
#include <QTimerEvent>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr const char* C_TimeLimitParam = "ScriptTimeLimitMs";
// How often a long evaluation looks at the clock; also how late a stop can be.
constexpr int C_CheckIntervalMs = 50;
int s_timeLimitMs = -1; // -1: not read from the configuration yet

class Watchdog;

// The line the innermost run of this thread last reached: a stop names it.
thread_local int t_line = -1;

class LineTracker : public QScriptEngineAgent
{
public:
    using QScriptEngineAgent::QScriptEngineAgent;
    void positionChange(qint64, int line, int) override { t_line = line; }
};

// The runs under way on this thread, innermost last; the watchdog belongs
// to the outermost.
struct RunStack
{
    std::vector<QScriptEngine*> engines;
    Watchdog* watchdog = nullptr;
};
thread_local RunStack t_runs;

// Stops the outermost run of a thread when its time is up. It takes the
// checks the engine makes during long evaluations to see its timer at
// all; on the main thread it holds back input and other timers meanwhile.
class Watchdog : public QObject
{
public:
    explicit Watchdog(int limit_ms) : m_remainingMs(limit_ms)
    {
        m_mainThread = QCoreApplication::instance() != nullptr &&
                       QThread::currentThread() == QCoreApplication::instance()->thread();
        resume();
    }
    ~Watchdog() override { pause(); }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void pause()
    {
        if (m_timer == 0)
            return;
        killTimer(m_timer);
        m_timer = 0;
        m_remainingMs = std::max<qint64>(1, m_remainingMs - m_clock.elapsed());
        if (m_mainThread)
            QCoreApplication::instance()->removeEventFilter(this);
    }
    void resume()
    {
        if (m_timer != 0 || m_remainingMs <= 0 || m_stopped)
            return;
        m_clock.start();
        m_timer = startTimer(static_cast<int>(m_remainingMs));
        if (m_mainThread)
            QCoreApplication::instance()->installEventFilter(this);
    }
    bool stopped() const { return m_stopped; }
    // Where the innermost run stood when stopped; -1 when unknown.
    int line() const { return m_line; }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        if (event->timerId() != m_timer)
            return;
        m_stopped = true;
        pause();
        if (!t_runs.engines.empty()) {
            QScriptEngine* engine = t_runs.engines.back();
            m_line = t_line;
            engine->abortEvaluation(engine->currentContext()->throwError(QStringLiteral("stopped")));
        }
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Timer:
            return watched != this;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::Shortcut:
        case QEvent::Close:
        case QEvent::TouchBegin:
            return true;
        default:
            return false;
        }
    }

private:
    int m_timer = 0;
    qint64 m_remainingMs;
    QElapsedTimer m_clock;
    bool m_mainThread = false;
    bool m_stopped = false;
    int m_line = -1;
};

// ---- Arguments and answers ------------------------------------------------

// A missing argument reads "undefined", as the script would print it.
std::string arg(QScriptContext* context, int index)
{
    return context->argument(index).toString().toStdString();
}

QScriptValue text(const std::string& value)
{
    return QScriptValue(QString::fromStdString(value));
}

std::vector<std::string> split_list(const std::string& list)
{
    std::vector<std::string> items;
    std::string item;
    for (char c : list) {
        if (c == ',') {
            items.push_back(item);
            item.clear();
        } else {
            item += c;
        }
    }
    if (!item.empty() || !items.empty())
        items.push_back(item);
    return items;
}

// The engine of the run behind a call, or null for a plain engine (the
// function then hands back its first argument).
TVDBScriptEngineQt* our_engine(QScriptEngine* engine)
{
    return dynamic_cast<TVDBScriptEngineQt*>(engine);
}

QScriptValue first_argument(QScriptContext* context)
{
    return context->argument(0);
}

// A function of the run's engine, and one of the object it runs against.
// From a plain engine (or a run without an object) each hands back its
// first argument.
using EngineFunction = QScriptValue (*)(QScriptContext*, TVDBScriptEngineQt*);
using ObjectFunction = QScriptValue (*)(QScriptContext*, TVDBScriptEngineQt*, TVDBObject&);

template <EngineFunction F>
QScriptValue of_engine(QScriptContext* context, QScriptEngine* engine)
{
    TVDBScriptEngineQt* ours = our_engine(engine);
    return ours == nullptr ? first_argument(context) : F(context, ours);
}

template <ObjectFunction F>
QScriptValue of_object(QScriptContext* context, QScriptEngine* engine)
{
    TVDBScriptEngineQt* ours = our_engine(engine);
    if (ours == nullptr || ours->get_object() == nullptr)
        return first_argument(context);
    return F(context, ours, *ours->get_object());
}

// Runs the script of that name on object, inside this run. The callee's
// error comes back into the caller as an exception it may catch.
QScriptValue call_script(QScriptContext* context, TVDBScriptEngineQt& engine, TVDBObject& object,
                         const std::string& name, bool throw_if_absent)
{
    TVDBScript* script = object.get_script(name);
    if (script == nullptr) {
        if (throw_if_absent)
            return context->throwError(QString::fromStdString("Could not find script " + name));
        return QScriptValue();
    }
    std::string value;
    (void)script->run_within(object, engine.is_interactive(), &value);
    if (TVDBScriptEngineQt::run_stopped()) {
        // The callee was stopped: so is every run around it.
        engine.abortEvaluation(context->throwError(QStringLiteral("stopped")));
        return QScriptValue();
    }
    if (script->get_error_line() >= 0)
        return context->throwError(QString::fromStdString(
            "Error in script " + name + " line " + std::to_string(script->get_error_line()) +
            ": " + script->get_error_text()));
    return text(value);
}

// The live children of object under a member tag, in the database's order.
std::vector<TVDBObject*> children_of(const TVDBObject& object, const std::string& tag)
{
    std::vector<TVDBObject*> children;
    const TVDatabase* db = object.get_database();
    if (db == nullptr)
        return children;
    for (int i = 0; i < db->get_nobjects(); ++i) {
        TVDBObject* child = db->get_object_by_index(i);
        if (child != nullptr && !child->is_deleted() && child->get_parent() == &object &&
            child->get_member_tag() == tag)
            children.push_back(child);
    }
    return children;
}

bool is_spec_object(const TVDBObject& object)
{
    return object.get_class_name() == "TVObjectSpec";
}

// ---- The global functions ---------------------------------------------------

QScriptValue fn_call_self(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    return call_script(context, *ours, object, arg(context, 0), true);
}

QScriptValue fn_call_parent(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    TVDBObject* parent = object.get_parent();
    if (parent == nullptr)
        return context->throwError(QStringLiteral("Object does not have a parent."));
    return call_script(context, *ours, *parent, arg(context, 0), true);
}

QScriptValue fn_call_child(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    const std::string tag = arg(context, 0);
    const std::string name = arg(context, 1);
    const int index = context->argumentCount() > 2 ? context->argument(2).toInt32() : -1;
    const std::vector<TVDBObject*> children = children_of(object, tag);
    if (children.empty() || index >= static_cast<int>(children.size()))
        return context->throwError(QString::fromStdString("Could not find child " + tag));
    if (index >= 0)
        return call_script(context, *ours, *children[static_cast<size_t>(index)], name, true);
    QScriptValue last;
    for (TVDBObject* child : children) {
        last = call_script(context, *ours, *child, name, true);
        if (context->state() == QScriptContext::ExceptionState || TVDBScriptEngineQt::run_stopped())
            break;
    }
    return last;
}

QScriptValue fn_call_all(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    const std::string name = arg(context, 0);
    const int specId = context->argumentCount() > 1 ? context->argument(1).toInt32() : -1;
    TVDatabase* db = object.get_database();
    if (db == nullptr)
        return QScriptValue();
    // Ids first: a script may add objects as the call goes on.
    std::vector<int> ids;
    for (int i = 0; i < db->get_nobjects(); ++i) {
        const TVDBObject* object = db->get_object_by_index(i);
        if (object != nullptr && !object->is_deleted() && !is_spec_object(*object) &&
            (specId < 0 || object->get_spec_id() == specId))
            ids.push_back(object->get_id());
    }
    for (int id : ids) {
        TVDBObject* object = db->get_object_by_id(id);
        if (object == nullptr || object->get_script(name) == nullptr)
            continue;
        call_script(context, *ours, *object, name, false);
        if (context->state() == QScriptContext::ExceptionState || TVDBScriptEngineQt::run_stopped())
            break;
    }
    return QScriptValue();
}

QScriptValue fn_call_id(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    TVDatabase* db = object.get_database();
    const int id = context->argument(1).toInt32();
    TVDBObject* target = db != nullptr ? db->get_object_by_id(id) : nullptr;
    if (target == nullptr || target->is_deleted())
        return context->throwError(QString::fromStdString("Could not find object " +
                                                          std::to_string(id)));
    return call_script(context, *ours, *target, arg(context, 0), true);
}

QScriptValue fn_date_compare(QScriptContext* context, TVDBScriptEngineQt*)
{
    const TVDate first = TVDateUtils::read_date(arg(context, 0), nullptr, nullptr);
    const TVDate second = TVDateUtils::read_date(arg(context, 1), nullptr, nullptr);
    const std::string op = arg(context, 2);
    bool answer = false;
    if (op == "==")
        answer = first == second;
    else if (op == "<")
        answer = first < second;
    else if (op == "<=")
        answer = first <= second;
    else if (op == ">")
        answer = second < first;
    else if (op == ">=")
        answer = second <= first;
    return QScriptValue(answer);
}

QScriptValue fn_date_eval(QScriptContext* context, TVDBScriptEngineQt*)
{
    const TVDate date = TVDateUtils::read_date(arg(context, 0), nullptr, nullptr);
    const std::string format = context->argumentCount() > 1 ? arg(context, 1) : std::string();
    return text(date.to_string(format));
}

QScriptValue fn_prompt_text(QScriptContext* context, TVDBScriptEngineQt* ours)
{
    const std::string initial = context->argumentCount() > 1 ? arg(context, 1) : std::string();
    if (!ours->is_interactive())
        return text(initial);
    TVDBScriptEngineQt::PromptScope waiting;
    return text(TVDBScriptHost::instance().prompt_text(arg(context, 0), initial));
}

QScriptValue fn_prompt_choice(QScriptContext* context, TVDBScriptEngineQt* ours)
{
    const std::vector<std::string> choices = split_list(arg(context, 2));
    if (!ours->is_interactive())
        return text(choices.empty() ? std::string() : choices.front());
    TVDBScriptEngineQt::PromptScope waiting;
    return text(TVDBScriptHost::instance().prompt_choice(arg(context, 0), arg(context, 1), choices,
                                                         context->argument(3).toBool()));
}

QScriptValue fn_gui_call(QScriptContext* context, TVDBScriptEngineQt*)
{
    std::vector<std::string> arguments;
    for (int i = 1; i <= 4; ++i) {
        const std::string value = arg(context, i);
        if (value == "undefined")
            break;
        arguments.push_back(value);
    }
    std::string message;
    TVDBScriptEngineQt::PromptScope waiting;
    if (!TVDBScriptHost::instance().gui_call(arg(context, 0), arguments, message))
        return context->throwError(QString::fromStdString(message));
    return QScriptValue(true);
}

QScriptValue fn_open_url(QScriptContext* context, TVDBScriptEngineQt*)
{
    return QScriptValue(TVDBScriptHost::instance().open_url(arg(context, 0)));
}

// ---- Variables and specs -----------------------------------------------------

// A native call may run expressions (TVSet works variables out): if the
// run was stopped inside one, the script around it stops too.
QScriptValue stop_if_stopped(QScriptContext* context, QScriptEngine* engine, QScriptValue value)
{
    if (TVDBScriptEngineQt::run_stopped()) {
        engine->abortEvaluation(context->throwError(QStringLiteral("stopped")));
        return QScriptValue();
    }
    return value;
}

bool failed(int result)
{
    return istverr(result) || istvwarn(result);
}

// The user's text of the newest error, for the script's exception.
std::string newest_message()
{
    const TVErrDetails* details = get_tverror()->error_details();
    return details != nullptr ? details->get_details(TVAspectUser) : std::string();
}

QScriptValue unknown_variable(QScriptContext* context, const std::string& tag)
{
    return context->throwError(QString::fromStdString("Unknown variable " + tag));
}

// The live objects of the database that follow spec (or, for "*", any),
// object specs excepted; derived specs count as their base.
std::vector<TVDBObject*> objects_of_spec(const TVDatabase& db, const std::string& spec,
                                         std::string& message)
{
    std::vector<TVDBObject*> found;
    int specId = -1;
    if (spec != "*") {
        specId = db.get_objectspec_id_for_name(spec);
        if (specId < 0) {
            message = "Could not find the spec " + spec + ".";
            return found;
        }
    }
    for (int i = 0; i < db.get_nobjects(); ++i) {
        TVDBObject* object = db.get_object_by_index(i);
        if (object == nullptr || object->is_deleted() || is_spec_object(*object) ||
            !object->uses_spec())
            continue;
        if (specId >= 0 && !db.is_spec_derived_from(specId, object->get_spec_id()))
            continue;
        found.push_back(object);
    }
    return found;
}

QScriptValue fn_get(QScriptContext* context, TVDBScriptEngineQt*, TVDBObject& object)
{
    const std::string tag = arg(context, 0);
    const TVVariable* var = object.get_var_by_tag(tag, false);
    if (var == nullptr)
        return unknown_variable(context, tag);
    return text(var->get_value());
}

QScriptValue fn_set(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    const std::string tag = arg(context, 0);
    // set_var_value would make a variable; a script may only change one.
    if (object.get_var_by_tag(tag, false) == nullptr)
        return unknown_variable(context, tag);
    if (failed(object.set_var_value(tag, arg(context, 1), false)) ||
        failed(object.update_vars()))
        return stop_if_stopped(context, ours,
                               context->throwError(QString::fromStdString(
                                   "Could not set " + tag + ": " + newest_message())));
    return stop_if_stopped(context, ours, QScriptValue(true));
}

QScriptValue fn_set_spec(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    TVDatabase* db = object.get_database();
    if (db == nullptr)
        return context->throwError(QStringLiteral("Could not locate the overall database."));
    if (!object.uses_spec() || db->get_objectspec_by_id(object.get_spec_id()) == nullptr)
        return context->throwError(QStringLiteral("Object does not have an object spec"));
    const std::string name = arg(context, 0);
    const int base = db->get_child_base_spec(object);
    // Where the parent's object kind says nothing, any kind offered for new objects will do.
    const std::vector<TVObjectSpec*> allowed =
        base >= 0 ? db->get_allowable_specs(base, false) : db->get_specs(false);
    const auto spec = std::find_if(allowed.begin(), allowed.end(), [&name](const TVObjectSpec* s) {
        return s->get_name() == name;
    });
    if (spec == allowed.end() ||
        failed(db->apply_objectspec_to_db(&object, (*spec)->get_id(), false)) ||
        failed(object.update_vars()))
        return stop_if_stopped(
            context, ours,
            context->throwError(QString::fromStdString("Cannot set the spec to " + name + ".")));
    return stop_if_stopped(context, ours, QScriptValue(true));
}

QScriptValue fn_search_db(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    const TVDatabase* db = object.get_database();
    if (db == nullptr)
        return context->throwError(QStringLiteral("Could not locate the overall database."));
    const std::string tag = context->argumentCount() > 1 ? arg(context, 1) : std::string();
    const QRegularExpression pattern(context->argument(2).toString(),
                                     QRegularExpression::CaseInsensitiveOption);
    if (!pattern.isValid())
        return context->throwError(QStringLiteral("Invalid regular expression ") +
                                   context->argument(2).toString() + QStringLiteral(": ") +
                                   pattern.errorString());
    std::string message;
    const std::vector<TVDBObject*> candidates = objects_of_spec(*db, arg(context, 0), message);
    if (!message.empty())
        return context->throwError(QString::fromStdString(message));
    // With a tag, the values of that variable; without one, the ids.
    const bool wantIds = tag.empty() || tag == "undefined";
    QScriptValue answer = ours->newArray();
    quint32 count = 0;
    for (TVDBObject* object : candidates) {
        bool matches = false;
        for (int i = 0; i < object->get_nvariables() && !matches; ++i) {
            const TVVariable* var = object->get_var_by_index(i, false);
            matches = var != nullptr &&
                      pattern.match(QString::fromStdString(var->get_value())).hasMatch();
        }
        if (!matches)
            continue;
        if (wantIds) {
            answer.setProperty(count++, QScriptValue(object->get_id()));
        } else {
            const TVVariable* var = object->get_var_by_tag(tag, false);
            if (var != nullptr)
                answer.setProperty(count++, text(var->get_value()));
        }
    }
    return answer;
}

QScriptValue fn_prompt_db(QScriptContext* context, TVDBScriptEngineQt* ours, TVDBObject& object)
{
    const TVDatabase* db = object.get_database();
    if (db == nullptr)
        return context->throwError(QStringLiteral("Could not locate the overall database."));
    const std::string tag = arg(context, 1);
    const std::string initial = context->argumentCount() > 3 ? arg(context, 3) : std::string();
    std::string message;
    const std::vector<TVDBObject*> candidates = objects_of_spec(*db, arg(context, 0), message);
    if (!message.empty())
        return context->throwError(QString::fromStdString(message));
    // Each value once, the default first so that the dialog offers it.
    std::vector<std::string> values;
    if (!initial.empty())
        values.push_back(initial);
    for (const TVDBObject* object : candidates) {
        const TVVariable* var = object->get_var_by_tag(tag, false);
        if (var != nullptr && std::find(values.begin(), values.end(), var->get_value()) == values.end())
            values.push_back(var->get_value());
    }
    if (!ours->is_interactive())
        return text(initial);
    TVDBScriptEngineQt::PromptScope waiting;
    return text(TVDBScriptHost::instance().prompt_choice(arg(context, 2), arg(context, 2), values,
                                                         context->argument(4).toBool()));
}

} // namespace

// ---- The engine ---------------------------------------------------------------

TVDBScriptEngineQt::TVDBScriptEngineQt(TVDBObject* object, bool interactive)
    : m_object(object), m_interactive(interactive)
{
    register_functions();
}

TVDBScriptEngineQt::~TVDBScriptEngineQt() = default;

void TVDBScriptEngineQt::register_functions()
{
    const struct
    {
        const char* name;
        QScriptEngine::FunctionSignature function;
    } functions[] = {
        {"TVCallSelf", of_object<fn_call_self>},     {"TVCallParent", of_object<fn_call_parent>},
        {"TVCallChild", of_object<fn_call_child>},   {"TVCallAll", of_object<fn_call_all>},
        {"TVCallID", of_object<fn_call_id>},         {"TVDateCompare", of_engine<fn_date_compare>},
        {"TVDateEval", of_engine<fn_date_eval>},     {"TVPromptText", of_engine<fn_prompt_text>},
        {"TVPromptChoice", of_engine<fn_prompt_choice>}, {"TVGuiCall", of_engine<fn_gui_call>},
        {"TVOpenUrl", of_engine<fn_open_url>},       {"TVGet", of_object<fn_get>},
        {"TVSet", of_object<fn_set>},                {"TVSetSpec", of_object<fn_set_spec>},
        {"TVSearchDB", of_object<fn_search_db>},     {"TVPromptDB", of_object<fn_prompt_db>},
    };
    QScriptValue global = globalObject();
    for (const auto& entry : functions)
        global.setProperty(QString::fromLatin1(entry.name), newFunction(entry.function));
}

TVDBScriptEngineQt::Outcome TVDBScriptEngineQt::run(const std::string& script,
                                                    const std::string& name)
{
    return guarded_evaluate(*this, script, name);
}

TVDBScriptEngineQt::Outcome TVDBScriptEngineQt::guarded_evaluate(QScriptEngine& engine,
                                                                 const std::string& script,
                                                                 const std::string& name)
{
    Outcome outcome;
    const bool outermost = t_runs.engines.empty();
    std::unique_ptr<Watchdog> watchdog;
    if (outermost && time_limit_ms() > 0) {
        watchdog = std::make_unique<Watchdog>(time_limit_ms());
        t_runs.watchdog = watchdog.get();
    }
    engine.setProcessEventsInterval(t_runs.watchdog != nullptr ? C_CheckIntervalMs : -1);
    if (engine.agent() == nullptr)
        engine.setAgent(new LineTracker(&engine));
    // A call's run has lines of its own; the caller's comes back after it.
    const int callerLine = t_line;
    t_line = -1;
    t_runs.engines.push_back(&engine);
    const QScriptValue value =
        engine.evaluate(QString::fromStdString(script), QString::fromStdString(name), 1);
    t_runs.engines.pop_back();
    outcome.stopped = run_stopped();
    const int stoppedAt = outcome.stopped ? t_runs.watchdog->line() : -1;
    if (outermost) {
        t_runs.watchdog = nullptr;
        watchdog.reset();
    }
    if (engine.hasUncaughtException()) {
        // With an agent installed the engine may not know the line.
        outcome.errorLine = engine.uncaughtExceptionLineNumber();
        if (outcome.errorLine <= 0)
            outcome.errorLine = std::max(1, t_line);
        outcome.errorText = engine.uncaughtException().toString().toStdString();
        engine.clearExceptions();
    } else {
        outcome.value = value.toString().toStdString();
    }
    if (outcome.stopped) {
        outcome.errorLine = std::max(1, stoppedAt);
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%g", time_limit_ms() / 1000.0);
        outcome.errorText = "The script " + name + " was stopped at line " +
                            std::to_string(outcome.errorLine) + ": it ran for longer than " +
                            seconds + " seconds.";
    }
    t_line = callerLine;
    return outcome;
}

TVDBScriptEngineQt* TVDBScriptEngineQt::current()
{
    return t_runs.engines.empty() ? nullptr : our_engine(t_runs.engines.back());
}

bool TVDBScriptEngineQt::running()
{
    return !t_runs.engines.empty();
}

bool TVDBScriptEngineQt::run_stopped()
{
    return t_runs.watchdog != nullptr && t_runs.watchdog->stopped();
}

int TVDBScriptEngineQt::time_limit_ms()
{
    if (s_timeLimitMs < 0) {
        const std::string configured =
            tvparam() != nullptr ? tvparam()->get_system_value(C_TimeLimitParam) : std::string();
        s_timeLimitMs = configured.empty() ? C_DefaultTimeLimitMs : std::atoi(configured.c_str());
    }
    return s_timeLimitMs;
}

void TVDBScriptEngineQt::set_time_limit_ms(int ms)
{
    s_timeLimitMs = ms;
}

TVDBScriptEngineQt::PromptScope::PromptScope()
{
    if (t_runs.watchdog != nullptr)
        t_runs.watchdog->pause();
}

TVDBScriptEngineQt::PromptScope::~PromptScope()
{
    if (t_runs.watchdog != nullptr)
        t_runs.watchdog->resume();
}
