#include "LibCore/fileutils/tvfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <sys/stat.h>

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfiletimes_p.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"

namespace {

const char* const C_DumpTimeFormat = "%D %H:%M:%U";
const int C_InjectedErrno = EIO;

timespec make_timespec(long long seconds, long long nanos)
{
    timespec ts;
    ts.tv_sec = static_cast<time_t>(seconds);
    ts.tv_nsec = static_cast<long>(nanos);
    return ts;
}

// The plain stat answer; no creation time except where stat carries one.
bool stat_times(const std::string& path, TVDate& created, TVDate& modified, std::int64_t& size)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return false;
#ifdef __APPLE__
    created = tv_date_from_file_time(st.st_birthtimespec);
    modified = tv_date_from_file_time(st.st_mtimespec);
#else
    created = TVDate();
    modified = tv_date_from_file_time(st.st_mtim);
#endif
    size = static_cast<std::int64_t>(st.st_size);
    return true;
}

bool read_times(const std::string& path, TVDate& created, TVDate& modified, std::int64_t& size)
{
    if (path.empty())
        return false;
#if defined(__linux__) && defined(STATX_BTIME)
    // Linux tells the creation time only through statx, and only where the
    // file system keeps one (the mask says).
    struct statx sx;
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &sx) == 0) {
        const timespec birth = make_timespec(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec);
        created = (sx.stx_mask & STATX_BTIME) ? tv_date_from_file_time(birth) : TVDate();
        modified = tv_date_from_file_time(make_timespec(sx.stx_mtime.tv_sec, sx.stx_mtime.tv_nsec));
        size = static_cast<std::int64_t>(sx.stx_size);
        return true;
    }
    // Old kernels and some sandboxes have no statx at all.
    if (errno != ENOSYS)
        return false;
#endif
    return stat_times(path, created, modified, size);
}

} // namespace

struct TVFile::TVFileImpl {
    std::string m_pathName;
    TVDate m_created;
    TVDate m_modified;
    std::int64_t m_size = 0;
};

TVFile::TVFile()
    : d(new TVFileImpl)
{
    set_defaults(true);
}

TVFile::TVFile(const std::string& pathName)
    : d(new TVFileImpl)
{
    set_defaults(true);
    d->m_pathName = pathName;
}

TVFile::TVFile(const TVFile& other)
    : d(new TVFileImpl(*other.d))
{
}

TVFile& TVFile::operator=(const TVFile& other)
{
    if (this != &other)
        *d = *other.d;
    return *this;
}

TVFile::~TVFile() = default;

void TVFile::set_defaults(bool /*constructing*/)
{
    d->m_created = TVDate();
    d->m_modified = TVDate();
    d->m_size = 0;
}

bool TVFile::read_status()
{
    if (read_times(d->m_pathName, d->m_created, d->m_modified, d->m_size))
        return true;
    set_defaults(false);
    return false;
}

int TVFile::refresh()
{
    if (!read_status())
        return tvwarning(TVErrC_FileNotExist, TVLOCATION, "The file %s does not exist.",
                         d->m_pathName.c_str());
    return TVErrC_ok;
}

int TVFile::set_times(const TVDate& /*created*/, const TVDate& modified)
{
    const std::string& path = d->m_pathName;
    struct stat st;
    if (path.empty() || ::stat(path.c_str(), &st) != 0)
        return tverror(TVErrC_FileNotExist, TVLOCATION, "The file %s does not exist.",
                       path.c_str());

    // Index 0 is the access time, 1 the modification time.
    timespec times[2] = {make_timespec(0, UTIME_OMIT), make_timespec(0, UTIME_OMIT)};
    tv_date_to_file_time(modified, times[1]);
    int rc = -1;
    int err = C_InjectedErrno;
    if (!TVFileFaults::should_fail(TVFileFaults::E_OpWrite, path)) {
        rc = ::utimensat(AT_FDCWD, path.c_str(), times, 0);
        err = errno;
    }
    if (rc != 0)
        return tverror(TVErrC_FileWrite, TVLOCATION,
                       "Could not set the times of %s (error %d - %s)", path.c_str(), err,
                       std::strerror(err));

    try {
        const int result = refresh();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

const std::string& TVFile::get_pathname() const
{
    return d->m_pathName;
}

void TVFile::set_pathname(const std::string& pathName)
{
    d->m_pathName = pathName;
    set_defaults(false);
}

std::string TVFile::get_filename() const
{
    return tv_filename(d->m_pathName);
}

const TVDate& TVFile::get_created() const
{
    return d->m_created;
}

const TVDate& TVFile::get_modified() const
{
    return d->m_modified;
}

std::int64_t TVFile::get_size() const
{
    return d->m_size;
}

void TVFile::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVFile\n";
    out << pad << "    path = " << d->m_pathName << "\n";
    out << pad << "    created = " << d->m_created.to_string(C_DumpTimeFormat) << "\n";
    out << pad << "    modified = " << d->m_modified.to_string(C_DumpTimeFormat) << "\n";
    out << pad << "    size = " << d->m_size << "\n";
}

bool TVFile::operator==(const TVFile& other) const
{
    return d->m_pathName == other.d->m_pathName && d->m_created == other.d->m_created &&
           d->m_modified == other.d->m_modified && d->m_size == other.d->m_size;
}

std::ostream& operator<<(std::ostream& out, const TVFile& file)
{
    file.dump(out, 0);
    return out;
}
