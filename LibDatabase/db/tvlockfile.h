#ifndef TVLOCKFILE_H
#define TVLOCKFILE_H

// TVLockFile: keeps a second process away from a database file, through a
// QLockFile named get_cache_name(file, true) + ".dblock".
//
// A lock never goes stale by age (a database may stay open for days), and
// lock() never waits. A lock that can't be had is either reported at once
// for the caller to ask the user, or taken by force (steal), which succeeds
// only where no live holder keeps the file locked: after a crash.
//
// Guards processes, not threads. Copying copies no lock: a copy starts
// unlocked. Destroying a held lock releases it.

#include <iosfwd>
#include <memory>
#include <string>

class QLockFile;

class TVLockFile
{
public:
    static constexpr const char* C_LockExtension = ".dblock";

    TVLockFile();
    TVLockFile(const TVLockFile& other);
    TVLockFile& operator=(const TVLockFile& other);
    virtual ~TVLockFile();

    // Releases any lock held, then locks file. Refused without steal:
    // TVErrC_FileOpen with no message (a warning with an empty text), so
    // that the caller can ask first. Refused even with steal: the warning
    // TVErrC_FileOpen "Could not lock %s".
    [[nodiscard]] int lock(const std::string& file, bool steal);
    // Releases the lock, if held, and forgets both names.
    void unlock();
    bool is_locked() const;
    const std::string& get_filename() const { return m_fileName; }
    const std::string& get_lock_filename() const { return m_lockFileName; }

    virtual void dump(std::ostream& out, int indent) const;

private:
    std::string m_fileName;
    std::string m_lockFileName;
    std::unique_ptr<QLockFile> m_lock; // null while nothing is held
};

std::ostream& operator<<(std::ostream& out, const TVLockFile& lock);

#endif // TVLOCKFILE_H
