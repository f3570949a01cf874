#ifndef TVPARAMOPTION_H
#define TVPARAMOPTION_H

// TVParamOption: a switch of the command line, "-x" for a one-letter name
// and "--name" for a longer one, with an optional second name. A switch
// either stands alone (its value is then the empty string) or takes the
// next argument as its value.
//
// The constructors that take a variable bind it: assign_values() fills it
// after parsing. A bool variable makes a switch that stands alone; the
// other kinds require a value; a vector collects every value given.

#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparambase.h"

class TVParamOption : public TVParamBase
{
public:
    TVParamOption();
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  bool requiresValue, bool mandatory = false, bool multipleValues = false);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  bool* variable);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  std::string* variable, bool mandatory = false);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  int* variable, bool mandatory = false);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  long* variable, bool mandatory = false);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  double* variable, bool mandatory = false);
    TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                  std::vector<std::string>* variable, bool mandatory = false);
    TVParamOption(const TVParamOption& other);
    TVParamOption& operator=(const TVParamOption& other);
    ~TVParamOption() override;

    std::unique_ptr<TVParamBase> clone() const override;
    void dump(std::ostream& out, int indent) const override;

    const std::string& get_alt_name() const { return m_altName; }
    bool requires_value() const { return m_requiresValue; }

    // "-x" for a one-letter name, "--name" otherwise.
    static std::string switch_form(const std::string& name);
    // Whether arg, as a whole, is the switch form of either name.
    bool match_cmdline(const std::string& arg) const;
    // Whether name is either name (as extract_option gives it).
    bool match_name(const std::string& name) const;
    // The forms joined by "|", with " ARG" behind when withValue is asked
    // and the option requires a value: "-o|--output ARG".
    std::string get_switch(bool withValue) const;

protected:
    void dump_option(std::ostream& out, int indent) const;

private:
    std::string m_altName;
    bool m_requiresValue;
};

#endif // TVPARAMOPTION_H
