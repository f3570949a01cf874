#ifndef TVCLOUDSETTINGSFORMQT_H
#define TVCLOUDSETTINGSFORMQT_H

// TVCloudSettingsFormQt: the page of the database settings where the user
// turns the cloud services on and off: a group per service the platform
// has (iCloudGroup, googleGroup, cloudShareGroup; Google's only when the
// program is registered with Google), each with its check and a browse
// button for a file already in the cloud, and infoGroup, with automatic
// or manual saving to the cloud and "Info", the last syncs' story.
//
// read_form turns on a service by a new link (taking the cloud's data in
// when this database holds nothing of the user's yet, merging otherwise)
// and off by dropping the link. initialise before use; the database and
// the workspace must outlive the page.

#include "LibGui/qt/tvsettingsformqt.h"

#include <string>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class TVCloudService;
class TVDatabase;
class TVDBManagerQt;

class TVCloudSettingsFormQt : public TVSettingsFormQt
{
    Q_OBJECT

public:
    static constexpr const char* C_MergeTitle = "Cloud Merge Information";

    explicit TVCloudSettingsFormQt(QWidget* parent = nullptr);
    ~TVCloudSettingsFormQt() override;

    void initialise(TVDatabase& db, TVDBManagerQt& manager);
    void update_display() override;
    [[nodiscard]] int read_form() const override;

public slots:
    void info_pressed();
    void cloud_share_toggled();
    void google_init();
    void google_browse();
    void icloud_browse();
    void share_browse();
    void do_update_display();

private:
    // One service's turn of read_form.
    [[nodiscard]] int read_service(int type, bool on, TVCloudService& service, bool manual) const;
    void browse(int service);

    TVDatabase* m_db = nullptr;
    TVDBManagerQt* m_manager = nullptr;
    QGroupBox* m_icloudGroup;
    QCheckBox* m_icloudCheck;
    QPushButton* m_icloudBrowse;
    QGroupBox* m_googleGroup;
    QCheckBox* m_googleCheck;
    QPushButton* m_googleInit;
    QPushButton* m_googleBrowse;
    QGroupBox* m_shareGroup;
    QCheckBox* m_shareCheck;
    QPushButton* m_shareBrowse;
    QGroupBox* m_infoGroup;
    QCheckBox* m_autoCheck;
    QPushButton* m_infoButton;
    QLabel* m_privacyLabel;
};

#endif // TVCLOUDSETTINGSFORMQT_H
