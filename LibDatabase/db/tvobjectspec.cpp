#include "LibDatabase/db/tvobjectspec.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdbparser.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvobjectspecchild.h"
#include "LibDatabase/db/tvspecparser.h"
#include "LibDatabase/db/tvvarspec.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVObjectSpec";
const TVObjectPreReg s_preReg(C_ClassName, TVObjectSpec::create_tvobject);

template <class T>
void copy_array(const TVPtrArray<T>& from, TVPtrArray<T>& to)
{
    to.clear();
    for (const T* item : from)
        to.add(new T(*item));
}
} // namespace

struct TVObjectSpec::TVObjectSpecImpl {
    std::string m_name;
    TVPtrArray<TVVarSpec> m_varSpec{true};
    TVPtrArray<TVObjectSpecChild> m_child{true};
    std::vector<std::string> m_inherit;
    bool m_baseOnly = false;
    bool m_defunct = false;
    std::string m_text;
    std::string m_fileName;
    int m_fileLine = 0;
    std::string m_parseError;
    int m_parseErrorLine = -1;
};

TVObjectSpec::TVObjectSpec() : d(new TVObjectSpecImpl)
{
    register_tvobject();
}

TVObjectSpec::TVObjectSpec(const std::string& name, const std::string& text)
    : d(new TVObjectSpecImpl)
{
    d->m_name = name;
    d->m_text = text;
    register_tvobject();
}

TVObjectSpec::TVObjectSpec(const TVObjectSpec& other) : TVDBObject(other), d(new TVObjectSpecImpl)
{
    copy_fields(other);
    register_tvobject();
}

TVObjectSpec& TVObjectSpec::operator=(const TVObjectSpec& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        copy_fields(other);
    }
    return *this;
}

TVObjectSpec::~TVObjectSpec() = default;

void TVObjectSpec::copy_fields(const TVObjectSpec& other)
{
    const TVObjectSpecImpl& o = *other.d;
    d->m_name = o.m_name;
    copy_array(o.m_varSpec, d->m_varSpec);
    copy_array(o.m_child, d->m_child);
    d->m_inherit = o.m_inherit;
    d->m_baseOnly = o.m_baseOnly;
    d->m_defunct = o.m_defunct;
    d->m_text = o.m_text;
    d->m_fileName = o.m_fileName;
    d->m_fileLine = o.m_fileLine;
    d->m_parseError = o.m_parseError;
    d->m_parseErrorLine = o.m_parseErrorLine;
}

void TVObjectSpec::set_defaults(bool constructing)
{
    if (!constructing)
        TVDBObject::set_defaults(false);
    d.reset(new TVObjectSpecImpl);
}

int TVObjectSpec::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVObjectSpec>(out, source, C_ClassName);
}

void TVObjectSpec::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVObjectSpec::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                            int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "name", d->m_name, false));
        TV_PASS_ON(serialise_object(in, out, prefix, "varSpec",
                                    TVSrlObjectArray<TVVarSpec>(d->m_varSpec, version)));
        TV_PASS_ON(serialise_object(in, out, prefix, "child",
                                    TVSrlObjectArray<TVObjectSpecChild>(d->m_child, version)));
        TV_PASS_ON(serialise_value(in, out, prefix, "baseOnly", TVSrlValue<bool>(d->m_baseOnly, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "defunct", TVSrlValue<bool>(d->m_defunct, false)));
        TV_PASS_ON(serialise_string_vector(in, out, prefix, "inherit", d->m_inherit));
        TV_PASS_ON(serialise_string(in, out, prefix, "text", d->m_text, false));
        TV_PASS_ON(TVDBObject::serialise(in, out, "DB", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVObjectSpec::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVObjectSpec " << d->m_name << (d->m_baseOnly ? " baseOnly" : "")
        << (d->m_defunct ? " defunct" : "") << ", inherits";
    for (const std::string& name : d->m_inherit)
        out << ' ' << name;
    out << '\n';
    if (!d->m_parseError.empty())
        out << pad << "    error at line " << d->m_parseErrorLine << ": " << d->m_parseError << '\n';
    for (const TVVarSpec* spec : d->m_varSpec)
        spec->dump(out, indent + 1);
    for (const TVObjectSpecChild* child : d->m_child)
        child->dump(out, indent + 1);
    TVDBObject::dump(out, indent + 1);
}

bool TVObjectSpec::uses_spec() const
{
    return false;
}

const std::string& TVObjectSpec::get_name() const
{
    return d->m_name;
}

void TVObjectSpec::set_name(const std::string& name)
{
    if (name == d->m_name)
        return;
    d->m_name = name;
    mark_changed(TVLOCATION, true);
}

const std::string& TVObjectSpec::get_text() const
{
    return d->m_text;
}

void TVObjectSpec::set_text(const std::string& text)
{
    if (text == d->m_text)
        return;
    d->m_text = text;
    mark_changed(TVLOCATION, true);
}

void TVObjectSpec::set_file_info(const std::string& file, int line)
{
    d->m_fileName = file;
    d->m_fileLine = line;
}

const std::string& TVObjectSpec::get_file_name() const
{
    return d->m_fileName;
}

int TVObjectSpec::get_file_line() const
{
    return d->m_fileLine;
}

int TVObjectSpec::get_nvarspecs() const
{
    return d->m_varSpec.size();
}

TVVarSpec* TVObjectSpec::get_varspec_by_index(int index) const
{
    return index >= 0 && index < d->m_varSpec.size() ? d->m_varSpec[index] : nullptr;
}

TVVarSpec* TVObjectSpec::get_varspec_by_name(const std::string& tag) const
{
    for (TVVarSpec* spec : d->m_varSpec)
        if (spec->get_tag() == tag)
            return spec;
    return nullptr;
}

void TVObjectSpec::add_varspec(TVVarSpec* spec)
{
    if (spec != nullptr)
        d->m_varSpec.add(spec);
}

int TVObjectSpec::get_nassoc(const std::string& name) const
{
    return static_cast<int>(std::count_if(d->m_varSpec.begin(), d->m_varSpec.end(),
                                          [&name](const TVVarSpec* s) { return s->match_assoc(name); }));
}

TVVarSpec* TVObjectSpec::get_assoc_by_index(const std::string& name, int index) const
{
    for (TVVarSpec* spec : d->m_varSpec)
        if (spec->match_assoc(name) && index-- == 0)
            return spec;
    return nullptr;
}

int TVObjectSpec::get_nchildren() const
{
    return d->m_child.size();
}

TVObjectSpecChild* TVObjectSpec::get_child_by_index(int index) const
{
    return index >= 0 && index < d->m_child.size() ? d->m_child[index] : nullptr;
}

TVObjectSpecChild* TVObjectSpec::get_child_by_name(const std::string& member_tag) const
{
    for (TVObjectSpecChild* child : d->m_child)
        if (child->get_member_tag() == member_tag)
            return child;
    return nullptr;
}

void TVObjectSpec::add_child(TVObjectSpecChild* child)
{
    if (child == nullptr)
        return;
    for (int i = 0; i < d->m_child.size(); ++i)
        if (d->m_child[i]->get_member_tag() == child->get_member_tag()) {
            *d->m_child[i] = *child;
            delete child;
            return;
        }
    d->m_child.add(child);
}

int TVObjectSpec::get_ninherited() const
{
    return static_cast<int>(d->m_inherit.size());
}

const std::string& TVObjectSpec::get_inherited_by_index(int index) const
{
    return index >= 0 && index < get_ninherited() ? d->m_inherit[static_cast<size_t>(index)]
                                                  : C_EmptyString;
}

const std::vector<std::string>& TVObjectSpec::get_inherited() const
{
    return d->m_inherit;
}

bool TVObjectSpec::inherits(const std::string& name) const
{
    return std::find(d->m_inherit.begin(), d->m_inherit.end(), name) != d->m_inherit.end();
}

void TVObjectSpec::add_inherited(const std::string& name)
{
    if (!inherits(name))
        d->m_inherit.push_back(name);
}

void TVObjectSpec::apply_inheritance(const TVObjectSpec& parent)
{
    for (const TVVarSpec* from : parent.d->m_varSpec) {
        TVVarSpec* own = get_varspec_by_name(from->get_tag());
        if (own == nullptr)
            d->m_varSpec.add(new TVVarSpec(*from));
        else if (!own->defined_in_spec())
            *own = *from;
    }
    for (const TVObjectSpecChild* child : parent.d->m_child)
        if (get_child_by_name(child->get_member_tag()) == nullptr)
            d->m_child.add(new TVObjectSpecChild(*child));
    for (int i = 0; i < parent.get_nscripts(); ++i) {
        const TVDBScript* script = parent.get_script_no(i);
        if (get_own_script(script->get_name()) == nullptr)
            add_script(new TVDBScript(*script));
    }
    for (const std::string& name : parent.d->m_inherit)
        add_inherited(name);
}

bool TVObjectSpec::is_base_only() const
{
    return d->m_baseOnly;
}

void TVObjectSpec::set_baseonly(bool on)
{
    d->m_baseOnly = on;
}

bool TVObjectSpec::is_defunct() const
{
    return d->m_defunct;
}

void TVObjectSpec::set_defunct(bool on)
{
    d->m_defunct = on;
}

void TVObjectSpec::clear_variables()
{
    d->m_varSpec.clear();
    d->m_child.clear();
    d->m_inherit.clear();
    clear_scripts();
    d->m_baseOnly = false;
    d->m_defunct = false;
}

int TVObjectSpec::parse(int* error_line)
{
    try {
        if (error_line != nullptr)
            *error_line = -1;
        if (!TVDBParser::is_valid_name(d->m_name))
            return tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION,
                              "The \"%s\" spec name is invalid - It should only contain letters, "
                              "numbers or the \"_\" character",
                              d->m_name.c_str());
        TVSpecParser parser;
        (void)parser.tokenise(d->m_text);
        int line = -1;
        const int result = parser.parse(line, d->m_fileName, d->m_fileLine, *this);
        if (error_line != nullptr)
            *error_line = istvwarn(result) ? line : -1;
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

const std::string& TVObjectSpec::get_parse_error() const
{
    return d->m_parseError;
}

int TVObjectSpec::get_parse_error_line() const
{
    return d->m_parseErrorLine;
}

void TVObjectSpec::set_parse_error(const std::string& text, int line)
{
    d->m_parseError = text;
    d->m_parseErrorLine = line;
}

void TVObjectSpec::export_spec(std::ostream& out) const
{
    out << TVDBParser::C_ExportSpecSep << '\n'
        << TVSpecParser::C_ExportSpecStart << d->m_name << '\n'
        << d->m_text;
    if (d->m_text.empty() || d->m_text.back() != '\n')
        out << '\n';
    out << TVSpecParser::C_ExportSpecEnd << '\n';
}

namespace {
// The ways a text names another spec: "inherits NAME;", "${NAME}",
// "${NAME=" and, as a child's default spec, "=NAME}".
std::vector<std::string> spec_references(const std::string& name)
{
    return {std::string(TVSpecParser::C_Inherits) + " " + name + ";",
            TVSpecParser::C_SpecNameStart + name + TVSpecParser::C_SpecNameEnd,
            TVSpecParser::C_SpecNameStart + name + TVSpecParser::C_SpecDefault,
            TVSpecParser::C_SpecDefault + name + TVSpecParser::C_SpecNameEnd};
}
} // namespace

bool TVObjectSpec::referenced(const std::string& spec_name) const
{
    for (const std::string& form : spec_references(spec_name))
        if (d->m_text.find(form) != std::string::npos)
            return true;
    return false;
}

void TVObjectSpec::handle_rename(const std::string& from, const std::string& to)
{
    std::string text = d->m_text;
    const std::vector<std::string> froms = spec_references(from);
    const std::vector<std::string> tos = spec_references(to);
    for (size_t i = 0; i < froms.size(); ++i)
        text = tv_replace_substr(text, froms[i], tos[i]);
    set_text(text);
}
