#include "LibCore/fileutils/tvfileutils.h"

#include <QDir>
#include <QFile>
#include <QString>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfiletimes_p.h"

namespace {

const char* const C_WritableTestName = "ABCDEFFFED-test.txt";
// Read in blocks this big when comparing files.
const size_t C_CompareBlock = 65536;
// What a fault injected by TVFileFaults looks like to the caller.
const int C_InjectedErrno = EIO;

// Owns one descriptor; -1 when the open failed (errno tells why).
class TVFd
{
public:
    TVFd(const std::string& name, int flags)
        : m_fd(::open(name.c_str(), flags | O_CLOEXEC))
    {
    }
    ~TVFd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    TVFd(const TVFd&) = delete;
    TVFd& operator=(const TVFd&) = delete;
    int get() const { return m_fd; }
    bool is_open() const { return m_fd >= 0; }

private:
    int m_fd;
};

// A file that can be opened for reading and is no directory. O_NONBLOCK so
// that a fifo in the way doesn't hang the probe.
bool opens_for_reading(const std::string& name)
{
    if (name.empty())
        return false;
    TVFd fd(name, O_RDONLY | O_NONBLOCK);
    if (!fd.is_open())
        return false;
    struct stat st;
    return ::fstat(fd.get(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool path_exists(const std::string& name)
{
    struct stat st;
    return !name.empty() && ::stat(name.c_str(), &st) == 0;
}

// Both names lead to one file (hard link, or the same name spelt twice).
bool same_file(const std::string& a, const std::string& b)
{
    struct stat sa;
    struct stat sb;
    return ::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

QString to_qpath(const std::string& name)
{
    return QFile::decodeName(QByteArray(name.data(), static_cast<int>(name.size())));
}

// Reads up to size bytes, riding over short reads; -1 on a read error.
ssize_t read_block(int fd, char* buffer, size_t size)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, buffer + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        done += static_cast<size_t>(n);
    }
    return static_cast<ssize_t>(done);
}

int sync_path(const std::string& name, bool directory)
{
    const char* missing =
        directory ? "The directory %s does not exist." : "The file %s does not exist.";
    TVFd fd(name, O_RDONLY | (directory ? O_DIRECTORY : 0));
    if (!fd.is_open()) {
        const int err = errno;
        if (err == ENOENT || err == ENOTDIR || name.empty())
            return tverror(TVErrC_FileNotExist, TVLOCATION, missing, name.c_str());
        return tverror(TVErrC_FileOpen, TVLOCATION, "Could not open %s (error %d - %s)",
                       name.c_str(), err, std::strerror(err));
    }
    return tv_sync_fd(fd.get(), name);
}

} // namespace

int tv_sync_fd(int fd, const std::string& name)
{
    int rc = 0;
    int err = 0;
    if (TVFileFaults::should_fail(TVFileFaults::E_OpSync, name)) {
        rc = -1;
        err = C_InjectedErrno;
    } else {
#ifdef __APPLE__
        // fsync on macOS only reaches the drive's cache; F_FULLFSYNC reaches
        // the platter. Some file systems refuse it, then fsync is the best.
        rc = ::fcntl(fd, F_FULLFSYNC);
        if (rc != 0)
            rc = ::fsync(fd);
#else
        rc = ::fsync(fd);
#endif
        err = errno;
    }
    if (rc != 0)
        return tverror(TVErrC_FileWrite, TVLOCATION, "Could not sync %s (error %d - %s)",
                       name.c_str(), err, std::strerror(err));
    return TVErrC_ok;
}

namespace {

// Copies from's bytes (and mode) to a fresh name beside to and flushes
// them, so that a rename can put a whole file in to's place. The name made,
// or empty on failure with errno set; a failed copy leaves nothing behind.
std::string copy_beside(const std::string& from, const std::string& to)
{
    TVFd in(from, O_RDONLY);
    struct stat st;
    if (!in.is_open() || ::fstat(in.get(), &st) != 0)
        return std::string();
    std::string name = tv_dirname(to) + "/." + tv_filename(to) + ".XXXXXX";
    std::vector<char> buffer(name.begin(), name.end());
    buffer.push_back('\0');
    const int fd = ::mkstemp(buffer.data());
    if (fd < 0)
        return std::string();
    name.assign(buffer.data());
    bool ok = ::fchmod(fd, st.st_mode & 07777) == 0;
    std::vector<char> block(C_CompareBlock);
    while (ok) {
        const ssize_t n = read_block(in.get(), block.data(), block.size());
        if (n <= 0) {
            ok = n == 0;
            break;
        }
        for (ssize_t done = 0; ok && done < n;) {
            const ssize_t w = ::write(fd, block.data() + done, static_cast<size_t>(n - done));
            if (w < 0 && errno == EINTR)
                continue;
            ok = w > 0;
            done += w > 0 ? w : 0;
        }
    }
    ok = ok && ::fsync(fd) == 0;
    const int err = errno;
    ok = ::close(fd) == 0 && ok;
    if (!ok) {
        ::unlink(name.c_str());
        errno = err;
        return std::string();
    }
    return name;
}

// rename(2) replaces to in one step: at every moment to is the old file or
// the new one. Across file systems the bytes are copied beside to first.
bool replace_by_rename(const std::string& from, const std::string& to)
{
    if (::rename(from.c_str(), to.c_str()) == 0)
        return true;
    if (errno != EXDEV)
        return false;
    const std::string temp = copy_beside(from, to);
    if (temp.empty())
        return false;
    if (::rename(temp.c_str(), to.c_str()) != 0) {
        ::unlink(temp.c_str());
        return false;
    }
    ::unlink(from.c_str());
    return true;
}

bool replace_by_copy(const std::string& from, const std::string& to)
{
    const std::string temp = copy_beside(from, to);
    if (temp.empty())
        return false;
    if (::rename(temp.c_str(), to.c_str()) != 0) {
        ::unlink(temp.c_str());
        return false;
    }
    return true;
}

// One road for rename and copy: the checks are the same, only the work of
// step 4 and what step 5 can verify differ.
int move_or_copy(const std::string& from, const std::string& to, bool createDir, bool overwrite,
                 bool copy)
{
    if (!tv_file_exists(from))
        return tverror(TVErrC_FileNotExist, TVLOCATION, "The file %s does not exist.",
                       from.c_str());

    const std::string dir = tv_dirname(to);
    if (!tv_dir_exists(dir)) {
        if (!createDir)
            return tvwarning(TVErrC_FileNotExist, TVLOCATION, "The directory %s does not exist.",
                             dir.c_str());
        try {
            const int result = tv_create_dir(dir, true);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        } catch (const TVErrDetails&) {
            tv_trail_throw(TVLOCATION);
        }
    }

    const char* failed = copy ? "Could not copy %s to %s" : "Could not rename %s to %s";
    // Anything but a folder at to counts: rename(2) would replace it.
    if (path_exists(to) && !tv_dir_exists(to)) {
        if (!overwrite)
            return tverror(TVErrC_FileExists, TVLOCATION, "The file %s already exists.",
                           to.c_str());
        // Two names of one file: replacing one by the other would lose it.
        if (same_file(from, to))
            return tverror(TVErrC_FileRename, TVLOCATION, failed, from.c_str(), to.c_str());
    }

    const TVFileFaults::E_FileOp op = copy ? TVFileFaults::E_OpCopy : TVFileFaults::E_OpRename;
    bool done = false;
    if (!TVFileFaults::should_fail(op, from, to))
        done = copy ? replace_by_copy(from, to) : replace_by_rename(from, to);
    if (!done)
        return tverror(TVErrC_FileRename, TVLOCATION, failed, from.c_str(), to.c_str());

    // Trust the disk, not the call's answer.
    if (!tv_file_exists(to))
        return tverror(TVErrC_FileCreate, TVLOCATION, "Could not create %s", to.c_str());
    if (!copy && tv_file_exists(from))
        return tverror(TVErrC_FileDelete, TVLOCATION, "Could not delete %s", from.c_str());
    return TVErrC_ok;
}

// Splits at "/" (and "\" with both) without dropping anything.
std::vector<std::string> split_raw(const std::string& path, bool bothSeparators)
{
    std::vector<std::string> parts;
    std::string part;
    for (char c : path) {
        if (c == '/' || (bothSeparators && c == '\\')) {
            parts.push_back(part);
            part.clear();
        } else {
            part += c;
        }
    }
    parts.push_back(part);
    return parts;
}

// Start of the file name: behind the last "/" or "\".
size_t file_name_start(const std::string& path)
{
    const size_t sep = path.find_last_of("/\\");
    return sep == std::string::npos ? 0 : sep + 1;
}

} // namespace

// ---- Probes -----------------------------------------------------------------

bool tv_file_exists(const std::string& name)
{
    return opens_for_reading(name);
}

bool tv_dir_exists(const std::string& name)
{
    struct stat st;
    return !name.empty() && ::stat(name.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool tv_dir_writable(const std::string& name)
{
    if (!tv_dir_exists(name))
        return false;
    const std::string test = name + "/" + C_WritableTestName;
    if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, test))
        return false;
    // No O_EXCL: the name is ours, and a test file left by a crash must not
    // make the directory look read-only for ever.
    const int fd = ::open(test.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    ::close(fd);
    ::unlink(test.c_str());
    return true;
}

TVDate tv_file_modified(const std::string& name)
{
    struct stat st;
    if (name.empty() || ::stat(name.c_str(), &st) != 0)
        return TVDate();
#ifdef __APPLE__
    return tv_date_from_file_time(st.st_mtimespec);
#else
    return tv_date_from_file_time(st.st_mtim);
#endif
}

std::string tv_file_version(const std::string& name)
{
    struct stat st;
    if (name.empty() || ::stat(name.c_str(), &st) != 0)
        return std::string();
#ifdef __APPLE__
    const struct timespec& modified = st.st_mtimespec;
#else
    const struct timespec& modified = st.st_mtim;
#endif
    return std::to_string(st.st_dev) + ":" + std::to_string(st.st_ino) + ":" +
           std::to_string(st.st_size) + ":" + std::to_string(modified.tv_sec) + "." +
           std::to_string(modified.tv_nsec);
}

bool tv_file_compare(const std::string& a, const std::string& b)
{
    const char* cannot = "tv_file_compare: Could not open %s for reading.";
    for (const std::string* name : {&a, &b})
        if (!opens_for_reading(*name) || TVFileFaults::should_fail(TVFileFaults::E_OpRead, *name)) {
            tverror(TVErrC_FileOpen, TVLOCATION, cannot, name->c_str());
            return false;
        }
    TVFd fa(a, O_RDONLY);
    TVFd fb(b, O_RDONLY);
    if (!fa.is_open() || !fb.is_open()) {
        tverror(TVErrC_FileOpen, TVLOCATION, cannot, (fa.is_open() ? b : a).c_str());
        return false;
    }
    struct stat sa;
    struct stat sb;
    if (::fstat(fa.get(), &sa) == 0 && ::fstat(fb.get(), &sb) == 0 && sa.st_size != sb.st_size)
        return false;

    std::vector<char> ba(C_CompareBlock);
    std::vector<char> bb(C_CompareBlock);
    for (;;) {
        const ssize_t na = read_block(fa.get(), ba.data(), ba.size());
        const ssize_t nb = read_block(fb.get(), bb.data(), bb.size());
        if (na < 0 || nb < 0) {
            tverror(TVErrC_FileRead, TVLOCATION, "tv_file_compare: Could not read %s.",
                    (na < 0 ? a : b).c_str());
            return false;
        }
        if (na != nb || std::memcmp(ba.data(), bb.data(), static_cast<size_t>(na)) != 0)
            return false;
        if (na == 0)
            return true;
    }
}

// ---- Changing the disk ------------------------------------------------------

int tv_create_dir(const std::string& name, bool existsOk)
{
    if (path_exists(name)) {
        if (!existsOk)
            return tvwarning(TVErrC_FileExists, TVLOCATION, "%s already exists", name.c_str());
        if (tv_dir_exists(name))
            return TVErrC_ok;
        // Something else is in the way; saying ok would only move the
        // failure to the first file written "into" it.
        return tverror(TVErrC_FileCreate, TVLOCATION, "Could not create %s", name.c_str());
    }
    if (name.empty() || TVFileFaults::should_fail(TVFileFaults::E_OpCreateDir, name) ||
        !QDir().mkpath(to_qpath(name)))
        return tverror(TVErrC_FileCreate, TVLOCATION, "Could not create %s", name.c_str());
    return TVErrC_ok;
}

int tv_delete_file(const std::string& name, bool mustExist)
{
    if (tv_file_exists(name)) {
        int rc = -1;
        int err = C_InjectedErrno;
        if (!TVFileFaults::should_fail(TVFileFaults::E_OpDelete, name)) {
            rc = ::unlink(name.c_str());
            err = errno;
        }
        if (rc != 0)
            return tverror(TVErrC_FileDelete, TVLOCATION, "Could not delete %s (error %d - %s)",
                           name.c_str(), err, std::strerror(err));
    } else if (mustExist) {
        return tverror(TVErrC_FileNotExist, TVLOCATION, "The file %s does not exist.",
                       name.c_str());
    }
    if (tv_file_exists(name))
        return tverror(TVErrC_FileDelete, TVLOCATION, "Could not delete %s", name.c_str());
    return TVErrC_ok;
}

int tv_rename_file(const std::string& from, const std::string& to, bool createDir, bool overwrite)
{
    return move_or_copy(from, to, createDir, overwrite, false);
}

int tv_copy_file(const std::string& from, const std::string& to, bool createDir, bool overwrite)
{
    return move_or_copy(from, to, createDir, overwrite, true);
}

int tv_sync_file(const std::string& name)
{
    return sync_path(name, false);
}

int tv_sync_dir(const std::string& name)
{
    return sync_path(name, true);
}

// ---- Path names ---------------------------------------------------------------

std::string tv_dirname(const std::string& path)
{
    const size_t sep = path.rfind('/');
    if (sep == std::string::npos)
        return ".";
    if (sep == 0)
        return "/";
    return path.substr(0, sep);
}

std::string tv_filename(const std::string& path)
{
    const size_t sep = path.rfind('/');
    return sep == std::string::npos ? path : path.substr(sep + 1);
}

std::string tv_basename(const std::string& path)
{
    const size_t start = file_name_start(path);
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot < start)
        return path.substr(start);
    return path.substr(start, dot - start);
}

std::string tv_extension(const std::string& path)
{
    const size_t start = file_name_start(path);
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot < start)
        return std::string();
    return path.substr(dot + 1);
}

void tv_split_path(const std::string& path, std::vector<std::string>& parts, std::string& root)
{
    parts.clear();
    root = tv_is_absolute_path(path) ? path.substr(0, 1) : std::string();
    for (std::string& part : split_raw(path, true))
        if (!part.empty())
            parts.push_back(std::move(part));
}

bool tv_is_absolute_path(const std::string& path)
{
    return !path.empty() && (path[0] == '/' || path[0] == '\\');
}

std::string tv_clean_pathname(const std::string& path, bool bothSeparators)
{
    const bool absolute = !path.empty() && (path[0] == '/' || (bothSeparators && path[0] == '\\'));
    std::vector<std::string> kept;
    for (const std::string& part : split_raw(path, bothSeparators)) {
        if (part.empty() || part == ".")
            continue;
        if (part == "..") {
            if (!kept.empty() && kept.back() != "..")
                kept.pop_back();
            else if (!absolute)
                kept.push_back(part); // climbs above where a relative path starts
            continue;
        }
        kept.push_back(part);
    }
    std::string out = absolute ? "/" : "";
    for (size_t i = 0; i < kept.size(); ++i) {
        if (i > 0)
            out += '/';
        out += kept[i];
    }
    if (out.empty())
        out = ".";
    return out;
}

// ---- Access rights ------------------------------------------------------------

int store_security_bookmark(const std::string& /*key*/, const std::string& /*path*/)
{
    return TVErrC_ok;
}

int access_security_bookmark(const std::string& /*key*/)
{
    return TVErrC_ok;
}
