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
// The kinds of test, each in its own files: TVQueryCondNum, TVQueryCondDate,
// TVQueryCondId, TVQueryCondRegex, TVQueryCondSpec, TVQueryCondText; and
// TVQueryField, a column, which tests nothing.
//
// Serial form: "object", "field", "qualifier" (each "tag=value"), then
// TVObject's under "TVObject"; each kind adds its own keys before those,
// and nests the base under "TVQueryCond".

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <map>
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

#endif // TVQUERYCOND_H
