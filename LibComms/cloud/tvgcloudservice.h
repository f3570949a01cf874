#ifndef TVGCLOUDSERVICE_H
#define TVGCLOUDSERVICE_H

// TVGCloudService: the cloud service over the Google Drive mirror, a plain
// folder in the cache that TVGoogleService keeps equal to the Drive's
// application-data space. Everything of the shared place works here as on
// a shared folder; the web layer only carries the folder's files.
//
//   index       folder "/" application "-Google-" "index.txt"
//   data file   folder "/" host "@" base name
//
// No thread: the checks run on the caller's thread. Own host's records are
// not read back (a download never brings our own file anew).

#include "LibComms/cloud/tvcloudservice.h"

#include <string>

class TVGCloudService : public TVCloudService
{
public:
    static constexpr const char* C_GDriveDir = "GoogleDrive";

    // Made at first use; lives to the end of the process.
    static TVGCloudService* instance();
    // For tests that play several devices in one process; as
    // TVLocalService::swap_instance.
    static TVGCloudService* swap_instance(TVGCloudService* service);
    // The program's mirror: the cache folder "/" C_GDriveDir.
    static std::string google_dir();

    TVGCloudService();

    // The mirror of this service; google_dir() unless a test gave another.
    const std::string& get_folder() const { return m_folder; }
    void set_folder(const std::string& folder);
    std::string gcloud_name(const std::string& name) const;
    // Makes the mirror folder when it is missing.
    [[nodiscard]] int check_google_dir();

    [[nodiscard]] int send(const std::string& name, const std::string& data) override;
    [[nodiscard]] int check_thread() override;
    std::string index_file_name() const override;
    std::string cloud_name(const std::string& name) const override;

private:
    std::string m_folder;
};

#endif // TVGCLOUDSERVICE_H
