#ifndef TVLOCALFILE_H
#define TVLOCALFILE_H

// TVLocalFile: a link's file in the shared folder (TVLocalService).

#include "LibComms/cloud/tvcloudfile.h"

#include <string>

class TVLocalFile : public TVCloudFile
{
public:
    explicit TVLocalFile(const std::string& name);

    bool is_available() override;
    bool init_in_progress() override;
    std::string get_name() override;

protected:
    TVCloudService* service() override;
};

#endif // TVLOCALFILE_H
