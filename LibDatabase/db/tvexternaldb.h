#ifndef TVEXTERNALDB_H
#define TVEXTERNALDB_H

// TVExternalDB: a database's link to one shared copy of itself: a file of
// the same base name on every device, in a place a cloud service carries
// between them. The name is the link's identity. What a link remembers
// travels in every file: when this device last stamped a write for it
// (the push time), when it last took the whole file in (the replace time),
// and per peer host the write of theirs it last took in (TVExternalDBMerge,
// kept for a week).
//
// Serial form: "dbType", "manual", "fileName", "merge" (objects),
// "lastSyncTime", "repTime", then TVObject's under "TVObject". The
// transport handle, the text of the last pull and the newer-release
// warning are this process's own.

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvexternaldbmerge.h"
#include "LibDate/core/tvdate.h"
#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVExternalDB : public TVObject
{
public:
    // A peer's last merge counts for this long.
    static constexpr long C_MergeKeepSeconds = 604800;
    static constexpr const char* C_NoNews = "No new data to merge.";

    TVExternalDB();
    TVExternalDB(int type, const std::string& name);
    TVExternalDB(const TVExternalDB& other);
    TVExternalDB& operator=(const TVExternalDB& other);
    ~TVExternalDB() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    bool operator==(const TVExternalDB& other) const;
    void set_defaults(bool constructing);

    int get_dbtype() const { return m_dbType; }
    bool get_manual() const { return m_manual; }
    void set_manual(bool manual) { m_manual = manual; }
    const std::string& get_name() const { return m_fileName; }
    void set_dbname(const std::string& name);
    bool get_dbwarning() const { return m_dbWarning; }
    void set_dbwarning(bool warning) { m_dbWarning = warning; }
    const TVDate& get_lastreptime() const { return m_lastRepTime; }
    const TVDate& get_lastpushtime() const { return m_lastPushTime; }

    // The transport's, forwarded.
    bool is_available();
    bool download_in_progress();
    bool upload_in_progress();
    bool init_in_progress();
    int get_state();
    // New bytes of one peer's copy; empty when none.
    std::string read();
    [[nodiscard]] int write(const std::string& data);
    bool has_data();

    // The write of host's file last taken in; blank when none.
    TVDate get_pulltime(const std::string& host) const;
    void set_pulltime(const TVDate& date, const std::string& host);
    void mark_replace();
    void mark_push(const TVDate& date);
    // Whether a peer's file written at their_write by their_host is news:
    // not our own last write, and later than what we took from that host.
    bool should_pull(const TVDate& their_write, const TVDate& our_push,
                     const std::string& their_host) const;
    bool should_push(const TVDate& date) const;
    // Available, not busy fetching or starting, not paused by a newer
    // release's data, and named.
    bool can_push();

    // The cloud's name and the text of the last pull that said anything.
    std::string get_details();
    void set_details(const std::string& details);
    // Replaces, merges and writes, as the user reads them.
    std::string debug_info();

private:
    void prune_merges();

    int m_dbType;
    bool m_manual;
    std::string m_fileName;
    TVPtrArray<TVExternalDBMerge> m_merge{true};
    TVDate m_lastPushTime;
    TVDate m_lastRepTime;
    TVCloudInstance m_file;
    std::string m_details;
    bool m_dbWarning = false;
};

#endif // TVEXTERNALDB_H
