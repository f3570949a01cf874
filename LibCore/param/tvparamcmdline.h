#ifndef TVPARAMCMDLINE_H
#define TVPARAMCMDLINE_H

// TVParamCmdLine: the ways of calling the program (value groups) and the
// set of parameters they declare. It owns its groups; a copy copies them,
// with their bound variables, which is how TVParam keeps the declarations
// after the caller's object is gone.
//
// A group with an empty name is the mode without a switch; there may be
// one at most (validate). The standard switches are value groups of their
// own, added by add_help_options and add_version_options.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparamset.h"
#include "LibCore/param/tvparamvaluegroup.h"

class TVParamCmdLine
{
public:
    static const char* const C_HelpSwitch1;    // "h"
    static const char* const C_HelpSwitch2;    // "help"
    static const char* const C_ManSwitch;      // "man"
    static const char* const C_VersionSwitch1; // "v"
    static const char* const C_VersionSwitch2; // "version"
    static const char* const C_TagSwitch;      // "tag"
    static const char* const C_ReleaseSwitch;  // "release"

    static const char* const C_HelpText;    // "Display this help page."
    static const char* const C_ManText;     // "Output the program options in man-page format."
    static const char* const C_VersionText; // "Output the program version information."
    static const char* const C_TagText;     // "Show the executable tag version."
    static const char* const C_ReleaseText; // "Show the executable release version."

    TVParamCmdLine();
    TVParamCmdLine(const TVParamCmdLine& other);
    TVParamCmdLine& operator=(const TVParamCmdLine& other);
    virtual ~TVParamCmdLine();

    virtual void dump(std::ostream& out, int indent) const;

    // Takes the group over and gives it back for further set-up.
    TVParamValueGroup& add_value_group(std::unique_ptr<TVParamValueGroup> group);
    TVParamValueGroup& add_value_group(const std::string& name, const std::string& altName,
                                       const std::string& description);
    // "-h|--help" and "--man".
    void add_help_options();
    // "-v|--version", "--tag" and "--release".
    void add_version_options();

    int get_ngroups() const { return static_cast<int>(m_groups.size()); }
    TVParamValueGroup& get_group(int index) const { return *m_groups.at(static_cast<size_t>(index)); }

    // The values and options of all groups, by name; the first declaration
    // of a name is the one indexed. Rebuilt on every call, so it sees what
    // was added since; the reference stays valid until the next call.
    const TVParamSet& get_params() const;

    // Declaration faults of all groups are errors (TVErrC_ParamAmbiguous).
    [[nodiscard]] int validate() const;

    // Adds to merged a copy of every switch, value and option not yet there
    // (values stripped, bindings kept). A name met again keeps its first
    // declaration, taking the later one's variable if it had none; two
    // different variables under one name are ambiguous.
    [[nodiscard]] int get_all_options(TVParamSet& merged) const;

    // The argument equal to a group's switch picks that group (and leaves
    // args); without one the group without a name is picked. The group's
    // name is stored in merged with an empty value; the group parses the
    // rest. Wrong input is a user warning (TVErrC_ParamInvalid).
    [[nodiscard]] int parse_cmdline(std::vector<std::string>& args, TVParamSet& merged);

    // The usage of every visible group, each followed by an empty line.
    void display_usage(std::ostream& out, const std::string& program) const;

    // Which option an argument names: for "--name" the name, for "-x" the
    // letter; the whole argument when that can't be an option's name ("--x",
    // "-xy"), so that it matches nothing; "" for a plain value ("-5", "-",
    // "file").
    static std::string extract_option(const std::string& arg);

protected:
    // Adds the parameters this object declares beyond its groups.
    virtual void collect_extra(TVParamSet& set) const;

private:
    std::vector<std::unique_ptr<TVParamValueGroup>> m_groups;
    mutable TVParamSet m_params;
};

#endif // TVPARAMCMDLINE_H
