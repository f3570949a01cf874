#include "LibDatabase/db/tvdbexpression.h"

#include "LibDatabase/db/tvdatabase.h"

// Without the script engine an expression has no value: say so, rather
// than hand back a text that looks like one.
int tv_evaluate_expression(TVVariable*, const std::string& expression, int, std::string& result)
{
    result.clear();
    return tvwarnuser(TVDatabase::TVErrC_NotAvailable, TVLOCATION,
                      "The expression \"%s\" can't be worked out: expressions are not available "
                      "in this version.",
                      expression.c_str());
}
