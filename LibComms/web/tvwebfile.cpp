#include "LibComms/web/tvwebfile.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"

#include <QFile>

#include <ostream>

TVWebFile::TVWebFile(const std::string& path) : TVFile(path)
{
    m_localTime = TVDateUtils::blank_date();
    m_remoteTime = TVDateUtils::blank_date();
}

void TVWebFile::update(const TVFile& file, bool force, const TVDate& last_sync)
{
    TVFile::operator=(file);
    if (m_localTime.is_blank() && last_sync.is_ok())
        m_localTime = last_sync;
    const TVDate& modified = get_modified();
    // A rewrite inside the slack still shows by its size.
    const bool resized = m_localSize >= 0 && m_localSize != get_size();
    const bool unchanged =
        !resized &&
        (m_localTime.is_blank() ||
         (m_localTime.is_ok() && !(m_localTime < modified - TVDuration(C_SlackSeconds))));
    if (unchanged && !force) {
        if (m_state == E_Gone)
            m_state = E_InStep;
        return;
    }
    // A transfer under way finishes first; the next scan sees the change.
    if (m_state == E_Uploading || m_state == E_Downloading)
        return;
    m_state = E_ToUpload;
    m_localTime = modified;
    m_localSize = get_size();
}

void TVWebFile::update_remote(const std::string& id, const TVDate& date)
{
    m_id = id;
    if (m_state == E_Uploading || m_state == E_Downloading)
        return;
    const bool newer = m_remoteTime.is_blank() || m_remoteTime < date;
    if (newer)
        m_remoteTime = date;
    if (!get_modified().is_ok() || (newer && get_modified() < date))
        m_state = E_ToDownload;
}

// The bytes go to a hidden name beside the file (a scan passes over it),
// are flushed, and are renamed over it: a write that fails half way leaves
// the last whole copy, never a cut one for the cloud service to read or
// for the next scan to take for a change of ours and upload.
int TVWebFile::complete_pull(const std::string& bytes)
{
    try {
        const std::string path = get_pathname();
        const std::string temp = tv_dirname(path) + "/." + tv_filename(path) + ".download";
        QFile file(QString::fromStdString(temp));
        bool ok = file.open(QIODevice::WriteOnly) &&
                  file.write(bytes.data(), static_cast<qint64>(bytes.size())) ==
                      static_cast<qint64>(bytes.size()) &&
                  file.flush();
        if (ok && istvwarn(tv_sync_fd(file.handle(), temp))) {
            get_tverror()->clear_last_error();
            ok = false;
        }
        file.close();
        ok = ok && file.error() == QFileDevice::NoError;
        if (ok && istvwarn(tv_rename_file(temp, path, false, true))) {
            get_tverror()->clear_last_error();
            ok = false;
        }
        if (!ok) {
            QFile::remove(QString::fromStdString(temp));
            m_state = E_ToDownload;
            return tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not write the file %s",
                             path.c_str());
        }
        m_state = E_InStep;
        TV_PASS_ON(set_times(get_created(), m_remoteTime));
        m_localTime = get_modified();
        m_localSize = get_size();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVWebFile::fail_pull()
{
    m_state = E_InStep;
    m_remoteTime = TVDateUtils::blank_date();
}

void TVWebFile::set_remove(bool remove)
{
    if (remove && m_state == E_InStep)
        m_state = E_Gone;
    else if (!remove && m_state == E_Gone)
        m_state = E_InStep;
}

void TVWebFile::dump(std::ostream& out, int indent) const
{
    TVFile::dump(out, indent);
    TVDump dump("TVWebFile", out, indent);
    dump.add_entry("state", m_state);
    dump.add_entry("localTime", m_localTime);
    dump.add_entry("remoteTime", m_remoteTime);
    dump.add_entry("id", m_id);
}
