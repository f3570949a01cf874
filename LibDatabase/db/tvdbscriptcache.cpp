#include "LibDatabase/db/tvdbscriptcache.h"

#include "LibDatabase/db/tvdbscriptengineqt.h"

#include <QCoreApplication>
#include <QScriptEngine>

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
    QScriptEngine engine;
    const TVDBScriptEngineQt::Outcome outcome =
        TVDBScriptEngineQt::guarded_evaluate(engine, expression, "expression");
    entry.m_expression = expression;
    entry.m_result = outcome.errorLine >= 0 ? outcome.errorText : outcome.value;
    entry.m_set = true;
    return entry.m_result;
}
