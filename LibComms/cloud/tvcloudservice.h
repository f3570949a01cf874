#ifndef TVCLOUDSERVICE_H
#define TVCLOUDSERVICE_H

// TVCloudService: carries whole files between devices through a place all
// of them see as a folder. The place holds, per device and linked
// database, one data file named host "@" file (a device writes only its
// own), and one index file listing them all (TVCFile records, rewritten
// whole by whoever wrote last; a read merges by record and never drops
// one). A device writes its file, notes it in the index, and looks for
// records of other hosts whose file changed.
//
// Each concrete service (shared folder, Drive mirror, iCloud) is a
// process-wide singleton. It may run a thread of its own, which wakes every
// C_WaitMs or on nudge and reads the wanted files into their records;
// without one, the checks run on the caller's thread inside has_data,
// fetch and file_list. The thread never touches a database: it leaves
// bytes in the records, and the database's thread takes them with fetch.
// That hand-over, under the service's mutex, is the only meeting of the
// two threads; the database's side waits at most C_LockWaitMs for it.
//
// The service knows nothing of what the files hold. Failures are the
// framework's error values; file-level ones are warnings. A missing index
// or data file is no failure: the place may simply be empty.

#include "LibComms/cloud/tvcfile.h"
#include "LibComms/thread/tvcondvar.h"
#include "LibComms/thread/tvmutex.h"
#include "LibComms/thread/tvthread.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDate/core/tvdate.h"

#include <iosfwd>
#include <string>
#include <vector>

class TVCloudService : public TVThread
{
public:
    static constexpr const char* C_IndexName = "index.txt";
    // The thread's rest between checks.
    static constexpr int C_WaitMs = 5000;
    // How long the database's thread waits for the service's lock.
    static constexpr int C_LockWaitMs = 100;

    TVCloudService();
    TVCloudService(const TVCloudService&) = delete;
    TVCloudService& operator=(const TVCloudService&) = delete;
    // Ends the service's thread, if it runs.
    ~TVCloudService() override;

    // Makes the services a program uses, once at its start.
    static int start_services(const std::string& client_id, const std::string& client_secret);
    // Starts the service's thread.
    [[nodiscard]] int start();
    // Wakes the thread for a check now.
    void nudge();
    static void nudge_all();

    // Whether another host's file of that name has bytes waiting; the first
    // ask only marks it wanted, for the next check. False when the lock is
    // busy: the caller asks again later.
    bool has_data(const std::string& name);
    // The waiting bytes of one host's file of that name (the next host's
    // wait for the next fetch); empty when none or the lock is busy.
    [[nodiscard]] int fetch(const std::string& name, std::string& out);
    // Writes this host's file of that name and notes it in the index.
    [[nodiscard]] virtual int send(const std::string& name, const std::string& data);
    // The distinct linked file names the index lists.
    std::vector<std::string> file_list();
    // Every file counts as unread: the next check reads them all again.
    void reset_files();
    static void reset_all();
    // The host this device writes under; empty restores the machine's
    // name. The database's stamps follow (TVApplication::get_hostname).
    static void override_host(const std::string& host);
    std::string own_host() const;

    virtual std::string cloud_name(const std::string& name) const;
    virtual std::string debug_info();
    virtual std::string index_file_name() const;
    // The index read again if it changed; concrete services then read the
    // wanted data files. check_thread holds the lock, check_main takes it.
    [[nodiscard]] virtual int check_thread();
    [[nodiscard]] virtual int check_main();

    // Reads a file whole; with quiet, a file that won't open gives
    // TVErrC_FileOpen as a plain result and no report.
    [[nodiscard]] static int read_file(const std::string& path, std::string& out, bool quiet);
    // Writes a file whole, through a temporary name beside it, so that a
    // reader never sees half of it.
    [[nodiscard]] static int write_file(const std::string& path, const std::string& data);
    [[nodiscard]] int read_index_file();
    [[nodiscard]] int write_index_file();
    // Notes a write of own host's file of that name in the index and
    // rewrites the index.
    [[nodiscard]] int mark_written(const std::string& name);

    void dump(std::ostream& out, int indent) const override;

protected:
    int func() override;
    // The base check, without the lock; the caller holds it.
    [[nodiscard]] int check_index();
    // The records, for a concrete service's check; under the lock.
    TVPtrArray<TVCFile>& files() { return m_file; }
    TVMutex& mutex() { return m_mutex; }
    // Where the index lives, made from index_file_name when empty.
    void set_index_file(const std::string& path);

private:
    void insert_sorted(TVCFile* file);

    TVPtrArray<TVCFile> m_file{true}; // in ascending order of host, then file name
    std::string m_indexFile;
    TVDate m_indexRead;
    std::string m_indexVersion; // tv_file_version at the last read or write
    TVMutex m_mutex;
    TVCondVar m_signal;
};

#endif // TVCLOUDSERVICE_H
