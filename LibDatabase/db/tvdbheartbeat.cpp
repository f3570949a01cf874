#include "LibDatabase/db/tvdbheartbeat.h"

TVDBHeartbeat::GateAnswer TVDBHeartbeat::gate(const Gate& in)
{
    GateAnswer answer;
    if (in.paused || in.updating || !in.loaded)
        return answer;
    if (in.interacting && in.uiPause)
        return answer;
    answer.clearUiPause = !in.interacting;
    if ((in.edited || in.minimised) && !in.overdue)
        return answer;
    answer.run = true;
    return answer;
}

TVDBHeartbeat::Plan TVDBHeartbeat::plan(const Pass& in)
{
    Plan plan;
    plan.detailDue = in.detailDue;
    if ((!in.detailRunning && !in.interacting) || in.detailDue) {
        if (in.syncing) {
            plan.detailDue = true;
        } else {
            plan.level = TVDatabase::E_RecalcChanged;
            plan.full = true;
            plan.detailDue = false;
        }
    }
    plan.autosave = !in.interacting && !in.syncing;
    plan.verify = plan.full;
    plan.repeatSoon = in.syncing;
    return plan;
}

bool TVDBHeartbeat::is_overdue(const TVDate& last, const TVDate& now)
{
    return !last.is_ok() || now.get_time_t() - last.get_time_t() > C_MaxWaitSeconds;
}
