#include "LibCore/param/tvparamvaluegroup.h"

#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamset.h"
#include "LibCore/log/tvdump.h"

TVParamValueGroup::TVParamValueGroup() = default;

TVParamValueGroup::TVParamValueGroup(const std::string& name, const std::string& altName,
                                     const std::string& description)
    : TVParamOption(name, altName, description, false)
{
}

TVParamValueGroup::TVParamValueGroup(const TVParamValueGroup& other) : TVParamOption(other)
{
    for (const auto& value : other.m_values)
        m_values.push_back(std::make_unique<TVParamValue>(*value));
    for (const auto& group : other.m_optionGroups)
        m_optionGroups.push_back(std::make_unique<TVParamOptionGroup>(*group));
}

TVParamValueGroup& TVParamValueGroup::operator=(const TVParamValueGroup& other)
{
    if (this != &other) {
        TVParamValueGroup copy(other);
        TVParamOption::operator=(other);
        m_values = std::move(copy.m_values);
        m_optionGroups = std::move(copy.m_optionGroups);
    }
    return *this;
}

TVParamValueGroup::~TVParamValueGroup() = default;

std::unique_ptr<TVParamBase> TVParamValueGroup::clone() const
{
    return std::make_unique<TVParamValueGroup>(*this);
}

TVParamValue& TVParamValueGroup::add_value(std::unique_ptr<TVParamValue> value)
{
    m_values.push_back(std::move(value));
    return *m_values.back();
}

TVParamOptionGroup& TVParamValueGroup::add_option_group(std::unique_ptr<TVParamOptionGroup> group)
{
    m_optionGroups.push_back(std::move(group));
    return *m_optionGroups.back();
}

TVParamOptionGroup& TVParamValueGroup::add_option_group(const std::string& name, const std::string& description)
{
    return add_option_group(std::make_unique<TVParamOptionGroup>(name, description));
}

TVParamOption* TVParamValueGroup::find_option(const std::string& name) const
{
    for (const auto& group : m_optionGroups)
        if (TVParamOption* option = group->find_option(name))
            return option;
    return nullptr;
}

void TVParamValueGroup::collect(TVParamSet& set) const
{
    for (const auto& value : m_values)
        set.add(value.get());
    for (const auto& group : m_optionGroups)
        for (int i = 0; i < group->get_noptions(); ++i)
            set.add(&group->get_option(i));
}

int TVParamValueGroup::validate() const
{
    int optional = 0;
    for (const auto& value : m_values)
        if (!value->is_mandatory())
            ++optional;
    // Two optional values would leave no rule for which one an argument fills.
    if (optional > 1)
        return tverror(TVParam::TVErrC_ParamAmbiguous, TVLOCATION, "Greater than 1 optional values.");
    return TVErrC_ok;
}

int TVParamValueGroup::count_values(const std::vector<std::string>& args, size_t first) const
{
    int count = 0;
    for (size_t i = first; i < args.size(); ++i) {
        const std::string name = TVParamCmdLine::extract_option(args[i]);
        if (name.empty()) {
            ++count;
        } else {
            const TVParamOption* option = find_option(name);
            if (option != nullptr && option->requires_value())
                ++i;
        }
    }
    return count;
}

int TVParamValueGroup::parse_cmdline(std::vector<std::string>& args, TVParamSet& merged)
{
    const std::string source = C_SourceCmdLine;
    for (const auto& value : m_values)
        value->clear_values();
    for (const auto& group : m_optionGroups)
        for (int i = 0; i < group->get_noptions(); ++i)
            group->get_option(i).clear_values();

    const size_t nvalues = m_values.size();
    std::vector<int> taken(nvalues, 0);
    // Mandatory values after index that have no argument yet.
    auto open_after = [&](size_t index) {
        int open = 0;
        for (size_t i = index + 1; i < nvalues; ++i)
            if (m_values[i]->is_mandatory() && taken[i] == 0)
                ++open;
        return open;
    };

    size_t next = 0; // the value the next argument goes to
    while (!args.empty()) {
        const std::string arg = args.front();
        const std::string name = TVParamCmdLine::extract_option(arg);
        if (!name.empty()) {
            TVParamOption* option = find_option(name);
            if (option == nullptr)
                return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Invalid option %s", arg.c_str());
            args.erase(args.begin());
            std::string value;
            if (option->requires_value()) {
                if (args.empty())
                    return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Option %s requires a value",
                                      arg.c_str());
                value = args.front();
                args.erase(args.begin());
            }
            option->set_value(value, source);
            merged.set_value(option->get_name(), value, source);
            continue;
        }

        // A value: skip those that may not take it while arguments are
        // still needed by the mandatory values behind them.
        const int left = count_values(args, 0);
        while (next < nvalues) {
            const TVParamValue& value = *m_values[next];
            const bool filled = taken[next] > 0 && !value.allow_multiple();
            const bool mayWait = taken[next] > 0 || !value.is_mandatory();
            if (filled || (mayWait && left <= open_after(next)))
                ++next;
            else
                break;
        }
        if (next >= nvalues)
            return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Too many parameters (starting from %s).",
                              arg.c_str());
        TVParamValue& value = *m_values[next];
        args.erase(args.begin());
        value.set_value(arg, source);
        merged.set_value(value.get_name(), arg, source);
        ++taken[next];
    }

    for (size_t i = 0; i < nvalues; ++i)
        if (m_values[i]->is_mandatory() && taken[i] == 0)
            return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Too few parameters (missing %s).",
                              m_values[i]->get_name().c_str());

    // A mandatory option may also have its value from a file or the
    // environment, so the merged set decides.
    for (const auto& group : m_optionGroups) {
        for (int i = 0; i < group->get_noptions(); ++i) {
            const TVParamOption& option = group->get_option(i);
            if (!option.is_mandatory() || !option.requires_value())
                continue;
            const TVParamBase* known = merged.find(option.get_name());
            const int count = known != nullptr ? known->get_nvalues() : option.get_nvalues();
            if (count == 0)
                return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION,
                                  "The %s option must have a value supplied",
                                  option.get_switch(false).c_str());
        }
    }
    return TVErrC_ok;
}

void TVParamValueGroup::display_usage(std::ostream& out, const std::string& program) const
{
    std::string line = program;
    auto append = [&line](const std::string& part) {
        if (part.empty())
            return;
        line += (line.empty() ? "" : " ") + part;
    };
    append(get_switch(false));
    for (const auto& group : m_optionGroups)
        append("(" + group->get_name() + " options)");
    for (const auto& value : m_values)
        if (!value->get_hidden())
            append(value->get_usage());
    out << line << "\n";
    if (!get_description().empty())
        out << "    " << get_description() << "\n";
    for (const auto& value : m_values)
        if (!value->get_hidden() && !value->get_description().empty())
            out << usage_line("    " + value->get_name(), value->get_description()) << "\n";
    for (const auto& group : m_optionGroups)
        group->display_usage(out);
}

void TVParamValueGroup::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamValueGroup Object:\n";
    dump_option(out, indent);
    for (const auto& value : m_values)
        value->dump(out, indent + 1);
    for (const auto& group : m_optionGroups)
        group->dump(out, indent + 1);
}
