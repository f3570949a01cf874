#ifndef TVLOG_H
#define TVLOG_H

// TVLog: named rolling log files, such as the log of a cloud service that
// the user can read in a dialog. A log is plain text, one entry per line:
//
//   line := time ": " text "\n"      time by TVDate::to_string("%D %T")
//
// Each log keeps its newest C_MaxLines lines: the first entry a log gets
// in a run, and then the first after every C_RotateSeconds, cuts its
// oldest lines first. Between rotations a log may grow past the limit.
//
// The files lie in the application's cache directory unless set_folder
// names another. Reached through tvlog(); safe to use from any thread.
// The free function tvlog(location, fmt, ...) of the error framework is
// something else: it writes a line to the error log.

#include <iosfwd>
#include <map>
#include <mutex>
#include <string>

#include "LibCore/application/tvsingleton.h"
#include "LibDate/core/tvdate.h"

class TVLog : public TVSingleton<TVLog>
{
public:
    static const int C_MaxLines;      // lines a log keeps at a rotation
    static const int C_RotateSeconds; // least time between two rotations of a log

    TVLog();
    TVLog(const TVLog&) = delete;
    TVLog& operator=(const TVLog&) = delete;
    virtual ~TVLog();

    // Forgets the rotation times and the folder.
    void set_defaults(bool constructing);

    // Appends "time: text" to the log name, rotating it first when due.
    // A file that can't be opened is a user warning, "Could not open the
    // log file <path>", whose value comes back.
    [[nodiscard]] int log(const std::string& name, const std::string& text);
    // Cuts the log down to its newest C_MaxLines lines; a shorter or missing
    // log is left alone. The cut file replaces the old one whole, so a
    // failed rewrite leaves the old file (TVErrC_FileWrite, a warning).
    [[nodiscard]] int rotate(const std::string& name);
    // The lines of the log joined by "\n"; empty if there is no such log.
    std::string read(const std::string& name) const;

    // The file of the log name.
    std::string get_log_path(const std::string& name) const;
    // The folder of the logs; empty means the application's cache
    // directory, which is also what get_folder then gives.
    void set_folder(const std::string& folder);
    std::string get_folder() const;
    // When the log was last rotated in this run; invalid if not yet.
    TVDate get_last_rotation(const std::string& name) const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    std::string folder_locked() const;
    std::string path_locked(const std::string& name) const;

    // One lock for the lot: logging is rare and the files are small.
    mutable std::mutex m_mutex;
    std::string m_folder;
    // Each log has its own time, so a log written rarely still gets cut at
    // the first entry it gets in a run, whatever the others do.
    std::map<std::string, TVDate> m_lastRotation;
};

std::ostream& operator<<(std::ostream& out, const TVLog& log);

// The singleton; made on first use.
TVLog* tvlog();

#endif // TVLOG_H
