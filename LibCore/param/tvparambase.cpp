#include "LibCore/param/tvparambase.h"

#include <algorithm>
#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

const char* const TVParamBase::C_TagValueSeparator = "=";
const char* const TVParamBase::C_SourceCmdLine = "";
const char* const TVParamBase::C_SourceEnvironment = "Environment";
const char* const TVParamBase::C_SourceUser = "User";

namespace {

// The process-wide clock behind modified_since; 0 means "never changed".
long s_updateCounter = 0;

const std::string C_Empty;

// Config files are written by people: "true" and "yes" mean what they say.
bool text_to_bool(const std::string& text)
{
    const std::string lower = tv_tolower(text);
    if (lower.empty() || lower == "true" || lower == "yes" || lower == "on")
        return true;
    return tv_string_to_bool(lower, false);
}

// Whether stored is tag, separator, value.
bool has_tag(const std::string& stored, const std::string& tag)
{
    const std::string prefix = tag + TVParamBase::C_TagValueSeparator;
    return stored.compare(0, prefix.size(), prefix) == 0;
}

} // namespace

struct TVParamBase::Private {
    std::string m_name;
    std::string m_description;
    std::string m_latestSource;
    std::string m_environment;
    bool m_multipleValues = false;
    bool m_mandatory = false;
    bool m_hidden = false;
    std::vector<std::string> m_values;
    long m_updateCount = 0;
    E_VarType m_varType = E_VarNone;
    void* m_setOptionValue = nullptr; // points at a variable of m_varType
};

TVParamBase::TVParamBase() : d(new Private)
{
    set_defaults(true);
}

TVParamBase::TVParamBase(const std::string& name, const std::string& description, bool mandatory,
                         bool multipleValues)
    : d(new Private)
{
    set_defaults(true);
    d->m_name = name;
    d->m_description = description;
    d->m_mandatory = mandatory;
    d->m_multipleValues = multipleValues;
}

TVParamBase::TVParamBase(const TVParamBase& other) : d(new Private(*other.d)) {}

TVParamBase& TVParamBase::operator=(const TVParamBase& other)
{
    if (this != &other)
        *d = *other.d;
    return *this;
}

TVParamBase::~TVParamBase() = default;

std::unique_ptr<TVParamBase> TVParamBase::clone() const
{
    return std::make_unique<TVParamBase>(*this);
}

void TVParamBase::set_defaults(bool /*constructing*/)
{
    *d = Private();
}

bool TVParamBase::operator==(const TVParamBase& other) const
{
    return d->m_name == other.d->m_name && d->m_description == other.d->m_description &&
           d->m_multipleValues == other.d->m_multipleValues && d->m_mandatory == other.d->m_mandatory &&
           d->m_hidden == other.d->m_hidden && d->m_environment == other.d->m_environment &&
           d->m_latestSource == other.d->m_latestSource && d->m_values == other.d->m_values;
}

const std::string& TVParamBase::get_name() const { return d->m_name; }
const std::string& TVParamBase::get_description() const { return d->m_description; }
bool TVParamBase::is_mandatory() const { return d->m_mandatory; }
bool TVParamBase::allow_multiple() const { return d->m_multipleValues; }
bool TVParamBase::get_hidden() const { return d->m_hidden; }
void TVParamBase::set_hidden(bool hidden) { d->m_hidden = hidden; }
int TVParamBase::get_nvalues() const { return static_cast<int>(d->m_values.size()); }
const std::vector<std::string>& TVParamBase::get_values() const { return d->m_values; }
const std::string& TVParamBase::get_latest_source() const { return d->m_latestSource; }
const std::string& TVParamBase::get_environment_variable() const { return d->m_environment; }
void TVParamBase::set_environment_variable(const std::string& name) { d->m_environment = name; }
long TVParamBase::get_update_count() const { return d->m_updateCount; }
bool TVParamBase::modified_since(long count) const { return d->m_updateCount > count; }
long TVParamBase::current_update_count() { return s_updateCounter; }

const std::string& TVParamBase::get_value(int index) const
{
    if (index < 0 || index >= get_nvalues())
        return C_Empty;
    return d->m_values[static_cast<size_t>(index)];
}

void TVParamBase::changed()
{
    d->m_updateCount = ++s_updateCounter;
}

void TVParamBase::set_value(const std::string& value, const std::string& source)
{
    const bool append = d->m_multipleValues && source == d->m_latestSource && !d->m_values.empty();
    d->m_latestSource = source;
    if (append) {
        d->m_values.push_back(value);
        changed();
        return;
    }
    // Setting what is already there isn't a change: a rewrite of the file
    // would gain nothing.
    if (d->m_values.size() == 1 && d->m_values[0] == value)
        return;
    d->m_values.assign(1, value);
    changed();
}

void TVParamBase::set_single_value(const std::string& value, const std::string& source)
{
    d->m_latestSource = source;
    if (d->m_values.size() == 1 && d->m_values[0] == value)
        return;
    d->m_values.assign(1, value);
    changed();
}

void TVParamBase::clear_values()
{
    if (d->m_values.empty())
        return;
    d->m_values.clear();
    changed();
}

int TVParamBase::set_tag_value(const std::string& tag, const std::string& value, const std::string& source)
{
    if (!d->m_multipleValues)
        return tverror(TVParam::TVErrC_ParamInvalid, TVLOCATION,
                       "Attempting to set tag %s, value %s on single value param %s.", tag.c_str(),
                       value.c_str(), d->m_name.c_str());
    const std::string stored = tag + C_TagValueSeparator + value;
    d->m_latestSource = source;
    for (size_t i = 0; i < d->m_values.size(); ++i) {
        if (has_tag(d->m_values[i], tag)) {
            if (d->m_values[i] != stored) {
                d->m_values[i] = stored;
                changed();
            }
            return TVErrC_ok;
        }
    }
    d->m_values.push_back(stored);
    changed();
    return TVErrC_ok;
}

std::string TVParamBase::get_tag_value(const std::string& tag) const
{
    for (const std::string& stored : d->m_values)
        if (has_tag(stored, tag))
            return stored.substr(tag.size() + std::string(C_TagValueSeparator).size());
    return std::string();
}

void TVParamBase::bind(std::string* variable) { d->m_varType = E_VarString; d->m_setOptionValue = variable; }
void TVParamBase::bind(int* variable) { d->m_varType = E_VarInt; d->m_setOptionValue = variable; }
void TVParamBase::bind(long* variable) { d->m_varType = E_VarLong; d->m_setOptionValue = variable; }
void TVParamBase::bind(double* variable) { d->m_varType = E_VarDouble; d->m_setOptionValue = variable; }
void TVParamBase::bind(bool* variable) { d->m_varType = E_VarBool; d->m_setOptionValue = variable; }

void TVParamBase::bind(std::vector<std::string>* variable)
{
    d->m_varType = E_VarStringList;
    d->m_setOptionValue = variable;
}

TVParamBase::E_VarType TVParamBase::get_var_type() const { return d->m_varType; }

bool TVParamBase::is_bound() const
{
    return d->m_varType != E_VarNone && d->m_setOptionValue != nullptr;
}

bool TVParamBase::same_binding(const TVParamBase& other) const
{
    return d->m_varType == other.d->m_varType && d->m_setOptionValue == other.d->m_setOptionValue;
}

void TVParamBase::copy_binding(const TVParamBase& other)
{
    d->m_varType = other.d->m_varType;
    d->m_setOptionValue = other.d->m_setOptionValue;
}

void TVParamBase::assign_values() const
{
    if (!is_bound() || d->m_values.empty())
        return;
    const std::string& first = d->m_values.front();
    void* target = d->m_setOptionValue;
    switch (d->m_varType) {
    case E_VarString:
        *static_cast<std::string*>(target) = first;
        break;
    case E_VarInt:
        *static_cast<int*>(target) = tv_string_to_int(first);
        break;
    case E_VarLong:
        *static_cast<long*>(target) = tv_string_to_long(first);
        break;
    case E_VarDouble:
        *static_cast<double*>(target) = tv_string_to_double(first);
        break;
    case E_VarBool:
        // A bare switch stores the empty value: its presence means true.
        *static_cast<bool*>(target) = text_to_bool(first);
        break;
    case E_VarStringList:
        *static_cast<std::vector<std::string>*>(target) = d->m_values;
        break;
    case E_VarNone:
        break;
    }
}

void TVParamBase::write_values(std::ostream& out) const
{
    for (const std::string& value : d->m_values)
        out << d->m_name << C_TagValueSeparator << value << "\n";
}

std::string TVParamBase::usage_line(const std::string& left, const std::string& description)
{
    std::string line = left;
    line.resize(std::max(line.size() + 1, static_cast<size_t>(C_NameSpacing)), ' ');
    return line + description;
}

void TVParamBase::dump_base(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << " name = " << d->m_name << "\n";
    out << pad << " description = " << d->m_description << "\n";
    out << pad << " latestSource = " << d->m_latestSource << "\n";
    out << pad << " multipleValues = " << d->m_multipleValues << "\n";
    out << pad << " mandatory = " << d->m_mandatory << "\n";
    out << pad << " hidden = " << d->m_hidden << "\n";
    if (!d->m_environment.empty())
        out << pad << " environment = " << d->m_environment << "\n";
    out << pad << " updateCount = " << d->m_updateCount << "\n";
    for (size_t i = 0; i < d->m_values.size(); ++i)
        out << pad << " value[" << i << "] = " << d->m_values[i] << "\n";
}

void TVParamBase::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamBase Object:\n";
    dump_base(out, indent);
}

std::ostream& operator<<(std::ostream& out, const TVParamBase& param)
{
    param.dump(out, 0);
    return out;
}
