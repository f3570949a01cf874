#ifndef TVQUERYCOND_H
#define TVQUERYCOND_H

// TVQueryCond: one condition of a query (TVQuery): which kinds of object it
// looks at, which value of them it tests, and how. The kinds are names of
// object classes, kept in lower case ("go", "exercise"), or "db" for the
// database itself; "Go+Session" in a query's text names two kinds, and the
// condition takes an object of either. Qualifiers are the tag=value pairs
// of the statement that wrote the condition, the ones it doesn't use
// itself included, so a later reader can still find them.
//
// The test is evaluate(value, db), on the value's text as get_value gave
// it; a condition never reports, it answers false for what it can't read.
//
// Serial form: "object", "field", "qualifier" (each "tag=value"), then
// TVObject's under "TVObject"; each kind adds its own keys before those,
// and nests the base under "TVQueryCond".

#include "LibObject/object/tvobject.h"
#include "LibDate/core/tvdate.h"

#include <iosfwd>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

class TVDatabase;

class TVQueryCond : public TVObject
{
public:
    static constexpr char C_QualifierSep = '=';
    // The qualifiers that a date field reads: the dates that bound the
    // field's range and the format of its dates.
    static const char* const C_QualStart;  // "Start"
    static const char* const C_QualEnd;    // "End"
    static const char* const C_QualFormat; // "Format"

    TVQueryCond() = default;
    // objects: kinds joined by "+"; qualifiers: "tag=value" joined by ",".
    TVQueryCond(const std::string& objects, const std::string& field,
                const std::string& qualifiers);

    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    // Whether value passes; db is for the tests that look at specs.
    virtual bool evaluate(const std::string& value, const TVDatabase& db) const = 0;

    const std::vector<std::string>& get_objects() const { return m_objects; }
    // One of the kinds is name (any case).
    bool names_object(const std::string& name) const;
    const std::string& get_field() const { return m_field; }
    // Splits at "="; a part with an empty tag is passed over.
    void add_qualifier(const std::string& text);
    // "" when there is no such qualifier.
    std::string get_qualifier(const std::string& tag) const;
    const std::vector<std::string>& get_qualifier_list() const { return m_qualifierList; }

protected:
    // The lookups follow the list; the list is what is stored.
    void rebuild_qualifiers();

    std::vector<std::string> m_objects;
    std::string m_field;
    std::map<std::string, std::string> m_qualifiers;
    std::vector<std::string> m_qualifierList;
};

// A number read by atof against a minimum, a maximum or both; epsilon
// widens each bound (the parser gives 0).
class TVQueryCondNum : public TVQueryCond
{
public:
    enum E_CondType { E_None = 0, E_Minimum = 1, E_Maximum = 2, E_Range = 3, E_Equal = 4,
                      E_NotEqual = 5 };

    TVQueryCondNum();
    TVQueryCondNum(const std::string& objects, const std::string& field,
                   const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

    void set_minimum(double minimum);
    void set_maximum(double maximum);
    void set_range(double minimum, double maximum);
    void set_equal(double value);
    void set_notequal(double value);
    void set_epsilon(double epsilon) { m_epsilon = epsilon; }
    int get_condition_type() const { return m_conditionType; }

private:
    int m_conditionType = E_None;
    double m_minimum = 0;
    double m_maximum = 0;
    double m_epsilon = 0;
};

// A date expression (TVDateUtils::read_date) not before (min) or not
// after the condition's date. A value or date that won't read fails.
class TVQueryCondDate : public TVQueryCond
{
public:
    TVQueryCondDate();
    // date is a date expression, read now (so "today" is the day of the parse).
    TVQueryCondDate(const std::string& objects, const std::string& field,
                    const std::string& date, bool min, const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;
    const TVDate& get_date() const { return m_date; }

private:
    TVDate m_date;
    bool m_min = true;
};

// An object id; -1 passes everything.
class TVQueryCondId : public TVQueryCond
{
public:
    static const char* const C_QueryID; // "ID"

    TVQueryCondId();
    TVQueryCondId(const std::string& objects, int id, const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    int m_id = -1;
};

// A regular expression found anywhere in the value (ECMAScript syntax);
// an expression that doesn't compile matches nothing.
class TVQueryCondRegex : public TVQueryCond
{
public:
    TVQueryCondRegex();
    TVQueryCondRegex(const std::string& objects, const std::string& field,
                     const std::string& regex, const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;
    static bool match_regex(const std::string& regex, const std::string& value);

private:
    std::string m_text;
    // Compiled at the first test: a run tests every object of a kind, and
    // compiling is far dearer than matching. Null when it doesn't compile.
    mutable std::shared_ptr<const std::regex> m_compiled;
    mutable bool m_compileTried = false;
};

// The object's spec is this one or derives from it; with the qualifier
// "Exact" set, only the spec of this very name.
class TVQueryCondSpec : public TVQueryCond
{
public:
    static const char* const C_QuerySpec; // "ObjectSpec"
    static const char* const C_QualExact; // "Exact"

    TVQueryCondSpec();
    TVQueryCondSpec(const std::string& objects, const std::string& spec,
                    const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    std::string m_spec;
};

// The value is exactly this text.
class TVQueryCondText : public TVQueryCond
{
public:
    TVQueryCondText();
    TVQueryCondText(const std::string& objects, const std::string& field, const std::string& text,
                    const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    std::string m_text;
};

#endif // TVQUERYCOND_H
