#include "LibDatabase/db/tvvarspec.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVVarSpec";
const TVObjectPreReg s_preReg(C_ClassName, TVVarSpec::create_tvobject);

struct ConstraintName {
    const char* name;
    int value;
};
const ConstraintName C_Constraints[] = {
    {"none", TVVarSpec::E_ConstrainNone},         {"bool", TVVarSpec::E_ConstrainBool},
    {"int", TVVarSpec::E_ConstrainInt},           {"float", TVVarSpec::E_ConstrainFloat},
    {"date", TVVarSpec::E_ConstrainDate},         {"duration", TVVarSpec::E_ConstrainDuration},
    {"location", TVVarSpec::E_ConstrainLocation}, {"url", TVVarSpec::E_ConstrainUrl},
    {"path", TVVarSpec::E_ConstrainPath},         {"choice", TVVarSpec::E_ConstrainChoice},
    {"reference", TVVarSpec::E_ConstrainReference},
};
} // namespace

struct TVVarSpec::Record {
    std::string m_tag;
    std::string m_spec;
    bool m_isDerived = false;
    bool m_isPrompt = false;
    bool m_isAuto = false;
    bool m_isSysValue = false;
    bool m_private = false;
    int m_constraint = E_ConstrainNone;
    std::string m_constraintParam;
    int m_referenceCount = 1;
};

TVVarSpec::TVVarSpec() : r(new Record)
{
    register_tvobject();
}

TVVarSpec::TVVarSpec(const std::string& tag) : r(new Record)
{
    r->m_tag = tag;
    register_tvobject();
}

TVVarSpec::TVVarSpec(const TVVarSpec& other) : TVObject(other)
{
    own_copy_of(*other.r);
    register_tvobject();
}

TVVarSpec& TVVarSpec::operator=(const TVVarSpec& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        Record* fresh = new Record(*other.r);
        fresh->m_referenceCount = 1;
        release();
        r = fresh;
    }
    return *this;
}

TVVarSpec::~TVVarSpec()
{
    release();
}

void TVVarSpec::own_copy_of(const Record& record)
{
    r = new Record(record);
    r->m_referenceCount = 1;
}

void TVVarSpec::release()
{
    if (r != nullptr && --r->m_referenceCount == 0)
        delete r;
    r = nullptr;
}

void TVVarSpec::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    // A shared definition is left to its other handles.
    release();
    r = new Record;
}

int TVVarSpec::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVVarSpec>(out, source, C_ClassName);
}

void TVVarSpec::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVVarSpec::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                         int version)
{
    try {
        // A read must not rewrite the definition that other handles share.
        if (in != nullptr && r->m_referenceCount > 1) {
            const Record* shared = r;
            release();
            own_copy_of(*shared);
        }
        TV_PASS_ON(serialise_string(in, out, prefix, "t", r->m_tag, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "s", r->m_spec, true));
        TV_PASS_ON(serialise_value(in, out, prefix, "d", TVSrlValue<bool>(r->m_isDerived, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "p", TVSrlValue<bool>(r->m_isPrompt, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "a", TVSrlValue<bool>(r->m_isAuto, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "y", TVSrlValue<bool>(r->m_isSysValue, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "i", TVSrlValue<bool>(r->m_private, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "c",
                                   TVSrlValue<int>(r->m_constraint, E_ConstrainNone)));
        TV_PASS_ON(serialise_string(in, out, prefix, "r", r->m_constraintParam, true));
        TV_PASS_ON(TVObject::serialise(in, out, "O", version));
        if (in != nullptr && r->m_isDerived)
            r->m_isPrompt = false;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVVarSpec::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVVarSpec " << r->m_tag << " \"" << r->m_spec << "\""
        << (r->m_isDerived ? " derived" : "") << (r->m_isPrompt ? " prompt" : "")
        << (r->m_isAuto ? " auto" : "") << (r->m_isSysValue ? " system" : "")
        << (r->m_private ? " private" : "") << " " << constraint_to_str(r->m_constraint) << " \""
        << r->m_constraintParam << "\", " << r->m_referenceCount << " handles\n";
}

int TVVarSpec::str_to_constraint(const std::string& name)
{
    for (const ConstraintName& entry : C_Constraints)
        if (tv_compare_nocase(name, entry.name))
            return entry.value;
    return -1;
}

std::string TVVarSpec::constraint_to_str(int constraint)
{
    for (const ConstraintName& entry : C_Constraints)
        if (entry.value == constraint)
            return entry.name;
    return std::string();
}

const std::string& TVVarSpec::get_tag() const { return r->m_tag; }
void TVVarSpec::set_tag(const std::string& tag) { r->m_tag = tag; }
const std::string& TVVarSpec::get_spec() const { return r->m_spec; }
void TVVarSpec::set_spec(const std::string& spec) { r->m_spec = spec; }

void TVVarSpec::append_spec(const std::string& text)
{
    if (r->m_spec.empty())
        r->m_spec = text;
    else
        r->m_spec += "\n" + text;
}

bool TVVarSpec::is_derived() const { return r->m_isDerived; }

void TVVarSpec::set_derived(bool on)
{
    r->m_isDerived = on;
    if (on)
        r->m_isPrompt = false;
}

bool TVVarSpec::is_prompt() const { return r->m_isPrompt; }

void TVVarSpec::set_prompt(bool on)
{
    r->m_isPrompt = on;
    if (on)
        r->m_isDerived = false;
}

bool TVVarSpec::is_auto() const { return r->m_isAuto; }
void TVVarSpec::set_auto(bool on) { r->m_isAuto = on; }
bool TVVarSpec::is_sysvalue() const { return r->m_isSysValue; }
void TVVarSpec::set_sysvalue(bool on) { r->m_isSysValue = on; }
bool TVVarSpec::is_private() const { return r->m_private; }
void TVVarSpec::set_private(bool on) { r->m_private = on; }
int TVVarSpec::get_constraint() const { return r->m_constraint; }
void TVVarSpec::set_constraint(int constraint) { r->m_constraint = constraint; }
const std::string& TVVarSpec::get_constraintparam() const { return r->m_constraintParam; }
void TVVarSpec::set_constraintparam(const std::string& param) { r->m_constraintParam = param; }
int TVVarSpec::get_reference_count() const { return r->m_referenceCount; }

bool TVVarSpec::match_assoc(const std::string& name) const
{
    const size_t colon = r->m_tag.find(':');
    if (name.empty())
        return colon == std::string::npos;
    return colon != std::string::npos && r->m_tag.compare(0, colon, name) == 0 &&
           colon == name.size();
}

bool TVVarSpec::split_assoc(const std::string& tag, std::string& name, std::string& assoc)
{
    const size_t colon = tag.find(':');
    if (colon == std::string::npos || colon + 1 == tag.size())
        return false;
    name = tag.substr(0, colon);
    assoc = tag.substr(colon + 1);
    return true;
}

void TVVarSpec::link(const TVVarSpec& other)
{
    if (r == other.r)
        return;
    ++other.r->m_referenceCount;
    release();
    r = other.r;
}

bool TVVarSpec::shares_definition(const TVVarSpec& other) const
{
    return r == other.r;
}

bool TVVarSpec::defined_in_spec() const
{
    return !(r->m_isSysValue && !r->m_isPrompt && !r->m_isDerived && r->m_spec.empty());
}
