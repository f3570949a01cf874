#ifndef TVDATEEXP_H
#define TVDATEEXP_H

// TVDateExp: a date expression, a flat list of TVDateExpTerm run in order
// over a broken-down base date. TVDateParser makes them from text
// ("Tomorrow 3pm", "+1 Week", "(Mon|Thu) 9:00"); the repeat rules build
// them term by term.
//
// Choices. T_Open, T_Or and T_Close bracket alternatives. A choice takes
// the first alternative, in the order written, whose result lies after the
// date reached so far: "the nearest of these that lies ahead". If none
// does, the date stays as it was.
//
// Restarts. A term may answer TVErrC_okNotFinished (T_Fixed on a day that
// isn't a work day); the list then runs again from the date reached, as
// long as that date lies after the start, at most C_MaxRestarts times in
// all for one evaluation, nested choices included. Choices nested deeper
// than C_MaxChoiceDepth leave the date as it was. So every evaluation ends.
//
// A plain value; evaluation reads now() and the locale.

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateexpterm.h"

class TVDateDetails;
class TVRepeatConfig;

class TVDateExp
{
public:
    static constexpr int C_MaxRestarts = 1000;
    static constexpr int C_MaxChoiceDepth = 64;

    TVDateExp();
    virtual ~TVDateExp() = default;

    TVDateExp(const TVDateExp&) = default;
    TVDateExp& operator=(const TVDateExp&) = default;

    void set_defaults(bool init = true);

    void add_term(TVDateExpTerm::E_Type type, int value = 0, const std::string& tag = std::string());
    // A T_Relative also becomes the expression's relative tag.
    void add_term(const TVDateExpTerm& term);
    // Appends all terms of other.
    void add_exp(const TVDateExp& other);

    int size() const { return static_cast<int>(m_terms.size()); }
    const std::vector<TVDateExpTerm>& get_terms() const { return m_terms; }
    // The tag of the last T_Relative added, "" if none.
    const std::string& get_relative() const { return m_relative; }

    bool operator==(const TVDateExp& other) const;
    bool operator!=(const TVDateExp& other) const { return !(*this == other); }

    // Runs all terms over base, broken down in its own zone; a base that is
    // blank or invalid stands for now() in the default zone. config may be
    // null. The blank date if a term fails.
    TVDate apply(const TVDate& base, const TVRepeatConfig* config) const;
    // Runs terms first up to (not including) last over a copy of details.
    TVDate evaluate(const TVDateDetails& details, const TVRepeatConfig* config, int first,
                    int last) const;

    // The terms' texts joined, each in the context of its neighbours; the
    // text parses back to an expression with the same effect for the terms
    // the parser makes.
    std::string to_string() const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    struct Run;

    TVDate evaluate(TVDateDetails& work, int first, int last, Run& run) const;
    // Gives TVErrC_ok, TVErrC_okNotFinished, or a failure.
    int run_terms(TVDateDetails& work, int first, int last, Run& run) const;
    // Position of the T_Close that ends the choice opened at open (last if
    // none), and the ranges of its non-empty alternatives.
    int collect_choice(int open, int last, std::vector<std::pair<int, int>>& alternatives) const;

    std::vector<TVDateExpTerm> m_terms;
    std::string m_relative;
};

std::ostream& operator<<(std::ostream& out, const TVDateExp& exp);

#endif // TVDATEEXP_H
