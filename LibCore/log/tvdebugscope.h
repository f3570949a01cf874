#ifndef TVDEBUGSCOPE_H
#define TVDEBUGSCOPE_H

// TVDebugScope: traces the function it stands at the head of, from its
// construction to the end of the scope, however the scope is left: a
// return, or an exception passing through.
//
//   void TVThing::recalculate()
//   {
//       TVDEBUG_FUNCTION(C_TraceRecalc);
//       ...
//   }
//
// Only a scope that entered a frame leaves one, so a disabled or skipped
// scope never closes the frame of its caller.

#include "LibCore/log/tvdebug.h"

class TVDebugScope
{
public:
    // Enters function if it isn't null and enabled is set; quiet and
    // skipIfIdle go to TVDebug::enter_function.
    TVDebugScope(const char* function, bool quiet, bool skipIfIdle, bool enabled);
    TVDebugScope(const TVDebugScope&) = delete;
    TVDebugScope& operator=(const TVDebugScope&) = delete;
    ~TVDebugScope();

    bool is_entered() const { return m_entered; }

private:
    bool m_entered;
};

// Traces the enclosing function under its own name when enabled holds.
#define TVDEBUG_FUNCTION(enabled) TVDebugScope tvDebugScope_(__func__, false, false, (enabled))

#endif // TVDEBUGSCOPE_H
