#ifndef TVCLOUDFILE_H
#define TVCLOUDFILE_H

// TVCloudFile: what a database's link to a shared copy holds: one linked
// file of one cloud service. This base is a handle with no service behind
// it: always available, never busy, never any data. The concrete handles
// (shared folder, Drive, iCloud) name their service (service()), to which
// has_data, read, write and debug_info go by the file's name.

#include <iosfwd>
#include <string>

class TVCloudService;

class TVCloudFile
{
public:
    // Reserved beside the data files; nothing uses it.
    static constexpr const char* C_AttrExtension = ".attr";

    enum E_State {
        E_StateInitialising = 0,
        E_StateOff = 1,
        E_StateDownloading = 2,
        E_StateUploading = 3,
        E_StateIdle = 4
    };

    TVCloudFile() = default;
    virtual ~TVCloudFile() = default;

    virtual void dump(std::ostream& out, int indent) const;
    // Keeps the name's last part: the same on every device.
    virtual void set_filename(const std::string& name);
    virtual bool is_available();
    virtual bool download_in_progress();
    virtual bool upload_in_progress();
    virtual bool init_in_progress();
    // Another host's copy has bytes waiting.
    virtual bool has_data();
    // The waiting bytes of one other host's copy; empty when none.
    virtual std::string read();
    [[nodiscard]] virtual int write(const std::string& data);
    virtual std::string get_name();
    virtual std::string debug_info();

    // Off, initialising, downloading, uploading or idle, tested in that order.
    int get_state();
    const std::string& get_filename() const { return m_fileName; }

protected:
    // The service behind the handle; null for none.
    virtual TVCloudService* service();

    std::string m_fileName;
};

#endif // TVCLOUDFILE_H
