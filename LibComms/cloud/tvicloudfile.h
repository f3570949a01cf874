#ifndef TVICLOUDFILE_H
#define TVICLOUDFILE_H

// TViCloudFile: a link's file in the iCloud container (TViCloudService).
// Not available on this platform.

#include "LibComms/cloud/tvcloudfile.h"

#include <string>

class TViCloudFile : public TVCloudFile
{
public:
    explicit TViCloudFile(const std::string& name);

    bool is_available() override;
    bool init_in_progress() override;
    std::string get_name() override;

protected:
    TVCloudService* service() override;
};

#endif // TVICLOUDFILE_H
