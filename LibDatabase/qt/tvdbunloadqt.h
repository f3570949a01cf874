#ifndef TVDBUNLOADQT_H
#define TVDBUNLOADQT_H

// TVDBUnloadQt: closes the database of a manager's window, asking first
// when changes would be lost or a sync is under way. step1 starts it; it
// ends with one of its three signals and then deletes itself.
//
// With wait_for_sync a sync in progress is waited out (step 2 again each
// second) instead of asked about. The database and the manager must
// outlive the flow. Main thread only.

#include "LibGui/qt/tvwidgetqt.h"

#include <string>

class TVDatabase;
class TVDBManagerQt;

class TVDBUnloadQt : public TVWidgetQt
{
    Q_OBJECT

public:
    static const char* const C_Discard; // "Discard"
    static constexpr int C_SyncWaitMs = 1000;

    TVDBUnloadQt(TVDatabase& db, TVDBManagerQt* manager, bool wait_for_sync);
    ~TVDBUnloadQt() override;

signals:
    void unload_complete();
    void unload_cancelled();
    void unload_failed();

public slots:
    // Saves or drops the changes, asking unless autosave is on.
    void step1();
    // Waits for or asks about a sync under way.
    void step2();
    // Unloads and unlocks.
    void step3();

private:
    // tvslotcall::stopped, and a stop ends the flow (unload_failed).
    bool stopped(int value);
    void end(void (TVDBUnloadQt::*signal)());

    TVDatabase& m_db;
    TVDBManagerQt* m_manager;
    bool m_waitForSync;
    bool m_finished = false;
};

#endif // TVDBUNLOADQT_H
