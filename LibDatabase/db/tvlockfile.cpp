#include "LibDatabase/db/tvlockfile.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvcachename.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <QLockFile>
#include <QString>

#include <ostream>

TVLockFile::TVLockFile() = default;

TVLockFile::TVLockFile(const TVLockFile& other)
    : m_fileName(other.m_fileName), m_lockFileName(other.m_lockFileName)
{
}

TVLockFile& TVLockFile::operator=(const TVLockFile& other)
{
    if (this != &other) {
        unlock();
        m_fileName = other.m_fileName;
        m_lockFileName = other.m_lockFileName;
    }
    return *this;
}

TVLockFile::~TVLockFile()
{
    unlock();
}

int TVLockFile::lock(const std::string& file, bool steal)
{
    try {
        unlock();
        m_fileName = file;
        m_lockFileName = get_cache_name(file, true) + C_LockExtension;
        int result = tv_create_dir(tv_dirname(m_lockFileName), true);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);

        std::unique_ptr<QLockFile> lockFile(new QLockFile(QString::fromStdString(m_lockFileName)));
        // The default would call an hour-old lock stale and take it, though
        // its holder may simply have had the file open all day.
        lockFile->setStaleLockTime(0);
        // Left by a process of this machine that has gone, the toolkit
        // would take it quietly; the user decides that, through steal.
        if (!steal && tv_file_exists(m_lockFileName))
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "");
        bool locked = lockFile->tryLock(0);
        if (!locked && !steal)
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "");
        if (!locked) {
            lockFile->removeStaleLockFile();
            locked = lockFile->tryLock(0);
            if (!locked)
                return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not lock %s",
                                 m_fileName.c_str());
        }
        m_lock = std::move(lockFile);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVLockFile::unlock()
{
    if (m_lock != nullptr)
        m_lock->unlock();
    m_lock.reset();
    m_fileName.clear();
    m_lockFileName.clear();
}

bool TVLockFile::is_locked() const
{
    return m_lock != nullptr && m_lock->isLocked();
}

void TVLockFile::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVLockFile: " << m_fileName << " by " << m_lockFileName
        << (is_locked() ? " (held)" : " (not held)") << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVLockFile& lock)
{
    lock.dump(out, 0);
    return out;
}
