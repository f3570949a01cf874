#ifndef TVDBCHECKER_H
#define TVDBCHECKER_H

// TVDBChecker: scans a database's objects against their specs and keeps a
// list of what it found (TVDBCheckItem): variables a spec lacks, children
// a parent's spec doesn't name, variables left without a value, and links
// paused by data from a newer release. It records; it never fails on what
// it finds. The workspace's heartbeat lists its items as notifications.
//
// A database is checked again at every period while it has problems, and
// a clean one only after it changed. Each run clears every item of the
// codes it checks, so a fixed object drops out at the next run that
// reaches it.
//
// The database (set_database) must outlive the checker; main thread only.

#include "LibDatabase/db/tvdbcheckitem.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class TVDatabase;
class TVDBObject;

class TVDBChecker
{
public:
    static const char* const C_NewerVersionMessage;

    TVDBChecker() = default;
    TVDBChecker(const TVDBChecker&) = delete;
    TVDBChecker& operator=(const TVDBChecker&) = delete;
    virtual ~TVDBChecker() = default;

    void set_database(TVDatabase* db) { m_db = db; }
    // Runs the checks when forced, or when seconds have passed since the
    // last clean check and the database changed since. now is in seconds
    // since 1970 (the caller's clock).
    void periodic_check(long seconds, bool force, long now);
    // The next periodic_check looks at every object again.
    void force_full_check();
    void run_checks();
    void check_object(const TVDBObject& object);
    void record_error(const TVDBObject& object, int code, const std::string& short_message,
                      const std::string& message);
    // Drops the items of code; -1 drops all.
    void clear_error(int code);
    // Takes a copy of other's items.
    void upload(const TVDBChecker& other);

    // The database's answers for the object of id (empty, false when the
    // checker has no database).
    void extra_variables(int id, std::vector<std::string>& names) const;
    void unfilled_vars(int id, std::vector<std::string>& names) const;
    bool is_bastard(int id) const;
    // Removes the object's variables that its spec lacks; true if any went.
    bool remove_extra_vars(int id);

    int get_nitems() const { return static_cast<int>(m_items.size()); }
    // Null for a bad index.
    const TVDBCheckItem* get_item_by_index(int index) const;
    bool has_error(int id) const;
    // The messages of the object's items, one per line.
    std::string object_results(int id) const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    TVDatabase* m_db = nullptr;
    std::vector<std::unique_ptr<TVDBCheckItem>> m_items;
    long m_lastCleanTime = 0;    // seconds since 1970
    long m_lastCleanCounter = 0; // TVUpdateCounter at the last clean check
};

#endif // TVDBCHECKER_H
