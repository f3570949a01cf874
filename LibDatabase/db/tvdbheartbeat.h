#ifndef TVDBHEARTBEAT_H
#define TVDBHEARTBEAT_H

// TVDBHeartbeat: the decisions of a database window's periodic update,
// apart from any toolkit. The window reads its timers and state into the
// inputs, asks, and does what the answer says; a test asks with a table.
//
// The update keeps its work out of the user's way: it waits while an
// object is being edited or the window is minimised, until it is overdue
// (C_MaxWaitSeconds since the last one); it holds back while the user is
// interacting if the window asked it to; a full recalculation waits for a
// quiet user and for the detail period, and never races a sync; saving
// waits for a quiet user and never races a sync either.

#include "LibDatabase/db/tvdatabase.h"

class TVDBHeartbeat
{
public:
    // An update is overdue after this long without one.
    static constexpr long C_MaxWaitSeconds = 600;

    struct Gate {
        bool loaded = true;
        bool paused = false;      // the window or the program stopped updates
        bool updating = false;    // an update is under way (a nested loop)
        bool overdue = false;     // see is_overdue
        bool interacting = false; // the user did something in the last seconds
        bool uiPause = false;     // the window holds updates while the user acts
        bool edited = false;      // an object is open for editing
        bool minimised = false;
    };
    struct GateAnswer {
        bool run = false;
        // The user's pause ends with the interaction that asked for it.
        bool clearUiPause = false;
    };
    // Whether an update runs now.
    static GateAnswer gate(const Gate& in);

    struct Pass {
        bool detailRunning = false; // a full pass ran within the detail period
        bool interacting = false;
        bool detailDue = false;     // a full pass was asked for or held back
        bool syncing = false;       // a pull replaced or merged this time
    };
    struct Plan {
        TVDatabase::E_RecalcLevel level = TVDatabase::E_RecalcAll;
        bool full = false;          // a full pass: start the detail period
        bool detailDue = false;     // the new value of the window's flag
        bool autosave = false;      // save if anything needs it
        bool verify = false;        // that save verifies (a full pass's)
        bool repeatSoon = false;    // update again in a second, not a period
    };
    // What an update that runs does.
    static Plan plan(const Pass& in);

    // No update yet (last invalid), or more than C_MaxWaitSeconds since it.
    static bool is_overdue(const TVDate& last, const TVDate& now);
};

#endif // TVDBHEARTBEAT_H
