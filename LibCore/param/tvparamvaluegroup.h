#ifndef TVPARAMVALUEGROUP_H
#define TVPARAMVALUEGROUP_H

// TVParamValueGroup: one way of calling the program. Its own name and
// alternative name are the mode switch ("--export"); a group without a
// name is the mode used when no switch is given. It owns its positional
// values and its option groups; a copy copies them.
//
// Command-line grammar of one group, after its switch has been taken out:
//
//   args     := { option | value }
//   option   := "-" letter [ARG] | "--" name [ARG]   (ARG when it requires one)
//   value    := any other argument, "-5" and "-" included
//
// Values fill the positional parameters in order. An optional value, and
// a multi-value one that already has an argument, take a further argument
// only while more remain than mandatory values are still open.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparamoption.h"
#include "LibCore/param/tvparamoptiongroup.h"
#include "LibCore/param/tvparamvalue.h"

class TVParamSet;

class TVParamValueGroup : public TVParamOption
{
public:
    TVParamValueGroup();
    TVParamValueGroup(const std::string& name, const std::string& altName, const std::string& description);
    TVParamValueGroup(const TVParamValueGroup& other);
    TVParamValueGroup& operator=(const TVParamValueGroup& other);
    ~TVParamValueGroup() override;

    std::unique_ptr<TVParamBase> clone() const override;
    void dump(std::ostream& out, int indent) const override;

    // Both take the object over and give it back for further set-up.
    TVParamValue& add_value(std::unique_ptr<TVParamValue> value);
    TVParamOptionGroup& add_option_group(std::unique_ptr<TVParamOptionGroup> group);
    TVParamOptionGroup& add_option_group(const std::string& name, const std::string& description);

    int get_npositional() const { return static_cast<int>(m_values.size()); }
    TVParamValue& get_positional(int index) const { return *m_values.at(static_cast<size_t>(index)); }
    int get_noption_groups() const { return static_cast<int>(m_optionGroups.size()); }
    TVParamOptionGroup& get_option_group(int index) const { return *m_optionGroups.at(static_cast<size_t>(index)); }
    // The option of that name or alternative name in any option group, or null.
    TVParamOption* find_option(const std::string& name) const;

    // Lends the group's values and options to set; names already there are
    // left as they are.
    void collect(TVParamSet& set) const;

    // Declaration faults are errors (TVErrC_ParamAmbiguous).
    [[nodiscard]] int validate() const;

    // Takes args from the front until none are left, storing each value in
    // this group's own parameters and in merged. Wrong input is a user
    // warning (TVErrC_ParamInvalid), which stops the parse.
    [[nodiscard]] int parse_cmdline(std::vector<std::string>& args, TVParamSet& merged);

    // The usage line (program, switch, option groups, values), the
    // description, the values' details and the option groups.
    void display_usage(std::ostream& out, const std::string& program) const;

private:
    // How many of args from first on are values rather than options or
    // the arguments of options.
    int count_values(const std::vector<std::string>& args, size_t first) const;

    std::vector<std::unique_ptr<TVParamValue>> m_values;
    std::vector<std::unique_ptr<TVParamOptionGroup>> m_optionGroups;
};

#endif // TVPARAMVALUEGROUP_H
