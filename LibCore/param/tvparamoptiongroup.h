#ifndef TVPARAMOPTIONGROUP_H
#define TVPARAMOPTIONGROUP_H

// TVParamOptionGroup: a titled list of options, shown together in the
// usage text as "  <name> options:". The group owns its options; a copy
// copies them.

#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparambase.h"
#include "LibCore/param/tvparamoption.h"

class TVParamOptionGroup : public TVParamBase
{
public:
    TVParamOptionGroup();
    TVParamOptionGroup(const std::string& name, const std::string& description);
    TVParamOptionGroup(const TVParamOptionGroup& other);
    TVParamOptionGroup& operator=(const TVParamOptionGroup& other);
    ~TVParamOptionGroup() override;

    std::unique_ptr<TVParamBase> clone() const override;
    void dump(std::ostream& out, int indent) const override;

    // Takes the option over; gives it back for further set-up.
    TVParamOption& add_option(std::unique_ptr<TVParamOption> option);
    int get_noptions() const { return static_cast<int>(m_options.size()); }
    TVParamOption& get_option(int index) const { return *m_options.at(static_cast<size_t>(index)); }
    // The option of that name or alternative name, or null.
    TVParamOption* find_option(const std::string& name) const;

    // "  <name> options:" and one line per visible option.
    void display_usage(std::ostream& out) const;

private:
    std::vector<std::unique_ptr<TVParamOption>> m_options;
};

#endif // TVPARAMOPTIONGROUP_H
