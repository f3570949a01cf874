#ifndef TVDBEXPRESSION_H
#define TVDBEXPRESSION_H

// The evaluation of "$=(...)" in a variable's text: the one place where
// the variable layer meets the script engine.
//
// expression is the text between "$=(" and its matching ")", with every
// reference already replaced, so it is constant. index is its number in
// the variable's text, so that the variable can keep one result per
// expression and evaluate again only when the text changed. variable is
// the variable whose text it is; null for a text of no variable.
//
// result receives the value as text (a script error's own text is a
// result, not a failure). The return is TVErrC_ok, or a warning when no
// result could be had at all.

#include <string>

class TVVariable;

[[nodiscard]] int tv_evaluate_expression(TVVariable* variable, const std::string& expression,
                                         int index, std::string& result);

#endif // TVDBEXPRESSION_H
