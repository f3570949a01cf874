#ifndef TVLOCALSERVICE_H
#define TVLOCALSERVICE_H

// TVLocalService: the cloud service over a shared folder the user picks (a
// network drive, a folder the family's own sync client keeps equal on
// every computer). What carries the files between devices is outside the
// program. The folder is process-wide and comes back from the system
// parameter "CloudShareDir" at start; with none, the index path names no
// real file and the service rests.
//
//   index       folder "/" application "-Local-" "index.txt"
//   data file   folder "/" host "@" base name
//
// No thread: the checks run on the caller's thread in has_data, fetch and
// file_list. Own host's records are read too; the database ignores its own
// write when it sees it.

#include "LibComms/cloud/tvcloudservice.h"

#include <string>

class TVLocalService : public TVCloudService
{
public:
    static constexpr const char* C_CloudShareParam = "CloudShareDir";
    static constexpr const char* C_CloudShareBookmark = "CloudShareBookmark";

    // Made at first use; lives to the end of the process.
    static TVLocalService* instance();
    // For tests that play several devices in one process: puts service in
    // the singleton's place (null: the process's own again) and gives the
    // one that was there. The caller keeps ownership of what it installs.
    static TVLocalService* swap_instance(TVLocalService* service);

    TVLocalService();
    void set_defaults(bool constructing);

    static std::string get_syncdir();
    // path is the folder, or a file the user picked inside it; the folder
    // is stored in "CloudShareDir" and, for a picked file, a bookmark of
    // it. TVErrC_FileNotExist, naming the path, when it is no folder and
    // lies in none.
    [[nodiscard]] static int set_syncdir(const std::string& path);
    static std::string local_name(const std::string& name);

    [[nodiscard]] int send(const std::string& name, const std::string& data) override;
    [[nodiscard]] int check_thread() override;
    std::string index_file_name() const override;
    std::string cloud_name(const std::string& name) const override;

private:
    static std::string& sync_dir();
};

#endif // TVLOCALSERVICE_H
