#ifndef TVQUERYCONDREGEX_H
#define TVQUERYCONDREGEX_H

// A regular expression found anywhere in the value (Perl's syntax, as
// QRegularExpression reads it); an expression that doesn't compile
// matches nothing. Not std::regex: its matcher recurses once per
// character and overflows the stack on a long value.
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"

#include <QRegularExpression>

#include <memory>
#include <string>

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
    mutable std::shared_ptr<const QRegularExpression> m_compiled;
    mutable bool m_compileTried = false;
};

#endif // TVQUERYCONDREGEX_H
