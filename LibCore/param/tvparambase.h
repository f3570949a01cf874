#ifndef TVPARAMBASE_H
#define TVPARAMBASE_H

// TVParamBase: one named piece of what the program was told from outside,
// with its list of values and the source that set them.
//
// Sources are plain strings: a configuration file's name, C_SourceUser for
// values the program stores itself, C_SourceEnvironment, and the empty
// C_SourceCmdLine. A source that sets a parameter wipes the values of the
// source before it; only a multi-value parameter collects several values,
// and only from one source. So the order in which TVParam reads the sources
// (files, environment, command line) is the rule of precedence.
//
// A parameter may be bound to a variable of the caller; assign_values()
// writes the values there. The variable must outlive every copy of the
// parameter (TVParam keeps copies until it is destroyed).
//
// Main thread only.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class TVParamBase
{
public:
    // Column at which descriptions start in the usage text.
    static const int C_NameSpacing = 25;
    // Between name and value in the file, and between tag and value.
    static const char* const C_TagValueSeparator;

    static const char* const C_SourceCmdLine;     // ""
    static const char* const C_SourceEnvironment; // "Environment"
    static const char* const C_SourceUser;        // "User"

    // The kinds of variable assign_values can fill.
    enum E_VarType { E_VarNone, E_VarString, E_VarInt, E_VarLong, E_VarDouble, E_VarBool, E_VarStringList };

    TVParamBase();
    TVParamBase(const std::string& name, const std::string& description, bool mandatory, bool multipleValues);
    TVParamBase(const TVParamBase& other);
    TVParamBase& operator=(const TVParamBase& other);
    virtual ~TVParamBase();

    // A copy of the same kind, values and binding included.
    virtual std::unique_ptr<TVParamBase> clone() const;
    virtual void dump(std::ostream& out, int indent) const;
    void set_defaults(bool constructing);

    // Same declaration and same values; the binding isn't compared.
    bool operator==(const TVParamBase& other) const;
    bool operator!=(const TVParamBase& other) const { return !(*this == other); }

    const std::string& get_name() const;
    const std::string& get_description() const;
    bool is_mandatory() const;
    bool allow_multiple() const;
    // Hidden parameters stay out of usage texts.
    bool get_hidden() const;
    void set_hidden(bool hidden);

    int get_nvalues() const;
    // The value at index, or the empty string when there is none.
    const std::string& get_value(int index = 0) const;
    const std::vector<std::string>& get_values() const;
    const std::string& get_latest_source() const;

    // Appends for a multi-value parameter set by the same source again;
    // otherwise the value replaces all that were there.
    void set_value(const std::string& value, const std::string& source);
    // Leaves exactly this one value, whatever the parameter allows.
    void set_single_value(const std::string& value, const std::string& source);
    void clear_values();

    // A tagged value is stored as tag, C_TagValueSeparator, value; setting a
    // tag again replaces that entry alone. Only multi-value parameters hold
    // tags; on any other it is a programming error (TVErrC_ParamInvalid).
    [[nodiscard]] int set_tag_value(const std::string& tag, const std::string& value,
                                    const std::string& source = C_SourceUser);
    // The value stored under tag, or the empty string.
    std::string get_tag_value(const std::string& tag) const;

    // The environment variable that may give this parameter a value.
    void set_environment_variable(const std::string& name);
    const std::string& get_environment_variable() const;

    // Writes the values into the bound variable. Without values the
    // variable keeps what it held, so callers set their defaults first.
    void assign_values() const;
    bool is_bound() const;
    bool same_binding(const TVParamBase& other) const;
    // Takes the other's variable (get_all_options merges declarations).
    void copy_binding(const TVParamBase& other);

    // One line per value: name, "=", value.
    void write_values(std::ostream& out) const;

    // Every change of the values takes a new number from one process-wide
    // counter; a reader remembers the number it has seen.
    bool modified_since(long count) const;
    long get_update_count() const;
    static long current_update_count();

    // A line of the usage text: left padded to C_NameSpacing (at least one
    // blank) and the description behind it.
    static std::string usage_line(const std::string& left, const std::string& description);

protected:
    void bind(std::string* variable);
    void bind(int* variable);
    void bind(long* variable);
    void bind(double* variable);
    void bind(bool* variable);
    void bind(std::vector<std::string>* variable);
    E_VarType get_var_type() const;
    void dump_base(std::ostream& out, int indent) const;

private:
    void changed();

    struct Private;
    std::unique_ptr<Private> d;
};

std::ostream& operator<<(std::ostream& out, const TVParamBase& param);

#endif // TVPARAMBASE_H
