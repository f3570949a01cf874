#ifndef TVCLOUDINSTANCE_H
#define TVCLOUDINSTANCE_H

// TVCloudInstance: the transport of one link to a shared copy: the file
// handle of the link's service, chosen by its type. A type with no service
// in this build has no handle: the link is off (not available, state 1),
// has no data, and a write does nothing.

#include <memory>
#include <string>

class TVCloudFile;

class TVCloudInstance
{
public:
    // Character codes: 'g' Google Drive, 'i' iCloud, 'l' shared folder, 'n' none.
    enum E_FileType { E_GDrive = 103, E_ICloud = 105, E_LocalShare = 108, E_None = 110 };

    TVCloudInstance();
    TVCloudInstance(const TVCloudInstance& other);
    TVCloudInstance& operator=(const TVCloudInstance& other);
    ~TVCloudInstance();

    static E_FileType to_file_type(int type);
    // Types whose service keeps a name per file.
    static bool filename_based(int type);
    // Nothing to do here; the pull calls it before reading the links.
    static void refresh_cloud();

    // A new handle when the type changes; the name goes to the handle.
    int set_file(E_FileType type, const std::string& name);

    bool is_available();
    bool download_in_progress();
    bool upload_in_progress();
    bool init_in_progress();
    bool has_new_data();
    int get_state();
    std::string read();
    [[nodiscard]] int write(const std::string& data);
    std::string get_name();
    std::string debug_info();
    E_FileType get_type() const { return m_fileType; }

private:
    std::unique_ptr<TVCloudFile> m_file;
    E_FileType m_fileType = E_None;
    std::string m_fileName;
};

#endif // TVCLOUDINSTANCE_H
