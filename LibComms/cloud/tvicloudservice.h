#ifndef TVICLOUDSERVICE_H
#define TVICLOUDSERVICE_H

// TViCloudService: the cloud service over the application's iCloud
// container. On this platform it is switched off: it exists and its thread
// runs, waking every C_WaitMs, but it names no index and no file, so it
// never holds one. A build with iCloud would name them through icloud_name.

#include "LibComms/cloud/tvcloudservice.h"

#include <string>

class TViCloudService : public TVCloudService
{
public:
    // Made, and its thread started, at first use.
    static TViCloudService* instance();

    TViCloudService();
    ~TViCloudService() override;

    static bool has_icloud();
    bool icloud_available() const;
    // The path of a name in the container; empty where there is none.
    std::string icloud_name(const std::string& name) const;

    [[nodiscard]] int send(const std::string& name, const std::string& data) override;
    [[nodiscard]] int check_thread() override;
    std::string index_file_name() const override;
    std::string cloud_name(const std::string& name) const override;

private:
    bool m_containerFound = false;
    bool m_enabled = false;
};

#endif // TVICLOUDSERVICE_H
