#ifndef TVSLOTCALL_H
#define TVSLOTCALL_H

// How a slot or a flow step runs the fallible calls of its chain. Under
// the default error action an error throws, and nothing may leave a slot
// through the toolkit; call() turns whatever a call raised into its error
// value. stopped() ends the chain the way every window does: the error
// dialog at warning severity, and the user's choice to stop, which the
// caller obeys by returning.
//
// Main thread only, as the dialog is.
//
//     using tvslotcall::call;
//     using tvslotcall::stopped;
//     if (stopped(call([&] { return db.update(); })))
//         return;

#include "LibCore/error/tverror.h"

namespace tvslotcall {

// f() gives an error value; an error it threw comes back as that value,
// still on the error stack for tvhandle_error to show.
template <class F>
int call(F&& f)
{
    try {
        return f();
    } catch (const TVErrDetails&) {
        return tverrorvalue();
    }
}

// tvhandle_error(value, TVSevWarning), which shows any pending error and
// clears the stack; true when the user chose to stop (the dialog's 2 or
// more), false for a plain outcome or a warning the user let pass.
bool stopped(int value);

} // namespace tvslotcall

#endif // TVSLOTCALL_H
