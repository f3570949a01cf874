#include "LibDatabase/qt/tvdbunloadqt.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/qt/tvdbflow_p.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"

#include <QTimer>

using tvslotcall::call;
using tvdbflow::label;

const char* const TVDBUnloadQt::C_Discard = "Discard";

TVDBUnloadQt::TVDBUnloadQt(TVDatabase& db, TVDBManagerQt* manager, bool wait_for_sync)
    : TVWidgetQt(manager), m_db(db), m_manager(manager), m_waitForSync(wait_for_sync)
{
    setObjectName("TVDBUnloadQt");
    setWindowTitle("Unloading");
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet("QWidget#TVDBUnloadQt\n{\n  background: white;\n  border: 2px solid green;\n"
                  "  border-radius: 8px;\n}");
    hide();
}

TVDBUnloadQt::~TVDBUnloadQt() = default;

void TVDBUnloadQt::step1()
{
    if (!m_db.is_loaded()) {
        if (m_manager != nullptr)
            m_manager->unlock();
        end(&TVDBUnloadQt::unload_complete);
        return;
    }
    const bool needs_save = m_manager != nullptr ? m_manager->needs_save()
                                                 : m_db.changed_since_full_write();
    if (!needs_save) {
        step2();
        return;
    }
    if (m_db.get_autosave()) {
        if (stopped(call([&] { return m_db.save(true, true, true); })))
            return;
        step2();
        return;
    }
    const std::string file = m_db.get_filename();
    const std::string answer =
        TVMessageBoxQt::start(this, "Save", file + " has changes and needs to be saved.",
                              TVMessageBox::C_Save, C_Discard, TVMessageBox::C_Cancel);
    if (answer == label(TVMessageBox::C_Save)) {
        repaint();
        if (stopped(call([&] { return m_db.save(true, true, true); })))
            return;
    } else if (answer == C_Discard) {
        // The log and base belong to the partial file: they go with it, or
        // the next load would find them and call them leftovers.
        if (stopped(call([&] {
                TV_PASS_ON(m_db.remove_partial(file));
                return m_db.clean_intermediate(false, true);
            })))
            return;
    } else {
        end(&TVDBUnloadQt::unload_cancelled);
        return;
    }
    step2();
}

void TVDBUnloadQt::step2()
{
    if (!m_db.is_syncing() && !m_db.needs_push()) {
        step3();
        return;
    }
    if (m_waitForSync) {
        QTimer::singleShot(C_SyncWaitMs, this, &TVDBUnloadQt::step2);
        return;
    }
    const std::string answer = TVMessageBoxQt::start(
        this, "Sync In Progess", m_db.get_filename() + " is being synced. Do you still want to quit?",
        TVMessageBox::C_Yes, TVMessageBox::C_No);
    if (answer == label(TVMessageBox::C_Yes))
        step3();
    else
        end(&TVDBUnloadQt::unload_cancelled);
}

void TVDBUnloadQt::step3()
{
    if (stopped(call([&] { return m_db.unload(); })))
        return;
    if (m_manager != nullptr)
        m_manager->unlock();
    end(&TVDBUnloadQt::unload_complete);
}

bool TVDBUnloadQt::stopped(int value)
{
    if (!tvslotcall::stopped(value))
        return false;
    end(&TVDBUnloadQt::unload_failed);
    return true;
}

void TVDBUnloadQt::end(void (TVDBUnloadQt::*signal)())
{
    if (m_finished)
        return;
    m_finished = true;
    hide();
    deleteLater();
    emit(this->*signal)();
}
