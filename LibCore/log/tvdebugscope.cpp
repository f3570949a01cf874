#include "LibCore/log/tvdebugscope.h"

TVDebugScope::TVDebugScope(const char* function, bool quiet, bool skipIfIdle, bool enabled)
    : m_entered(false)
{
    if (function != nullptr && enabled)
        m_entered = tvdebug()->enter_function(function, quiet, skipIfIdle);
}

TVDebugScope::~TVDebugScope()
{
    if (m_entered)
        tvdebug()->leave_function();
}
