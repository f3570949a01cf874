#ifndef TVWEBSERVICE_H
#define TVWEBSERVICE_H

// TVWebService: keeps a local folder (the mirror) equal to a remote store,
// file by file. It knows nothing of what the files hold: whoever writes a
// file into the folder has it uploaded, and what appears remotely is
// downloaded into the folder.
//
// One update scans the folder (new and changed files are to be uploaded,
// files gone from the disk are dropped from the list, never from the
// remote side), uploads what needs it, and asks the remote side for its
// list (remote_start), whose answer marks files to be downloaded;
// downloads run one at a time, each finished one starting the next
// (remote_complete).
//
// Polling: start() runs an update and arms the timer at C_MinInterval;
// each timeout runs an update and arms it again at one and a half times
// its interval, up to C_MaxInterval; a download brings it back to
// C_MinInterval. The base's push, pull and remote_start do nothing; a
// subclass talks to the remote side. Main thread only, in the event loop.

#include "LibComms/web/tvwebfile.h"
#include "LibCore/error/tverrorbase.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDate/core/tvdate.h"

#include <QObject>
#include <QTimer>

#include <iosfwd>
#include <string>

class TVWebService : public QObject, public TVErrorBase
{
    Q_OBJECT

public:
    static constexpr int C_MinInterval = 10000; // ms
    static constexpr int C_MaxInterval = 120000;

    TVWebService();
    ~TVWebService() override;
    TVWebService(const TVWebService&) = delete;
    TVWebService& operator=(const TVWebService&) = delete;

    // The folder to mirror, and when it was last in step with the remote
    // side (blank or zero: never); files newer than that are uploaded.
    void initialise(const std::string& folder, const TVDate& last_sync);
    [[nodiscard]] virtual int start();
    // Stops polling, after one last update.
    [[nodiscard]] virtual int stop();
    // An update as soon as the event loop gets to it, when polling.
    void wake_up();
    [[nodiscard]] virtual int update();
    [[nodiscard]] int scan();
    // Starts the next download, if a file waits for one.
    [[nodiscard]] int remote_complete();

    bool is_running() const { return m_running; }
    bool is_downloading(const std::string& name) const;
    // Null when the mirror has no file of that name / remote id.
    TVWebFile* find_file(const std::string& name) const;
    TVWebFile* find_id(const std::string& id) const;
    // A file of the mirror, listed now (a remote one not on the disk yet).
    TVWebFile& add_file(const std::string& name);
    const std::string& get_folder() const { return m_folder; }
    const TVDate& get_last_sync() const { return m_lastSync; }
    void set_last_sync(const TVDate& date) { m_lastSync = date; }
    int get_nfiles() const { return m_files.size(); }
    TVWebFile* get_file(int index) const { return m_files[index]; }
    int get_scan_count() const { return m_scanCount; }
    // The polling interval the timer is armed with (0 when it stands).
    int get_interval() const;

    virtual void dump(std::ostream& out, int indent) const override;

signals:
    void wake_up_signal();

public slots:
    // One poll: an update, then the timer again at a longer interval,
    // unless the user chose to stop at the error.
    void timer_triggred();

protected:
    [[nodiscard]] virtual int push(TVWebFile& file);
    [[nodiscard]] virtual int pull(TVWebFile& file);
    [[nodiscard]] virtual int remote_start();

private:
    std::string m_folder;
    TVPtrArray<TVWebFile> m_files{true};
    bool m_running = false;
    TVDate m_lastSync;
    QTimer m_timer;
    int m_scanCount = 0;
    bool m_activity = false; // a download started since the last poll
};

#endif // TVWEBSERVICE_H
