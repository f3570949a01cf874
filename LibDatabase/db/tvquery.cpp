#include "LibDatabase/db/tvquery.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvquerycond.h"
#include "LibDatabase/db/tvqueryconddate.h"
#include "LibDatabase/db/tvquerycondid.h"
#include "LibDatabase/db/tvquerycondnum.h"
#include "LibDatabase/db/tvquerycondregex.h"
#include "LibDatabase/db/tvquerycondspec.h"
#include "LibDatabase/db/tvquerycondtext.h"
#include "LibDatabase/db/tvqueryfield.h"
#include "LibDatabase/db/tvqueryid.h"
#include "LibDatabase/db/tvqueryparser.h"
#include "LibDatabase/db/tvqueryprompt.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibObject/object/tvtrail.h"

#include <cstdlib>
#include <map>
#include <ostream>

int TVQuery::TVErrC_MissingObjectType =
    allocate_code("TVQuery::TVErrC_MissingObjectType",
                  "A field reads a kind of object that no condition brings in.");

namespace {
constexpr const char* C_ClassName = "TVQuery";
const TVObjectPreReg s_preReg(C_ClassName, TVQuery::create_tvobject);

#define TV_QUERY_FAIL(...) tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION, __VA_ARGS__)

// Through the serial form, since the arrays hold several classes.
template <class T>
void copy_array(const TVPtrArray<T>& from, TVPtrArray<T>& to)
{
    to.clear();
    for (const T* item : from) {
        TVObject* copy = item->clone_class();
        if (T* typed = dynamic_cast<T*>(copy))
            to.add(typed);
        else
            delete copy;
    }
}

const std::string& db_kind()
{
    static const std::string kind = tv_tolower(TVDatabase::C_DatabaseTag);
    return kind;
}
} // namespace

struct TVQuery::TVQueryImpl {
    std::string m_name;
    std::string m_text;
    // The text with the prompts' values in it; empty until expand_prompts.
    std::string m_processed;
    TVPtrArray<TVQueryCond> m_cond{true};
    TVPtrArray<TVQueryField> m_field{true};
    TVPtrArray<TVQueryPrompt> m_prompt{true};
    std::string m_fileName;
    int m_fileLine = 0;
};

// What one execute carries down its loops: the objects of each kind,
// gathered once, and the chain being built.
struct TVQuery::TVQueryRun {
    const TVDatabase& m_db;
    TVQueryResult& m_result;
    std::map<std::string, std::vector<TVDBObject*>> m_byKind;
    std::vector<TVDBObject*> m_chain;
    // The chain with one of its objects first, as get_value reads it.
    std::vector<TVDBObject*> m_view;

    const std::vector<TVDBObject*>& view(TVDBObject* first)
    {
        m_view.clear();
        m_view.push_back(first);
        for (TVDBObject* object : m_chain)
            if (object != first)
                m_view.push_back(object);
        return m_view;
    }
    // The chain's object of one of cond's kinds; null when none is there.
    TVDBObject* find_in_chain(const TVQueryCond& cond) const
    {
        for (TVDBObject* object : m_chain) {
            const bool isDb = object == &m_db;
            if (cond.names_object(isDb ? db_kind() : object->get_class_name()))
                return object;
        }
        return nullptr;
    }
};

TVQuery::TVQuery() : d(new TVQueryImpl)
{
    register_tvobject();
}

TVQuery::TVQuery(const std::string& name, const std::string& text) : d(new TVQueryImpl)
{
    d->m_name = name;
    d->m_text = text;
    register_tvobject();
}

TVQuery::TVQuery(const TVQuery& other) : TVDBObject(other), d(new TVQueryImpl)
{
    copy_fields(other);
    register_tvobject();
}

TVQuery& TVQuery::operator=(const TVQuery& other)
{
    if (this != &other) {
        TVDBObject::operator=(other);
        copy_fields(other);
    }
    return *this;
}

TVQuery::~TVQuery() = default;

void TVQuery::copy_fields(const TVQuery& other)
{
    const TVQueryImpl& o = *other.d;
    d->m_name = o.m_name;
    d->m_text = o.m_text;
    d->m_processed = o.m_processed;
    copy_array(o.m_cond, d->m_cond);
    copy_array(o.m_field, d->m_field);
    copy_array(o.m_prompt, d->m_prompt);
    d->m_fileName = o.m_fileName;
    d->m_fileLine = o.m_fileLine;
}

void TVQuery::set_defaults(bool constructing)
{
    if (!constructing)
        TVDBObject::set_defaults(false);
    d.reset(new TVQueryImpl);
}

int TVQuery::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQuery>(out, source, C_ClassName);
}

void TVQuery::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVQuery::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                       int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "name", d->m_name, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "text", d->m_text, false));
        TV_PASS_ON(serialise_object(in, out, prefix, "cond",
                                    TVSrlObjectArray<TVQueryCond>(d->m_cond, version)));
        TV_PASS_ON(serialise_object(in, out, prefix, "field",
                                    TVSrlObjectArray<TVQueryField>(d->m_field, version)));
        TV_PASS_ON(serialise_object(in, out, prefix, "prompt",
                                    TVSrlObjectArray<TVQueryPrompt>(d->m_prompt, version)));
        TV_PASS_ON(TVDBObject::serialise(in, out, "TVDBObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVQuery::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVQuery " << d->m_name << '\n';
    for (const TVQueryCond* cond : d->m_cond)
        cond->dump(out, indent + 1);
    for (const TVQueryField* field : d->m_field)
        field->dump(out, indent + 1);
    for (const TVQueryPrompt* prompt : d->m_prompt)
        out << TVDump::indent_string(indent + 1) << "prompt " << prompt->get_title() << " = "
            << prompt->get_value() << '\n';
    TVDBObject::dump(out, indent + 1);
}

bool TVQuery::uses_spec() const
{
    return false;
}

const std::string& TVQuery::get_name() const
{
    return d->m_name;
}

void TVQuery::set_name(const std::string& name)
{
    d->m_name = name;
    mark_changed(TVLOCATION, true);
}

const std::string& TVQuery::get_text() const
{
    return d->m_text;
}

void TVQuery::set_text(const std::string& text)
{
    d->m_text = text;
    d->m_processed.clear();
    mark_changed(TVLOCATION, true);
}

void TVQuery::set_file_info(const std::string& file, int line)
{
    d->m_fileName = file;
    d->m_fileLine = line;
}

int TVQuery::get_nconditions() const
{
    return d->m_cond.size();
}

TVQueryCond* TVQuery::get_condition(int index) const
{
    return index >= 0 && index < d->m_cond.size() ? d->m_cond[index] : nullptr;
}

void TVQuery::add_condition(TVQueryCond* cond)
{
    d->m_cond.add(cond);
}

int TVQuery::get_nfields() const
{
    return d->m_field.size();
}

TVQueryField* TVQuery::get_field_no(int index) const
{
    return index >= 0 && index < d->m_field.size() ? d->m_field[index] : nullptr;
}

void TVQuery::add_field(TVQueryField* field)
{
    d->m_field.add(field);
}

void TVQuery::clear_fields()
{
    d->m_field.clear();
}

int TVQuery::get_nprompts() const
{
    return d->m_prompt.size();
}

TVQueryPrompt* TVQuery::get_prompt_no(int index) const
{
    return index >= 0 && index < d->m_prompt.size() ? d->m_prompt[index] : nullptr;
}

TVQueryPrompt* TVQuery::get_prompt_by_name(const std::string& title) const
{
    for (TVQueryPrompt* prompt : d->m_prompt)
        if (prompt->get_title() == title)
            return prompt;
    return nullptr;
}

void TVQuery::add_prompt(TVQueryPrompt* prompt)
{
    d->m_prompt.add(prompt);
}

void TVQuery::clear_prompts()
{
    d->m_prompt.clear();
}

// ---- Parsing ------------------------------------------------------------------------

int TVQuery::parse(bool keepPrompts, int* error_line)
{
    try {
        if (error_line != nullptr)
            *error_line = -1;
        d->m_cond.clear();
        d->m_field.clear();
        if (!keepPrompts)
            d->m_prompt.clear();
        if (d->m_processed.empty())
            d->m_processed = d->m_text;
        TVQueryParser parser;
        TV_PASS_ON(parser.tokenise(d->m_processed));
        const bool inFile = !d->m_fileName.empty();
        for (;;) {
            parser.pop_whitespace();
            if (parser.empty())
                return TVErrC_ok;
            const int line = inFile ? d->m_fileLine + parser.get_line_no() : parser.get_line_no();
            if (error_line != nullptr)
                *error_line = line;
            const std::string prefix = tv_sprintf(
                "%s:%d: error ", inFile ? d->m_fileName.c_str() : d->m_name.c_str(), line);
            int result = TVErrC_ok;
            if (parser.match(TVDBParser::C_Comment)) {
                (void)parser.pop_token();
            } else if (parser.match(TVQueryParser::C_FieldToken)) {
                result = parse_field(parser, prefix);
            } else if (parser.match(TVQueryParser::C_CondToken)) {
                result = parse_condition(parser, prefix);
            } else if (parser.match(TVQueryParser::C_PromptToken)) {
                if (keepPrompts) {
                    TVQueryParser::TagList tags;
                    result = parser.extract_cond(tags, prefix, TVQueryParser::C_PromptToken);
                } else {
                    result = parse_prompt(parser, prefix);
                }
            } else {
                return TV_QUERY_FAIL("%s Unknown symbol \"%s\"", prefix.c_str(),
                                     parser.first_token().c_str());
            }
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            if (error_line != nullptr)
                *error_line = -1;
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVQuery::parse_field(TVQueryParser& parser, const std::string& prefix)
{
    using P = TVQueryParser;
    P::TagList tags;
    TV_PASS_ON(parser.extract_cond(tags, prefix, P::C_FieldToken));
    for (const char* tag : {P::C_TitleTag, P::C_FromTag, P::C_ValueTag})
        if (P::get_val(tag, tags).empty())
            return TV_QUERY_FAIL("%s Missing %s for Field", prefix.c_str(), tag);
    const std::string title = P::get_val(P::C_TitleTag, tags);
    const std::string from = P::get_val(P::C_FromTag, tags);
    const std::string value = P::get_val(P::C_ValueTag, tags);
    const std::string range = P::get_val(P::C_RangeTypeTag, tags);
    if (range.empty()) {
        add_field(new TVQueryField(title, from, value, P::join(tags)));
        return TVErrC_ok;
    }
    const bool known = range == TVQueryField::C_RangeDate || range == TVQueryField::C_RangeNumber;
    add_field(new TVQueryField(title, from, value, P::join(tags),
                               known ? TVQueryField::C_TypeRange : TVQueryField::C_TypePlain,
                               P::get_val(P::C_RangeStartTag, tags),
                               P::get_val(P::C_RangeEndTag, tags),
                               P::get_val(P::C_RangeDivTag, tags)));
    return TVErrC_ok;
}

int TVQuery::parse_condition(TVQueryParser& parser, const std::string& prefix)
{
    using P = TVQueryParser;
    P::TagList tags;
    TV_PASS_ON(parser.extract_cond(tags, prefix, P::C_CondToken));
    auto val = [&tags](const char* tag) { return P::get_val(tag, tags); };
    if (val(P::C_FromTag).empty())
        return TV_QUERY_FAIL("%s Missing %s for Field", prefix.c_str(), P::C_FromTag);
    if (val(P::C_ValueTag).empty() && val(P::C_SpecTag).empty() && val(P::C_IDTag).empty())
        return TV_QUERY_FAIL("%s Missing %s for Field", prefix.c_str(), P::C_ValueTag);
    const std::string from = val(P::C_FromTag);
    const std::string value = val(P::C_ValueTag);
    const std::string qualifiers = P::join(tags);
    if (!val(P::C_SpecTag).empty()) {
        add_condition(new TVQueryCondSpec(from, val(P::C_SpecTag), qualifiers));
    } else if (!val(P::C_IDTag).empty()) {
        add_condition(new TVQueryCondId(from, std::atoi(val(P::C_IDTag).c_str()), qualifiers));
    } else if (!val(P::C_TextTag).empty()) {
        add_condition(new TVQueryCondText(from, value, val(P::C_TextTag), qualifiers));
    } else if (!val(P::C_RegexTag).empty()) {
        add_condition(new TVQueryCondRegex(from, value, val(P::C_RegexTag), qualifiers));
    } else if (!val(P::C_MinDate).empty()) {
        add_condition(new TVQueryCondDate(from, value, val(P::C_MinDate), true, qualifiers));
    } else if (!val(P::C_MaxDate).empty()) {
        add_condition(new TVQueryCondDate(from, value, val(P::C_MaxDate), false, qualifiers));
    } else {
        const std::string less = val(P::C_LessThanTag);
        const std::string greater = val(P::C_GreaterThanTag);
        const std::string equal = val(P::C_EqualTag);
        const std::string notEqual = val(P::C_NotEqualTag);
        if (less.empty() && greater.empty() && equal.empty() && notEqual.empty())
            return TV_QUERY_FAIL("%s Unknown condition type", prefix.c_str());
        auto* cond = new TVQueryCondNum(from, value, qualifiers);
        const double lessValue = std::atof(less.c_str());
        const double greaterValue = std::atof(greater.c_str());
        if (!less.empty() && !greater.empty())
            cond->set_range(greaterValue, lessValue);
        else if (!less.empty())
            cond->set_maximum(lessValue);
        else if (!greater.empty())
            cond->set_minimum(greaterValue);
        else if (!equal.empty())
            cond->set_equal(std::atof(equal.c_str()));
        else
            cond->set_notequal(std::atof(notEqual.c_str()));
        cond->set_epsilon(std::atof(val(P::C_EpsilonTag).c_str()));
        add_condition(cond);
    }
    return TVErrC_ok;
}

int TVQuery::parse_prompt(TVQueryParser& parser, const std::string& prefix)
{
    using P = TVQueryParser;
    P::TagList tags;
    TV_PASS_ON(parser.extract_cond(tags, prefix, P::C_PromptToken));
    if (P::get_val(P::C_TitleTag, tags).empty())
        return TV_QUERY_FAIL("%s Missing %s for Prompt", prefix.c_str(), P::C_TitleTag);
    add_prompt(new TVQueryPrompt(P::get_val(P::C_TitleTag, tags), P::get_val(P::C_ValueTag, tags)));
    return TVErrC_ok;
}

// ---- Prompts ------------------------------------------------------------------------

int TVQuery::expand_prompts()
{
    if (d->m_prompt.empty())
        return TVErrC_ok;
    std::string text = d->m_text;
    for (const TVQueryPrompt* prompt : d->m_prompt)
        text = tv_replace_substr(text, TVDBParser::C_VarStart + prompt->get_title() +
                                           TVDBParser::C_VarEnd,
                                 prompt->get_value());
    d->m_processed = text;
    return parse(true, nullptr);
}

void TVQuery::supply_prompts(const std::vector<std::string>& values)
{
    for (size_t i = 0; i < values.size() && static_cast<int>(i) < d->m_prompt.size(); ++i) {
        d->m_prompt[static_cast<int>(i)]->supply_value(values[i]);
        d->m_prompt[static_cast<int>(i)]->pop_supplied();
    }
}

std::vector<std::string> TVQuery::get_prompts() const
{
    std::vector<std::string> values;
    for (const TVQueryPrompt* prompt : d->m_prompt)
        values.push_back(prompt->get_value());
    return values;
}

// ---- Running ------------------------------------------------------------------------

int TVQuery::execute(const TVDatabase& db, TVQueryResult& result) const
{
    try {
        result.clear();
        for (const TVQueryField* field : d->m_field)
            result.add_field(*field);
        TVQueryRun run{db, result, {}, {}, {}};
        // Each kind's live objects once, in file order, rather than a pass
        // over the whole file at every depth.
        for (int i = 0; i < db.get_nobjects(); ++i) {
            TVDBObject* object = db.get_object_by_index(i);
            if (object != nullptr && !object->is_deleted())
                run.m_byKind[tv_tolower(object->get_class_name())].push_back(object);
        }
        TV_PASS_ON(expand_condition(run, 0));
        TV_PASS_ON(fill_cells(run));
        result.set_prompt(get_prompts());
        result.finalise();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVQuery::expand_condition(TVQueryRun& run, int index) const
{
    if (index >= d->m_cond.size()) {
        std::vector<TVId> ids;
        for (const TVDBObject* object : run.m_chain)
            ids.emplace_back(object->get_id(), -1, -1);
        run.m_result.add_id(new TVQueryId(ids));
        return TVErrC_ok;
    }
    const TVQueryCond& cond = *d->m_cond[index];
    // Tests one object of the chain; a value it lacks fails the condition.
    auto passes = [this, &run, &cond](TVDBObject* object, bool& pass) {
        std::string value;
        const int result = get_value(run.m_db, run.view(object), cond, value);
        if (istvwarn(result))
            return result;
        pass = result != TVErrC_okFailed && cond.evaluate(value, run.m_db);
        return TVErrC_ok;
    };
    if (TVDBObject* present = run.find_in_chain(cond)) {
        bool pass = false;
        TV_PASS_ON(passes(present, pass));
        return pass ? expand_condition(run, index + 1) : TVErrC_ok;
    }
    for (const std::string& kind : cond.get_objects()) {
        if (kind == db_kind()) {
            run.m_chain.push_back(const_cast<TVDatabase*>(&run.m_db));
            const int result = expand_condition(run, index + 1);
            run.m_chain.pop_back();
            TV_PASS_ON(result);
            continue;
        }
        const auto found = run.m_byKind.find(kind);
        if (found == run.m_byKind.end())
            continue;
        for (TVDBObject* object : found->second) {
            run.m_chain.push_back(object);
            bool pass = false;
            int result = passes(object, pass);
            if (!istvwarn(result) && pass)
                result = expand_condition(run, index + 1);
            run.m_chain.pop_back();
            TV_PASS_ON(result);
        }
    }
    return TVErrC_ok;
}

int TVQuery::fill_cells(TVQueryRun& run) const
{
    TVQueryResult& result = run.m_result;
    for (int row = 0; row < result.get_nids(); ++row) {
        run.m_chain.clear();
        for (const TVId& id : result.get_id_no(row)->get_ids())
            if (TVDBObject* object = run.m_db.get_object_by_id(id.get_id()))
                run.m_chain.push_back(object);
        for (int column = 0; column < result.get_nfields(); ++column) {
            const TVQueryField& field = *result.get_field_no(column);
            TVDBObject* object = run.find_in_chain(field);
            if (object == nullptr && field.names_object(db_kind()))
                object = const_cast<TVDatabase*>(&run.m_db);
            if (object == nullptr)
                return tvwarnuser(TVErrC_MissingObjectType, TVLOCATION,
                                  "Object type %s used in %s field is missing from the query.",
                                  field.get_objects().empty() ? ""
                                                              : field.get_objects()[0].c_str(),
                                  field.get_title().c_str());
            std::string value;
            int got = get_value(run.m_db, run.view(object), field, value);
            TV_PASS_ON(got);
            if (got == TVErrC_okFailed)
                continue;
            if (field.get_field_type() == TVQueryField::C_TypePart) {
                if (!field.in_part(value))
                    continue;
                if (field.shown_field() != field.get_field()) {
                    TVQueryField shown(field.get_title(), "", field.shown_field(), "");
                    got = get_value(run.m_db, run.m_view, shown, value);
                    TV_PASS_ON(got);
                    if (got == TVErrC_okFailed)
                        continue;
                }
            }
            result.set_cell(row, column, value);
        }
    }
    run.m_chain.clear();
    return TVErrC_ok;
}

int TVQuery::get_value(const TVDatabase& db, const std::vector<TVDBObject*>& chain,
                       const TVQueryCond& cond, std::string& out) const
{
    out.clear();
    const std::string& field = cond.get_field();
    const int hooked = db.query_value(chain, field, out);
    if (hooked == TVErrC_okHandled)
        return TVErrC_ok;
    if (hooked == TVErrC_okFailed)
        return hooked;
    TV_PASS_ON(hooked);
    if (field == TVQueryCondSpec::C_QuerySpec) {
        if (chain.empty())
            return tvwarning(TVErrC_InvalidValue, TVLOCATION, "Spec conditions need an Entry");
        const TVObjectSpec* spec = db.get_objectspec_by_id(chain.front()->get_spec_id());
        if (spec == nullptr)
            return tvwarning(TVDatabase::TVErrC_ObjectIdNotFound, TVLOCATION,
                             "Could not find object spec for object %d", chain.front()->get_id());
        out = spec->get_name();
        return TVErrC_ok;
    }
    if (chain.empty())
        return TVErrC_okFailed;
    TVDBObject& object = *chain.front();
    if (field == TVQueryCondId::C_QueryID) {
        out = std::to_string(object.get_id());
        return TVErrC_ok;
    }
    if (field == "*") {
        for (int i = 0; i < object.get_nvariables(); ++i)
            out += object.get_var_value(object.get_var_by_index(i, false)->get_tag(), false,
                                        false) + " ";
        return TVErrC_ok;
    }
    if (object.get_var_by_tag(field, true) != nullptr) {
        out = object.get_var_value(field, true, false);
        return TVErrC_ok;
    }
    out = object.get_sysvalue(field);
    return out.empty() ? TVErrC_okFailed : TVErrC_ok;
}

void TVQuery::export_query(std::ostream& out) const
{
    out << TVDBParser::C_ExportSpecSep << '\n'
        << TVQueryParser::C_ExportQueryStart << d->m_name << '\n'
        << d->m_text;
    if (d->m_text.empty() || d->m_text.back() != '\n')
        out << '\n';
    out << TVQueryParser::C_ExportQueryEnd << '\n';
}
