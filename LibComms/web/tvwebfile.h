#ifndef TVWEBFILE_H
#define TVWEBFILE_H

// TVWebFile: one file of a folder that a web service mirrors: what the
// disk said of it (the TVFile base), and where it stands against the
// remote copy.
//
//   state 0  in step                  2  upload running
//         1  to be uploaded           3  to be downloaded
//         4  download running         5  gone from the disk (while a scan runs)
//
// The local time is the file's modification time at the last sync; the
// remote time, the one the remote side last reported. A file is changed
// when it is more than C_SlackSeconds newer than its local time (file
// systems keep coarse times), or when its size is no longer the one it had
// at the last sync. Main thread only.

#include "LibCore/fileutils/tvfile.h"
#include "LibDate/core/tvdate.h"

#include <cstdint>
#include <iosfwd>
#include <string>

class TVWebFile : public TVFile
{
public:
    enum E_State {
        E_InStep = 0,
        E_ToUpload = 1,
        E_Uploading = 2,
        E_ToDownload = 3,
        E_Downloading = 4,
        E_Gone = 5
    };
    static constexpr long C_SlackSeconds = 1;

    explicit TVWebFile(const std::string& path);

    // Takes what the disk says now (file). Without force, a file no newer
    // than its local time (blank: last_sync) is in step; otherwise it is to
    // be uploaded and its time becomes the local time.
    void update(const TVFile& file, bool force, const TVDate& last_sync);
    // The remote side reports the file under id, changed at date: to be
    // downloaded when that is later than the local file, or there is none.
    void update_remote(const std::string& id, const TVDate& date);
    // The downloaded bytes go to the disk, with the remote time as the
    // file's; then in step. A file that can't be written stays to be
    // downloaded, and the warning names it.
    [[nodiscard]] int complete_pull(const std::string& bytes);

    bool needs_remove() const { return m_state == E_Gone; }
    // Only a file in step can be marked gone, and only a gone one unmarked.
    void set_remove(bool remove);
    bool needs_push() const { return m_state == E_ToUpload; }
    void start_push() { m_state = E_Uploading; }
    void mark_pushed() { m_state = E_InStep; }
    // A failed upload: to be uploaded again at the next update.
    void fail_push() { m_state = E_ToUpload; }
    bool needs_pull() const { return m_state == E_ToDownload; }
    // A failed download waits for the next listing to ask for it again,
    // so that a dead network doesn't turn into a loop of retries.
    void fail_pull();
    void start_pull() { m_state = E_Downloading; }
    bool is_downloading() const { return m_state == E_ToDownload || m_state == E_Downloading; }
    bool is_uploading() const { return m_state == E_Uploading; }

    int get_state() const { return m_state; }
    const std::string& get_id() const { return m_id; }
    void set_id(const std::string& id) { m_id = id; }
    const TVDate& get_local_time() const { return m_localTime; }
    const TVDate& get_remote_time() const { return m_remoteTime; }

    void dump(std::ostream& out, int indent) const override;

private:
    int m_state = E_InStep;
    TVDate m_localTime;
    TVDate m_remoteTime;
    std::int64_t m_localSize = -1; // at the last sync; -1 before one
    std::string m_id;
};

#endif // TVWEBFILE_H
