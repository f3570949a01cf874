#ifndef TVCFILE_H
#define TVCFILE_H

// TVCFile: one record of a shared folder's index: the file one host writes
// for one linked database. The host's data file in the shared place is
// named host "@" the base name of the linked file.
//
// Serial form, one record of the index file: "f" (file name), "h" (host),
// "w" (last write), "e" (expiry, a week after the write), then TVObject's
// under "TVObject". What this process read of the file (the last read, the
// file's modification time, whether it is wanted, the bytes not yet taken)
// is its own and never written.
//
// A record belongs to its service, which guards it with its mutex.

#include "LibDate/core/tvdate.h"
#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVCFile : public TVObject
{
public:
    // How long a write counts as recent.
    static constexpr long C_ExpireSeconds = 604800;

    TVCFile();
    // A record of a write by host now: wanted, read and written now.
    TVCFile(const std::string& file_name, const std::string& host);
    TVCFile(const TVCFile& other);
    TVCFile& operator=(const TVCFile& other);
    ~TVCFile() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    bool operator==(const TVCFile& other) const;
    void set_defaults(bool constructing);

    // The name of host's data file for a linked file: host "@" base name.
    static std::string host_filename(const std::string& file_name, const std::string& host);

    // A fresh write by this record's host: the dates move to now.
    void mark_changed();
    bool match(const TVCFile& other) const;
    bool match(const std::string& file_name, const std::string& host) const;
    // Takes the write and expiry dates of the index's record.
    void update(const TVCFile& other);
    // Forgets what was read: the file counts as unread.
    void reset();
    // Reads the data file at path into the record when it changed since
    // the last read. A file that is missing or won't open is left for the
    // next check, with no report.
    [[nodiscard]] int check_read(const std::string& path);
    bool has_data() const { return !m_data.empty(); }
    // Gives the bytes read and not yet taken, and marks the file wanted.
    std::string pop_data();

    const std::string& get_filename() const { return m_fileName; }
    const std::string& get_host() const { return m_host; }
    const std::string& get_hostfile() const { return m_hostFile; }
    const TVDate& get_last_write() const { return m_lastWrite; }
    bool get_active() const { return m_active; }
    void set_active(bool active) { m_active = active; }

    // The index's order: by host, then file name, bytes compared; true
    // when a sorts after b.
    static bool compare(const TVCFile& a, const TVCFile& b);

private:
    std::string m_fileName;
    std::string m_host;
    std::string m_hostFile;
    TVDate m_lastWrite;
    TVDate m_lastRead;
    TVDate m_lastModified;
    TVDate m_expire;
    bool m_active = false;
    std::string m_data;
    // The version of the file last read (tv_file_version): its time alone
    // can miss a second write within one tick.
    std::string m_readVersion;
};

std::ostream& operator<<(std::ostream& out, const TVCFile& file);

#endif // TVCFILE_H
