#include "LibCore/param/tvparam.h"

#include <cctype>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <vector>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverrhandlerptr.h"
#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparambase.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamerrhandler.h"
#include "LibCore/param/tvparamfile.h"
#include "LibCore/param/tvparamset.h"
#include "LibCore/log/tvdump.h"

int TVParam::TVErrC_ParamAmbiguous = tv_builtin_code("TVParam::TVErrC_ParamAmbiguous");
int TVParam::TVErrC_ParamInvalid = tv_builtin_code("TVParam::TVErrC_ParamInvalid");
int TVParam::TVErrC_ParamMissing = tv_builtin_code("TVParam::TVErrC_ParamMissing");
int TVParam::TVErrC_okNotHandled = tv_builtin_code("TVParam::TVErrC_okNotHandled");

const char* const TVParam::C_ExtraArgs = "-extra-args";


struct TVParam::TVParamImpl {
    std::string m_programName;
    std::string m_programVersion;
    std::string m_programDesc;
    std::string m_programVendor;
    std::string m_programAuthors;
    std::string m_buildDate;
    std::string m_releaseTag;
    std::string m_buildTag;
    std::string m_configFile; // the user's file, once one is added
    int m_argc = 0;
    std::vector<std::string> m_argv; // copies: the caller's array may go
    TVParamCmdLine m_cmdline;
    std::vector<std::unique_ptr<TVParamFile>> m_files;
    TVParamSet m_merged;
};

TVParam::TVParam() : d(new TVParamImpl) {}

TVParam::TVParam(int argc, char** argv, const std::string& programName, const std::string& programVersion,
                 const std::string& programDesc, const std::string& programVendor,
                 const std::string& programAuthors, const std::string& buildDate, const std::string& releaseTag,
                 const std::string& buildTag)
    : d(new TVParamImpl)
{
    d->m_programName = programName;
    d->m_programVersion = programVersion;
    d->m_programDesc = programDesc;
    d->m_programVendor = programVendor;
    d->m_programAuthors = programAuthors;
    d->m_buildDate = buildDate;
    d->m_releaseTag = releaseTag;
    d->m_buildTag = buildTag;
    d->m_argc = argv == nullptr ? 0 : argc;
    for (int i = 0; i < d->m_argc; ++i)
        d->m_argv.emplace_back(argv[i] == nullptr ? "" : argv[i]);
}

TVParam::~TVParam()
{
    if (m_object == this) {
        m_object = nullptr;
        m_manageDeletion = false;
    }
}

std::string TVParam::default_user_config(const std::string& program)
{
    const TVApplication* app = tvapplication();
    const std::string name = program.empty() ? app->get_application() : program;
    return app->get_config_dir() + "/" + name + TVParamFile::C_Extension;
}

void TVParam::set_cmdline(const TVParamCmdLine& cmdline)
{
    d->m_cmdline = cmdline;
}

void TVParam::add_config_file(const TVParamFile& file)
{
    d->m_files.push_back(std::make_unique<TVParamFile>(file));
    if (file.is_user_config() && d->m_configFile.empty())
        d->m_configFile = file.get_filename();
}

TVParamCmdLine& TVParam::get_cmdline() const { return d->m_cmdline; }
int TVParam::get_nconfig_files() const { return static_cast<int>(d->m_files.size()); }
TVParamFile& TVParam::get_config_file(int index) const { return *d->m_files.at(static_cast<size_t>(index)); }

TVParamFile* TVParam::get_user_config() const
{
    for (const auto& file : d->m_files)
        if (file->is_user_config())
            return file.get();
    return nullptr;
}

int TVParam::parse(std::ostream* out)
{
    std::ostringstream usage;
    display_usage(usage);
    // Wrong input is told to the user with the usage, and consumed, while
    // this handler is in place.
    TVErrHandlerPtr handler(new TVParamErrHandler(usage.str(), out, true, false, true, true));
    try {
        TV_PASS_ON(validate());
        TV_PASS_ON(get_all_options());
        for (const auto& file : d->m_files)
            TV_PASS_ON(file->read_file(d->m_merged));
        read_environment();

        std::vector<std::string> args;
        for (int i = 1; i < d->m_argc && d->m_argv[static_cast<size_t>(i)] != C_ExtraArgs; ++i)
            args.push_back(d->m_argv[static_cast<size_t>(i)]);
        TV_PASS_ON(d->m_cmdline.parse_cmdline(args, d->m_merged));

        d->m_merged.assign_values();
        return parse_standard(out);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVParam::validate() const
{
    try {
        TV_PASS_ON(d->m_cmdline.validate());
        for (const auto& file : d->m_files)
            TV_PASS_ON(file->validate());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

int TVParam::get_all_options()
{
    d->m_merged.clear();
    try {
        TV_PASS_ON(d->m_cmdline.get_all_options(d->m_merged));
        for (const auto& file : d->m_files)
            TV_PASS_ON(file->get_all_options(d->m_merged));
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

void TVParam::read_environment()
{
    for (int i = 0; i < d->m_merged.size(); ++i) {
        TVParamBase& param = d->m_merged.at(i);
        const std::string& variable = param.get_environment_variable();
        if (variable.empty())
            continue;
        if (const char* value = std::getenv(variable.c_str()))
            param.set_value(value, TVParamBase::C_SourceEnvironment);
    }
}

int TVParam::parse_standard(std::ostream* out) const
{
    using Display = void (TVParam::*)(std::ostream&) const;
    static const struct {
        const char* m_switch;
        Display m_display;
    } C_Standard[] = {
        {TVParamCmdLine::C_ManSwitch, &TVParam::display_manpg},
        {TVParamCmdLine::C_HelpSwitch1, &TVParam::display_usage},
        {TVParamCmdLine::C_VersionSwitch1, &TVParam::display_version},
        {TVParamCmdLine::C_TagSwitch, &TVParam::display_tag},
        {TVParamCmdLine::C_ReleaseSwitch, &TVParam::display_release},
    };
    for (const auto& standard : C_Standard) {
        const TVParamBase* param = d->m_merged.find(standard.m_switch);
        // Only the command line asks for these; a file that names one
        // mustn't stop the program at every start.
        if (param == nullptr || param->get_nvalues() == 0 ||
            param->get_latest_source() != TVParamBase::C_SourceCmdLine)
            continue;
        if (out != nullptr)
            (this->*standard.m_display)(*out);
        return TVErrC_okShutdown;
    }
    return TVErrC_ok;
}

const TVParamSet& TVParam::get_params() const { return d->m_merged; }

std::string TVParam::get_value(const std::string& name, int index) const
{
    return d->m_merged.get_value(name, index);
}

int TVParam::get_nvalues(const std::string& name) const
{
    const TVParamBase* param = d->m_merged.find(name);
    return param == nullptr ? 0 : param->get_nvalues();
}

int TVParam::set_system_value(const std::string& name, const std::string& value)
{
    TVParamFile* file = get_user_config();
    if (file == nullptr)
        return tvwarning(TVErrC_ParamMissing, TVLOCATION, "No user config file set.");
    try {
        file->adopt(name, d->m_merged)->set_single_value(value, TVParamBase::C_SourceUser);
        if (file->needs_write())
            TV_PASS_ON(file->rewrite_file());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    TVParamBase* merged = d->m_merged.find(name);
    if (merged == nullptr)
        return tvwarning(TVErrC_ParamMissing, TVLOCATION, "Could not get the system parameters.");
    merged->set_single_value(value, TVParamBase::C_SourceUser);
    return TVErrC_ok;
}

int TVParam::set_system_value(const std::string& name, const std::string& tag, const std::string& value)
{
    TVParamFile* file = get_user_config();
    if (file == nullptr)
        return tvwarning(TVErrC_ParamMissing, TVLOCATION, "No user config file set.");
    try {
        TV_PASS_ON(file->adopt(name, d->m_merged)->set_tag_value(tag, value, TVParamBase::C_SourceUser));
        if (file->needs_write())
            TV_PASS_ON(file->rewrite_file());
        TVParamBase* merged = d->m_merged.find(name);
        if (merged == nullptr)
            return tvwarning(TVErrC_ParamMissing, TVLOCATION, "Could not get the system parameters.");
        TV_PASS_ON(merged->set_tag_value(tag, value, TVParamBase::C_SourceUser));
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

std::string TVParam::get_system_value(const std::string& name) const
{
    return d->m_merged.get_value(name, 0);
}

std::string TVParam::get_system_value(const std::string& name, const std::string& tag) const
{
    const TVParamBase* param = d->m_merged.find(name);
    return param == nullptr ? std::string() : param->get_tag_value(tag);
}

std::string TVParam::copyright_line() const
{
    // The year is the last four digits in a row in the build date
    // ("02-Nov-2022"); without one the line has none.
    std::string year;
    const std::string& date = d->m_buildDate;
    for (size_t i = 0; i + 4 <= date.size(); ++i) {
        bool digits = true;
        for (size_t k = i; k < i + 4 && digits; ++k)
            digits = std::isdigit(static_cast<unsigned char>(date[k])) != 0;
        if (digits)
            year = date.substr(i, 4);
    }
    std::string line = "Copyright (c)";
    if (!year.empty())
        line += " " + year;
    if (!d->m_programVendor.empty())
        line += " " + d->m_programVendor;
    return line;
}

void TVParam::display_usage(std::ostream& out) const
{
    d->m_cmdline.display_usage(out, d->m_programName);
}

void TVParam::display_version(std::ostream& out) const
{
    out << d->m_programName;
    if (!d->m_programVersion.empty())
        out << " " << d->m_programVersion;
    out << "\n";
    out << "  Build Tag:  " << d->m_buildTag << "\n";
    out << "  Build Date: " << d->m_buildDate << "\n";
    out << copyright_line() << "\n";
    out << "Written by " << d->m_programAuthors << "\n";
}

void TVParam::display_manpg(std::ostream& out) const
{
    const std::string indent(8, ' ');
    out << "NAME\n" << indent << d->m_programName << " - " << d->m_programDesc << "\n\n";
    out << "SYNOPSIS\n";
    display_usage(out);
    out << "DESCRIPTION\n" << indent << d->m_programDesc << "\n\n";
    out << "FILES\n";
    for (const auto& file : d->m_files)
        out << "    " << file->get_filename() << "\n";
    out << "\n";
    out << "AUTHORS\n" << indent << d->m_programAuthors << "\n\n";
    out << "COPYRIGHT\n" << indent << copyright_line() << "\n";
}

void TVParam::display_tag(std::ostream& out) const
{
    out << d->m_buildTag << "\n";
}

void TVParam::display_release(std::ostream& out) const
{
    out << d->m_releaseTag << "\n";
}

const std::string& TVParam::get_program_name() const { return d->m_programName; }
const std::string& TVParam::get_program_version() const { return d->m_programVersion; }
const std::string& TVParam::get_program_desc() const { return d->m_programDesc; }
const std::string& TVParam::get_program_vendor() const { return d->m_programVendor; }
const std::string& TVParam::get_program_authors() const { return d->m_programAuthors; }
const std::string& TVParam::get_build_date() const { return d->m_buildDate; }
const std::string& TVParam::get_release_tag() const { return d->m_releaseTag; }
const std::string& TVParam::get_build_tag() const { return d->m_buildTag; }

void TVParam::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParam Object:\n";
    out << pad << " programName = " << d->m_programName << "\n";
    out << pad << " programVersion = " << d->m_programVersion << "\n";
    out << pad << " programDesc = " << d->m_programDesc << "\n";
    out << pad << " programVendor = " << d->m_programVendor << "\n";
    out << pad << " programAuthors = " << d->m_programAuthors << "\n";
    out << pad << " buildDate = " << d->m_buildDate << "\n";
    out << pad << " releaseTag = " << d->m_releaseTag << "\n";
    out << pad << " buildTag = " << d->m_buildTag << "\n";
    out << pad << " configFile = " << d->m_configFile << "\n";
    for (size_t i = 0; i < d->m_argv.size(); ++i)
        out << pad << " argv[" << i << "] = " << d->m_argv[i] << "\n";
    d->m_cmdline.dump(out, indent + 1);
    for (const auto& file : d->m_files)
        file->dump(out, indent + 1);
    d->m_merged.dump(out, indent + 1);
}

TVParam* tvparam()
{
    return TVParam::instance();
}
