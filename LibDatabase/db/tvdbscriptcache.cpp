#include "LibDatabase/db/tvdbscriptcache.h"

#include "LibDatabase/db/tvdbscriptengineqt.h"

#include <QCoreApplication>
#include <QPointer>
#include <QScriptEngine>
#include <QThread>

#include <memory>

namespace {

// One engine per thread for every expression: making one costs far more
// than evaluating a short expression, and a file with expressions in its
// specs evaluates thousands as it loads.
QScriptEngine& expression_engine()
{
    thread_local QPointer<QScriptEngine> engine;
    thread_local std::unique_ptr<QScriptEngine> owned;
    if (engine.isNull()) {
        QCoreApplication* application = QCoreApplication::instance();
        if (QThread::currentThread() == application->thread()) {
            // Goes with the application object, before Qt's teardown.
            engine = new QScriptEngine(application);
        } else {
            owned = std::make_unique<QScriptEngine>();
            engine = owned.get();
        }
    }
    return *engine;
}

} // namespace

void TVDBScriptCache::set_defaults(bool)
{
    m_entries.clear();
}

std::string TVDBScriptCache::evaluate(const std::string& expression, int index)
{
    if (index < 0)
        index = 0;
    if (static_cast<size_t>(index) >= m_entries.size())
        m_entries.resize(static_cast<size_t>(index) + 1);
    Entry& entry = m_entries[static_cast<size_t>(index)];
    if (entry.m_set && entry.m_expression == expression)
        return entry.m_result;
    if (QCoreApplication::instance() == nullptr)
        return "Expressions can't be evaluated without an application object.";
    QScriptEngine& engine = expression_engine();
    // A context of its own: what one expression declares, the next can't see.
    engine.pushContext();
    const TVDBScriptEngineQt::Outcome outcome =
        TVDBScriptEngineQt::guarded_evaluate(engine, expression, "expression");
    engine.popContext();
    entry.m_expression = expression;
    entry.m_result = outcome.errorLine >= 0 ? outcome.errorText : outcome.value;
    entry.m_set = true;
    return entry.m_result;
}
