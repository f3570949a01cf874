#ifndef TVPARAMVALUE_H
#define TVPARAMVALUE_H

// TVParamValue: a positional value of the command line, such as the name
// of the file to open. A value group fills its values in the order they
// were added. The bound variable, if any, must outlive the parameter.

#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparambase.h"

class TVParamValue : public TVParamBase
{
public:
    TVParamValue();
    TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                 bool multipleValues = false);
    TVParamValue(const std::string& name, const std::string& description, bool mandatory, std::string* variable);
    TVParamValue(const std::string& name, const std::string& description, bool mandatory, int* variable);
    TVParamValue(const std::string& name, const std::string& description, bool mandatory, long* variable);
    TVParamValue(const std::string& name, const std::string& description, bool mandatory, double* variable);
    // Takes every argument it can: a multi-value parameter.
    TVParamValue(const std::string& name, const std::string& description, bool mandatory,
                 std::vector<std::string>* variable);
    TVParamValue(const TVParamValue& other);
    TVParamValue& operator=(const TVParamValue& other);
    ~TVParamValue() override;

    std::unique_ptr<TVParamBase> clone() const override;
    void dump(std::ostream& out, int indent) const override;

    // The form in the usage line: "name", "[name]", "name..." or "[name...]".
    std::string get_usage() const;
};

#endif // TVPARAMVALUE_H
