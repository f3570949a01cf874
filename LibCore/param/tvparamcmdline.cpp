#include "LibCore/param/tvparamcmdline.h"

#include <cctype>
#include <cstddef>
#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/log/tvdump.h"

const char* const TVParamCmdLine::C_HelpSwitch1 = "h";
const char* const TVParamCmdLine::C_HelpSwitch2 = "help";
const char* const TVParamCmdLine::C_ManSwitch = "man";
const char* const TVParamCmdLine::C_VersionSwitch1 = "v";
const char* const TVParamCmdLine::C_VersionSwitch2 = "version";
const char* const TVParamCmdLine::C_TagSwitch = "tag";
const char* const TVParamCmdLine::C_ReleaseSwitch = "release";

const char* const TVParamCmdLine::C_HelpText = "Display this help page.";
const char* const TVParamCmdLine::C_ManText = "Output the program options in man-page format.";
const char* const TVParamCmdLine::C_VersionText = "Output the program version information.";
const char* const TVParamCmdLine::C_TagText = "Show the executable tag version.";
const char* const TVParamCmdLine::C_ReleaseText = "Show the executable release version.";

TVParamCmdLine::TVParamCmdLine() = default;

TVParamCmdLine::TVParamCmdLine(const TVParamCmdLine& other)
{
    for (const auto& group : other.m_groups)
        m_groups.push_back(std::make_unique<TVParamValueGroup>(*group));
}

TVParamCmdLine& TVParamCmdLine::operator=(const TVParamCmdLine& other)
{
    if (this != &other) {
        m_params.clear();
        m_groups.clear();
        for (const auto& group : other.m_groups)
            m_groups.push_back(std::make_unique<TVParamValueGroup>(*group));
    }
    return *this;
}

TVParamCmdLine::~TVParamCmdLine() = default;

TVParamValueGroup& TVParamCmdLine::add_value_group(std::unique_ptr<TVParamValueGroup> group)
{
    m_groups.push_back(std::move(group));
    return *m_groups.back();
}

TVParamValueGroup& TVParamCmdLine::add_value_group(const std::string& name, const std::string& altName,
                                                   const std::string& description)
{
    return add_value_group(std::make_unique<TVParamValueGroup>(name, altName, description));
}

void TVParamCmdLine::add_help_options()
{
    add_value_group(C_HelpSwitch1, C_HelpSwitch2, C_HelpText);
    add_value_group(C_ManSwitch, "", C_ManText);
}

void TVParamCmdLine::add_version_options()
{
    add_value_group(C_VersionSwitch1, C_VersionSwitch2, C_VersionText);
    add_value_group(C_TagSwitch, "", C_TagText);
    add_value_group(C_ReleaseSwitch, "", C_ReleaseText);
}

const TVParamSet& TVParamCmdLine::get_params() const
{
    m_params.clear();
    for (const auto& group : m_groups)
        group->collect(m_params);
    collect_extra(m_params);
    return m_params;
}

void TVParamCmdLine::collect_extra(TVParamSet& /*set*/) const {}

int TVParamCmdLine::validate() const
{
    int unflagged = 0;
    for (const auto& group : m_groups)
        if (group->get_switch(false).empty())
            ++unflagged;
    // Without a switch to tell them apart, arguments can't pick between two.
    if (unflagged > 1)
        return tverror(TVParam::TVErrC_ParamAmbiguous, TVLOCATION, "Greater than 1 un-flagged value group");
    for (const auto& group : m_groups) {
        try {
            const int result = group->validate();
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        } catch (const TVErrDetails&) {
            tv_trail_throw(TVLOCATION);
        }
    }
    return TVErrC_ok;
}

int TVParamCmdLine::get_all_options(TVParamSet& merged) const
{
    for (const auto& group : m_groups)
        if (!group->get_name().empty() && merged.find(group->get_name()) == nullptr)
            merged.adopt(std::make_unique<TVParamOption>(group->get_name(), group->get_alt_name(),
                                                         group->get_description(), false));

    // Every declaration, not the name index: a name declared twice must be
    // seen twice.
    std::vector<const TVParamBase*> declared;
    for (const auto& group : m_groups) {
        for (int i = 0; i < group->get_npositional(); ++i)
            declared.push_back(&group->get_positional(i));
        for (int i = 0; i < group->get_noption_groups(); ++i)
            for (int k = 0; k < group->get_option_group(i).get_noptions(); ++k)
                declared.push_back(&group->get_option_group(i).get_option(k));
    }
    TVParamSet extra;
    collect_extra(extra);
    for (int i = 0; i < extra.size(); ++i)
        declared.push_back(&extra.at(i));

    for (const TVParamBase* entry : declared) {
        const TVParamBase& param = *entry;
        TVParamBase* known = merged.find(param.get_name());
        if (known == nullptr) {
            std::unique_ptr<TVParamBase> copy = param.clone();
            copy->clear_values();
            merged.adopt(std::move(copy));
        } else if (!known->is_bound()) {
            known->copy_binding(param);
        } else if (param.is_bound() && !known->same_binding(param)) {
            return tverror(TVParam::TVErrC_ParamAmbiguous, TVLOCATION,
                           "Parameter %s is bound to two different variables.", param.get_name().c_str());
        }
    }
    return TVErrC_ok;
}

int TVParamCmdLine::parse_cmdline(std::vector<std::string>& args, TVParamSet& merged)
{
    TVParamValueGroup* picked = nullptr;
    for (size_t i = 0; i < args.size() && picked == nullptr; ++i) {
        for (const auto& group : m_groups) {
            if (group->match_cmdline(args[i])) {
                picked = group.get();
                args.erase(args.begin() + static_cast<std::ptrdiff_t>(i));
                break;
            }
        }
    }
    if (picked == nullptr)
        for (const auto& group : m_groups)
            if (group->get_switch(false).empty()) {
                picked = group.get();
                break;
            }
    if (picked == nullptr) {
        if (m_groups.empty() && args.empty())
            return TVErrC_ok;
        std::string text = "Invalid commandline - Please specify one of:\n";
        for (const auto& group : m_groups)
            text += "    " + group->get_switch(false) + "\n";
        return tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "%s", text.c_str());
    }

    if (!picked->get_name().empty()) {
        picked->set_value("", TVParamBase::C_SourceCmdLine);
        merged.set_value(picked->get_name(), "", TVParamBase::C_SourceCmdLine);
    }
    try {
        const int result = picked->parse_cmdline(args, merged);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVParamCmdLine::display_usage(std::ostream& out, const std::string& program) const
{
    for (const auto& group : m_groups) {
        if (group->get_hidden())
            continue;
        group->display_usage(out, program);
        out << "\n";
    }
}

std::string TVParamCmdLine::extract_option(const std::string& arg)
{
    if (arg.size() >= 2 && arg[0] == '-' && arg[1] == '-')
        return arg.size() == 3 ? arg : arg.substr(2);
    if (arg.size() >= 2 && arg[0] == '-' && !std::isdigit(static_cast<unsigned char>(arg[1])))
        return arg.size() == 2 ? arg.substr(1) : arg;
    return std::string();
}

void TVParamCmdLine::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamCmdLine Object:\n";
    out << pad << " groups = " << m_groups.size() << "\n";
    for (const auto& group : m_groups)
        group->dump(out, indent + 1);
}
