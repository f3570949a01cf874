#ifndef TVREPEATCONFIG_H
#define TVREPEATCONFIG_H

// TVRepeatConfig: what date expressions and repeat rules need to know
// beyond their own text: the user's work-day sets, and the capability that
// rules made for an owner take (TVDateRepeat::initialise).
//
// Work-day sets. A set is a choice of weekdays, a bit per weekday (bit 0
// Sunday, as TVDateDetails::m_dayWeek counts), with an id and a name; the
// ids and names are the rows of a TVIdString, in the order the sets were
// added. Set C_DefaultSet, named C_DefaultName and Monday to Friday at
// first, always exists: its days may change, but it can't be renamed or
// removed. The user's sets take ids from 1 up, never handed out twice by
// one configuration, so a rule that names a removed set falls back to the
// default set rather than meeting a stranger.
//
// Names are one word of ASCII letters, because the date language reads the
// tag of "WorkDayFor TAG" as one word, and unique ignoring case, because
// the parser reads words upper-cased.
//
// Tags. T_WorkDay and T_Fixed name a set by its name (the tag); the empty
// tag, and a tag that no set has, mean the default set.
//
// Serial form, class name "TVRepeatConfig":
//   {TVRepeatConfig
//   !w!id days name     ; one line per set, in order, the default first
//   !n!id               ; the id the next new set takes, when above 1
//   !c!capability       ; when not 0
//   }
// A line that doesn't read is a warning; the table then stays as it was.
//
// Not thread-safe, like every TVObject.

#include <iosfwd>
#include <memory>
#include <string>

#include "LibCore/ptrarray/tvidstring.h"
#include "LibObject/object/tvobject.h"

class TVDateDetails;

class TVRepeatConfig : public TVObject
{
public:
    static constexpr int C_DefaultSet = 0;
    static constexpr const char* C_DefaultName = "work";
    static constexpr int C_MondayToFriday = 0x3e;
    static constexpr int C_AllDays = 0x7f;

    TVRepeatConfig();
    TVRepeatConfig(const TVRepeatConfig& other);
    TVRepeatConfig& operator=(const TVRepeatConfig& other);
    ~TVRepeatConfig() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    // The default set alone, Monday to Friday; capability 0.
    void set_defaults(bool constructing);

    bool operator==(const TVRepeatConfig& other) const;
    bool operator!=(const TVRepeatConfig& other) const { return !(*this == other); }

    // ---- Work-day sets -------------------------------------------------------

    // Ids and names, for a combo box; the default set is the first row.
    const TVIdString& get_worksets() const;
    // A new set; its id in id. A warning (TVErrC_InvalidValue), and nothing
    // added, for a name that isn't one word of letters or is taken, or for
    // no days at all.
    [[nodiscard]] int add_workset(const std::string& name, int days, int& id);
    // The default set may change its days too. A warning for an unknown id
    // or no days.
    [[nodiscard]] int set_workset_days(int id, int days);
    // A warning for an unknown id or the default set.
    [[nodiscard]] int remove_workset(int id);
    // The days of a set; -1 for an unknown id.
    int get_workset_days(int id) const;
    // The set a tag names, C_DefaultSet for "" and for unknown tags.
    int find_workset(const std::string& tag) const;
    // The tag that names set id in an expression: "" for the default set
    // and for unknown ids (both mean the default), else the name.
    std::string get_workset_tag(int id) const;
    // The set's name for the user: C_DefaultName for the default set and
    // for unknown ids.
    std::string get_workset_name(int id) const;

    // Whether the day of details (recalculated by the caller) is a work day
    // of the set tag names.
    bool is_workday(const TVDateDetails& details, const std::string& tag) const;

    // ---- Rules made for the owner of this configuration -------------------

    // TVDateRepeat::encode_capability's value.
    int get_capability() const;
    void set_capability(int capability);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

#endif // TVREPEATCONFIG_H
