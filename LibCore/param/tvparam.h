#ifndef TVPARAM_H
#define TVPARAM_H

// TVParam: all the program was told from outside (command line,
// configuration files, environment), as named parameters with lists of
// values. One per process, reached by tvparam().
//
// Set-up: construct with argc/argv and the program's identity, declare the
// command line and the files, hand copies over (set_cmdline,
// add_config_file), then parse(). Afterwards read values by name; the
// variables bound at declaration have been filled.
//
// Precedence: the files in the order they were added, then the environment,
// then the command line. Whichever source names a parameter last replaces
// what earlier ones gave.
//
// Wrong input on the command line or in a file is reported during parse()
// as "Error: <text>", an empty line and the usage text on the output
// stream, and the parse goes on: a program started by the system with
// arguments it doesn't know still runs.
//
// System values are the program's own small settings kept in the user's
// configuration file (is_user_config): set_system_value stores and rewrites
// the file at once; get_system_value reads back.
//
// Main thread only.

#include <iosfwd>
#include <memory>
#include <string>

#include "LibCore/application/tvsingleton.h"

class TVParamBase;
class TVParamCmdLine;
class TVParamFile;
class TVParamSet;

class TVParam : public TVSingleton<TVParam>
{
public:
    static int TVErrC_ParamAmbiguous;
    static int TVErrC_ParamInvalid;
    static int TVErrC_ParamMissing;
    static int TVErrC_okNotHandled;

    // Arguments from this one on are left for someone else.
    static const char* const C_ExtraArgs; // "-extra-args"

    TVParam();
    TVParam(int argc, char** argv, const std::string& programName, const std::string& programVersion,
            const std::string& programDesc, const std::string& programVendor, const std::string& programAuthors,
            const std::string& buildDate, const std::string& releaseTag, const std::string& buildTag);
    TVParam(const TVParam&) = delete;
    TVParam& operator=(const TVParam&) = delete;
    virtual ~TVParam();

    virtual void dump(std::ostream& out, int indent) const;

    // <config dir>/<program>.cfg; an empty program means the application's
    // name.
    static std::string default_user_config(const std::string& program = std::string());

    // Both keep a copy; declare everything before handing it over.
    void set_cmdline(const TVParamCmdLine& cmdline);
    void add_config_file(const TVParamFile& file);
    TVParamCmdLine& get_cmdline() const;
    int get_nconfig_files() const;
    TVParamFile& get_config_file(int index) const;
    // The first file marked as the user's own, or null.
    TVParamFile* get_user_config() const;

    // Reads every source into the merged set and fills the bound variables.
    // Gives TVErrC_okShutdown after writing the man page, usage, version,
    // tag or release to out (the first of those asked for), which means
    // "stop with success"; otherwise TVErrC_ok. out may be null.
    [[nodiscard]] int parse(std::ostream* out);
    // The steps of parse, for callers that need them one by one.
    [[nodiscard]] int validate() const;
    [[nodiscard]] int get_all_options();
    void read_environment();
    [[nodiscard]] int parse_standard(std::ostream* out) const;

    // The merged parameters, as the sources left them.
    const TVParamSet& get_params() const;
    // The value at index of that parameter; "" if either is missing.
    std::string get_value(const std::string& name, int index = 0) const;
    int get_nvalues(const std::string& name) const;

    // Stores a value in the user's file (rewritten at once if it changed)
    // and in the merged set, with the source "User". The plain form leaves
    // exactly this value; the tag form replaces the entry of that tag. With
    // no user file: the warning TVErrC_ParamMissing.
    [[nodiscard]] int set_system_value(const std::string& name, const std::string& value);
    [[nodiscard]] int set_system_value(const std::string& name, const std::string& tag, const std::string& value);
    // The first value, or the one of that tag; "" when there is none.
    std::string get_system_value(const std::string& name) const;
    std::string get_system_value(const std::string& name, const std::string& tag) const;

    // The standard outputs.
    void display_usage(std::ostream& out) const;
    void display_version(std::ostream& out) const;
    void display_manpg(std::ostream& out) const;
    void display_tag(std::ostream& out) const;
    void display_release(std::ostream& out) const;

    const std::string& get_program_name() const;
    const std::string& get_program_version() const;
    const std::string& get_program_desc() const;
    const std::string& get_program_vendor() const;
    const std::string& get_program_authors() const;
    const std::string& get_build_date() const;
    const std::string& get_release_tag() const;
    const std::string& get_build_tag() const;

private:
    std::string copyright_line() const;

    struct TVParamImpl;
    std::unique_ptr<TVParamImpl> d;
};

// The singleton; made empty on first use if nobody installed one.
TVParam* tvparam();

#endif // TVPARAM_H
