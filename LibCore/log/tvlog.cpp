#include "LibCore/log/tvlog.h"

#include <fstream>
#include <ostream>
#include <vector>

#include <QDir>
#include <QSaveFile>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

const int TVLog::C_MaxLines = 1000;
const int TVLog::C_RotateSeconds = 1800;

namespace {
const char* const C_Extension = ".log";
const char* const C_TimeFormat = "%D %T";

std::vector<std::string> read_lines(const std::string& path)
{
    std::vector<std::string> lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// Keeps the newest C_MaxLines lines of the file; false if it had to be cut
// and couldn't be. The new file takes the old one's place in one rename, so
// a crash halfway leaves the old file, not half of one.
bool cut_file(const std::string& path)
{
    const std::vector<std::string> lines = read_lines(path);
    if (lines.size() <= static_cast<size_t>(TVLog::C_MaxLines))
        return true;
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (size_t i = lines.size() - TVLog::C_MaxLines; i < lines.size(); ++i) {
        file.write(lines[i].data(), static_cast<qint64>(lines[i].size()));
        file.write("\n", 1);
    }
    return file.commit();
}
} // namespace

TVLog::TVLog()
{
    set_defaults(true);
}

TVLog::~TVLog() = default;

void TVLog::set_defaults(bool)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_folder.clear();
    m_lastRotation.clear();
}

int TVLog::log(const std::string& name, const std::string& text)
{
    bool rotateFailed = false;
    bool openFailed = false;
    bool writeFailed = false;
    std::string path;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        path = path_locked(name);
        const TVDate now = TVDateUtils::now();
        auto last = m_lastRotation.find(name);
        if (last == m_lastRotation.end() || !last->second.is_ok() ||
            (now - last->second) > static_cast<long>(C_RotateSeconds)) {
            // Noted before the cut: a log that can't be cut isn't retried
            // at every entry.
            m_lastRotation[name] = now;
            rotateFailed = !cut_file(path);
        }
        // A fresh installation has no cache directory yet.
        QDir().mkpath(QString::fromStdString(folder_locked()));
        std::ofstream out(path, std::ios::app);
        if (!out) {
            openFailed = true;
        } else {
            out << now.to_string(C_TimeFormat) << ": " << text << "\n";
            out.flush();
            writeFailed = !out;
        }
    }

    // Reported outside the lock: the handlers may well log themselves.
    int result = TVErrC_ok;
    if (rotateFailed)
        result = tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not rewrite the log file %s", path.c_str());
    if (openFailed)
        result = tvwarnuser(TVErrC_FileOpen, TVLOCATION, "Could not open the log file %s", path.c_str());
    if (writeFailed)
        result = tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not write to the log file %s", path.c_str());
    return result;
}

int TVLog::rotate(const std::string& name)
{
    std::string path;
    bool failed = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        path = path_locked(name);
        failed = !cut_file(path);
    }
    if (failed)
        return tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not rewrite the log file %s", path.c_str());
    return TVErrC_ok;
}

std::string TVLog::read(const std::string& name) const
{
    std::vector<std::string> lines;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        lines = read_lines(path_locked(name));
    }
    std::string text;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0)
            text += "\n";
        text += lines[i];
    }
    return text;
}

std::string TVLog::get_log_path(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return path_locked(name);
}

void TVLog::set_folder(const std::string& folder)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_folder = folder;
}

std::string TVLog::get_folder() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return folder_locked();
}

TVDate TVLog::get_last_rotation(const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto last = m_lastRotation.find(name);
    return last != m_lastRotation.end() ? last->second : TVDate();
}

std::string TVLog::folder_locked() const
{
    return m_folder.empty() ? tvapplication()->get_cache_dir() : m_folder;
}

std::string TVLog::path_locked(const std::string& name) const
{
    return folder_locked() + "/" + name + C_Extension;
}

void TVLog::dump(std::ostream& out, int indent) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    TVDump dump("TVLog", out, indent);
    dump.add_entry("m_folder", m_folder);
    for (const auto& last : m_lastRotation)
        dump.add_entry("m_lastRotation", last.first + " " + last.second.to_string(C_TimeFormat));
}

std::ostream& operator<<(std::ostream& out, const TVLog& log)
{
    log.dump(out, 0);
    return out;
}

TVLog* tvlog()
{
    return TVLog::instance();
}
