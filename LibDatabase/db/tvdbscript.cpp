#include "LibDatabase/db/tvdbscript.h"

#include "LibCore/log/tvdump.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDatabase/db/tvdbscriptengineqt.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

#include <QCoreApplication>

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVDBScript";
const TVObjectPreReg s_preReg(C_ClassName, TVDBScript::create_tvobject);
} // namespace

int TVDBScript::TVErrC_ScriptStopped =
    allocate_code("TVDBScript::TVErrC_ScriptStopped", "A script ran too long and was stopped.");

TVDBScript::TVDBScript()
{
    register_tvobject();
}

TVDBScript::TVDBScript(const std::string& name, const std::string& script,
                       const std::string& shortcut)
    : m_name(name), m_script(script), m_shortcut(shortcut)
{
    register_tvobject();
}

// A copy is a new script: the error of a run belongs to the original.
TVDBScript::TVDBScript(const TVDBScript& other)
    : TVObject(other), m_name(other.m_name), m_script(other.m_script),
      m_shortcut(other.m_shortcut)
{
    register_tvobject();
}

TVDBScript& TVDBScript::operator=(const TVDBScript& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_name = other.m_name;
        m_script = other.m_script;
        m_shortcut = other.m_shortcut;
        clear_error();
    }
    return *this;
}

void TVDBScript::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_name.clear();
    m_script.clear();
    m_shortcut.clear();
    clear_error();
}

void TVDBScript::set_error(int line, const std::string& text)
{
    m_errorLine = line;
    m_errorText = text;
}

void TVDBScript::clear_error()
{
    m_errorLine = -1;
    m_errorText.clear();
}

int TVDBScript::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBScript>(out, source, C_ClassName);
}

void TVDBScript::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDBScript::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "name", m_name, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "script", m_script, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "shortcut", m_shortcut, false));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBScript::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVDBScript " << m_name;
    if (!m_shortcut.empty())
        out << " [" << m_shortcut << "]";
    if (m_errorLine >= 0)
        out << " error at line " << m_errorLine << ": " << m_errorText;
    out << '\n';
}

int TVDBScript::run(TVDBObject& object, bool interactive)
{
    try {
        TVDatabase* db = object.get_database();
        const bool ownStep = !TVDBScriptEngineQt::running() && db != nullptr &&
                             db->is_loaded() && !db->is_read_only();
        const std::string operation = "Run Script " + m_name;
        // What was open before is finished first, so that a stop drops only
        // what the script did.
        if (ownStep && db->needs_save())
            TV_PASS_ON(db->complete_operation(operation));
        const int result = run_engine(object, interactive, nullptr);
        if (!ownStep)
            return result;
        if (TVErrDetails::compute_code(result) == TVErrC_ScriptStopped) {
            // The rebuild deletes every object, and with them this script
            // when an object or spec owns it: after it, only locals are safe.
            const std::string error = m_errorText;
            const std::string name = m_name;
            const int line = m_errorLine;
            const int id = object.get_id();
            const bool ownedByDatabase = object.get_script(m_name) == this;
            TV_PASS_ON(db->discard_operation());
            TVDBObject* fresh = db->get_object_by_id(id);
            if (TVDBScript* again = fresh != nullptr ? fresh->get_script(name) : nullptr)
                again->set_error(line, error);
            if (!ownedByDatabase)
                set_error(line, error);
            return result;
        }
        TV_PASS_ON(db->complete_operation(operation));
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBScript::run_within(TVDBObject& object, bool interactive, std::string* value)
{
    return run_engine(object, interactive, value);
}

int TVDBScript::run_engine(TVDBObject& object, bool interactive, std::string* value)
{
    clear_error();
    if (QCoreApplication::instance() == nullptr) {
        // Like any script error: kept on the script, never the program's.
        set_error(0, "Scripts can't run in a program without an application object.");
        return TVErrC_okCancel;
    }
    TVDBScriptEngineQt engine(&object, interactive);
    const TVDBScriptEngineQt::Outcome outcome = engine.run(m_script, m_name);
    if (value != nullptr)
        *value = outcome.value;
    if (outcome.errorLine < 0)
        return TVErrC_ok;
    set_error(outcome.errorLine, outcome.errorText);
    if (outcome.stopped)
        return tvwarning(TVErrC_ScriptStopped, TVLOCATION, "%s", m_errorText.c_str());
    return TVErrC_okCancel;
}
