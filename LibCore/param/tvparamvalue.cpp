#include "LibCore/param/tvparamvalue.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

TVParamValue::TVParamValue() = default;

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                           bool multipleValues)
    : TVParamBase(name, description, mandatory, multipleValues)
{
}

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                           std::string* variable)
    : TVParamBase(name, description, mandatory, false)
{
    bind(variable);
}

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory, int* variable)
    : TVParamBase(name, description, mandatory, false)
{
    bind(variable);
}

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory, long* variable)
    : TVParamBase(name, description, mandatory, false)
{
    bind(variable);
}

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                           double* variable)
    : TVParamBase(name, description, mandatory, false)
{
    bind(variable);
}

TVParamValue::TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                           std::vector<std::string>* variable)
    : TVParamBase(name, description, mandatory, true)
{
    bind(variable);
}

TVParamValue::TVParamValue(const TVParamValue& other) = default;
TVParamValue& TVParamValue::operator=(const TVParamValue& other) = default;
TVParamValue::~TVParamValue() = default;

std::unique_ptr<TVParamBase> TVParamValue::clone() const
{
    return std::make_unique<TVParamValue>(*this);
}

std::string TVParamValue::get_usage() const
{
    std::string usage = get_name();
    if (allow_multiple())
        usage += "...";
    return is_mandatory() ? usage : "[" + usage + "]";
}

void TVParamValue::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamValue Object:\n";
    dump_base(out, indent);
}
