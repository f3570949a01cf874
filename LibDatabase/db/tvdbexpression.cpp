#include "LibDatabase/db/tvdbexpression.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbscriptcache.h"
#include "LibDatabase/db/tvvariable.h"

#include <QCoreApplication>

int tv_evaluate_expression(TVVariable* variable, const std::string& expression, int index,
                           std::string& result)
{
    result.clear();
    // The engine needs an application object; without one there is no
    // value, and a text that looks like one would be worse.
    if (QCoreApplication::instance() == nullptr)
        return tvwarnuser(TVDatabase::TVErrC_NotAvailable, TVLOCATION,
                          "The expression \"%s\" can't be worked out before the program has "
                          "started.",
                          expression.c_str());
    if (variable != nullptr) {
        result = variable->script_cache().evaluate(expression, index);
    } else {
        TVDBScriptCache once;
        result = once.evaluate(expression, index);
    }
    return TVErrC_ok;
}
