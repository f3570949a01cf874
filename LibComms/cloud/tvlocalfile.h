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
    bool has_data() override;
    std::string read() override;
    [[nodiscard]] int write(const std::string& data) override;
    std::string get_name() override;
    std::string debug_info() override;
};

#endif // TVLOCALFILE_H
