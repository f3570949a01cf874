#include "LibDatabase/db/tvdbwritefile.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// Writes all of text, riding over short writes; false on an error.
bool write_all(int fd, const std::string& text)
{
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}
} // namespace

// One open for the write and the flush: an operation's append costs one
// open, one write, one fsync and one close, whatever the size of the file.
int tv_db_write_file(const std::string& name, const std::string& text, bool append, bool sync)
{
    try {
        const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_TRUNC);
        if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, name))
            return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
        int fd = ::open(name.c_str(), flags, 0666);
        if (fd < 0 && errno == ENOENT) {
            TV_PASS_ON(tv_create_dir(tv_dirname(name), true));
            fd = ::open(name.c_str(), flags, 0666);
        }
        if (fd < 0)
            return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not create the file %s",
                             name.c_str());
        struct stat st;
        const off_t before = append && ::fstat(fd, &st) == 0 ? st.st_size : 0;
        // A failed append is cut back: a half block never stays in a log.
        const auto fail = [&](int result) {
            if (append)
                (void)::ftruncate(fd, before);
            ::close(fd);
            return result;
        };
        if (!write_all(fd, text))
            return fail(tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str()));
        if (sync) {
            int result = TVErrC_ok;
            try {
                result = tv_sync_fd(fd, name);
            } catch (const TVErrDetails&) {
                fail(TVErrC_ok);
                tv_trail_throw(TVLOCATION);
            }
            if (istvwarn(result))
                return fail(tv_trail_return(result, TVLOCATION));
        }
        if (::close(fd) != 0)
            return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int tv_db_save_file(const std::string& name, const std::string& text)
{
    try {
        if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, name))
            return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
        TV_PASS_ON(tv_create_dir(tv_dirname(name), true));
        std::string temp = tv_dirname(name) + "/." + tv_filename(name) + ".XXXXXX";
        const int fd = ::mkstemp(temp.data());
        if (fd < 0)
            return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not create the file %s",
                             name.c_str());
        // A file replaced keeps its mode; a new one is readable by others,
        // as a plain create makes it, not mkstemp's owner-only.
        struct stat st;
        const mode_t mode = ::stat(name.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0644;
        bool ok = ::fchmod(fd, mode) == 0 && write_all(fd, text);
        int result = TVErrC_ok;
        try {
            if (ok)
                result = tv_sync_fd(fd, name);
        } catch (const TVErrDetails&) {
            ::close(fd);
            ::unlink(temp.c_str());
            tv_trail_throw(TVLOCATION);
        }
        ok = ::close(fd) == 0 && ok;
        if (!ok || istvwarn(result)) {
            ::unlink(temp.c_str());
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
        }
        try {
            result = tv_rename_file(temp, name, false, true);
        } catch (const TVErrDetails&) {
            ::unlink(temp.c_str());
            tv_trail_throw(TVLOCATION);
        }
        if (istvwarn(result)) {
            ::unlink(temp.c_str());
            return tv_trail_return(result, TVLOCATION);
        }
        TV_PASS_ON(tv_sync_dir(tv_dirname(name)));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int tv_db_read_file(const std::string& name, std::string& text)
{
    text.clear();
    std::ifstream in(name, std::ios::binary);
    if (TVFileFaults::should_fail(TVFileFaults::E_OpRead, name) || !in)
        return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not open the file %s", name.c_str());
    // Straight into the string: a whole family file is tens of megabytes.
    // A size the file system doesn't know (a pipe) goes through a stream.
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    in.seekg(0, std::ios::beg);
    if (size > 0) {
        text.resize(static_cast<size_t>(size));
        in.read(&text[0], size);
        text.resize(static_cast<size_t>(in.gcount()));
    } else {
        in.clear();
        std::ostringstream all;
        all << in.rdbuf();
        text = all.str();
    }
    if (in.bad())
        return tvwarning(TVErrC_FileRead, TVLOCATION, "Could not read the file %s", name.c_str());
    return TVErrC_ok;
}
