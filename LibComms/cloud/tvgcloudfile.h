#ifndef TVGCLOUDFILE_H
#define TVGCLOUDFILE_H

// TVGCloudFile: a link's file in the Google Drive mirror (TVGCloudService).
// Available where the platform has Drive and the program is registered
// with Google; initialising until the first answer from Drive; busy while
// the web service lists, downloads or uploads.

#include "LibComms/cloud/tvcloudfile.h"

#include <string>

class TVGCloudFile : public TVCloudFile
{
public:
    explicit TVGCloudFile(const std::string& name);

    bool is_available() override;
    bool download_in_progress() override;
    bool upload_in_progress() override;
    bool init_in_progress() override;
    std::string get_name() override;

protected:
    TVCloudService* service() override;
};

#endif // TVGCLOUDFILE_H
