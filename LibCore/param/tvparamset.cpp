#include "LibCore/param/tvparamset.h"

#include <ostream>

#include "LibCore/param/tvparambase.h"
#include "LibCore/log/tvdump.h"

TVParamSet::TVParamSet() = default;
TVParamSet::~TVParamSet() = default;

bool TVParamSet::add(TVParamBase* param)
{
    if (param == nullptr || m_byName.count(param->get_name()) != 0)
        return false;
    m_byName[param->get_name()] = param;
    m_order.push_back(param);
    return true;
}

TVParamBase* TVParamSet::adopt(std::unique_ptr<TVParamBase> param)
{
    if (!add(param.get()))
        return nullptr;
    m_owned.push_back(std::move(param));
    return m_owned.back().get();
}

void TVParamSet::clear()
{
    m_order.clear();
    m_byName.clear();
    m_owned.clear();
}

TVParamBase* TVParamSet::find(const std::string& name) const
{
    auto it = m_byName.find(name);
    return it == m_byName.end() ? nullptr : it->second;
}

bool TVParamSet::set_value(const std::string& name, const std::string& value, const std::string& source)
{
    TVParamBase* param = find(name);
    if (param == nullptr)
        return false;
    param->set_value(value, source);
    return true;
}

std::string TVParamSet::get_value(const std::string& name, int index) const
{
    const TVParamBase* param = find(name);
    return param == nullptr ? std::string() : param->get_value(index);
}

void TVParamSet::clear_values()
{
    for (TVParamBase* param : m_order)
        param->clear_values();
}

void TVParamSet::assign_values() const
{
    for (const TVParamBase* param : m_order)
        param->assign_values();
}

bool TVParamSet::modified_since(long count) const
{
    for (const TVParamBase* param : m_order)
        if (param->modified_since(count))
            return true;
    return false;
}

void TVParamSet::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamSet Object:\n";
    out << pad << " entries = " << m_order.size() << " (owned " << m_owned.size() << ")\n";
    for (const TVParamBase* param : m_order)
        param->dump(out, indent + 1);
}
