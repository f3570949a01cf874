#include "LibDatabase/qt/tvcloudsettingsformqt.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvicloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparam.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/qt/tvcloudbrowseqt.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/base/tvwindow.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"
#include "LibObject/object/tvtrail.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

// The privacy page's address: the program's setting, or its web site's.
const char* const C_PrivacyParam = "PrivacyPage";

QGroupBox* group(QVBoxLayout* page, const char* name, const char* title)
{
    auto* box = new QGroupBox(title);
    box->setObjectName(name);
    box->setLayout(new QVBoxLayout);
    page->addWidget(box);
    return box;
}

template <class T>
T* add(QGroupBox* box, const char* name, const char* text)
{
    auto* widget = new T(text);
    widget->setObjectName(name);
    box->layout()->addWidget(widget);
    return widget;
}

// Room for two lines: a stacked page doesn't ask a wrapped label its height.
void note(QGroupBox* box, const char* text)
{
    auto* label = add<QLabel>(box, "", text);
    label->setWordWrap(true);
    label->setMinimumHeight(2 * label->fontMetrics().lineSpacing() + 4);
}

bool has_link(const TVDatabase* db, int type)
{
    return db != nullptr && db->get_external_type(type) != nullptr;
}

} // namespace

TVCloudSettingsFormQt::TVCloudSettingsFormQt(QWidget* parent) : TVSettingsFormQt(parent)
{
    setObjectName("TVCloudSettingsFormQt");
    setWindowTitle("Cloud");
    auto* page = new QVBoxLayout(this);

    m_icloudGroup = group(page, "iCloudGroup", "iCloud");
    note(m_icloudGroup, "Save the application to iCloud to backup and share between devices.");
    m_icloudCheck = add<QCheckBox>(m_icloudGroup, "icloudCheck", "Save to iCloud");
    m_icloudBrowse = add<QPushButton>(m_icloudGroup, "iCloudBrowse", "Select File");

    m_googleGroup = group(page, "googleGroup", "Google Drive");
    m_googleCheck = add<QCheckBox>(m_googleGroup, "googleCheck", "Save to Google Drive");
    m_googleInit = add<QPushButton>(m_googleGroup, "googleInit", "Sign In");
    m_googleBrowse = add<QPushButton>(m_googleGroup, "googleBrowse", "Select File");

    m_shareGroup = group(page, "cloudShareGroup", "Cloud Share");
    m_shareCheck = add<QCheckBox>(m_shareGroup, "shareCheck", "Save to Cloud Share");
    m_shareBrowse = add<QPushButton>(m_shareGroup, "shareBrowse", "Select File");

    m_infoGroup = group(page, "infoGroup", "Cloud Information");
    note(m_infoGroup, "If automatic, save to iCloud automatically, if manual you decide when to "
                      "save to cloud (to use less data)");
    m_autoCheck = add<QCheckBox>(m_infoGroup, "cloudAutoCheck", "Automatic Save");
    note(m_infoGroup, "Show details of the last time we synced with the cloud.");
    m_infoButton = add<QPushButton>(m_infoGroup, "infoButton", "Info");
    std::string privacy = tvparam()->get_system_value(C_PrivacyParam);
    if (privacy.empty())
        privacy = tvapplication()->get_website() + "/privacy.html";
    m_privacyLabel = add<QLabel>(m_infoGroup, "privacyLabel", "");
    m_privacyLabel->setText(QString::fromStdString("<a href=\"" + privacy + "\">Privacy</a>"));
    m_privacyLabel->setOpenExternalLinks(true);
    page->addStretch(1);

    connect(m_infoButton, &QPushButton::clicked, this, &TVCloudSettingsFormQt::info_pressed);
    connect(m_shareCheck, &QCheckBox::toggled, this, &TVCloudSettingsFormQt::cloud_share_toggled);
    connect(m_googleCheck, &QCheckBox::toggled, this, &TVCloudSettingsFormQt::do_update_display);
    connect(m_icloudCheck, &QCheckBox::toggled, this, &TVCloudSettingsFormQt::do_update_display);
    connect(m_googleInit, &QPushButton::clicked, this, &TVCloudSettingsFormQt::google_init);
    connect(m_googleBrowse, &QPushButton::clicked, this, &TVCloudSettingsFormQt::google_browse);
    connect(m_icloudBrowse, &QPushButton::clicked, this, &TVCloudSettingsFormQt::icloud_browse);
    connect(m_shareBrowse, &QPushButton::clicked, this, &TVCloudSettingsFormQt::share_browse);
    connect(TVGoogleService::instance(), &TVGoogleService::state_changed, this,
            &TVCloudSettingsFormQt::update_display);
}

TVCloudSettingsFormQt::~TVCloudSettingsFormQt() = default;

void TVCloudSettingsFormQt::initialise(TVDatabase& db, TVDBManagerQt& manager)
{
    m_db = &db;
    m_manager = &manager;
}

void TVCloudSettingsFormQt::update_display()
{
    const QSignalBlocker icloudBlock(m_icloudCheck);
    const QSignalBlocker googleBlock(m_googleCheck);
    const QSignalBlocker shareBlock(m_shareCheck);
    // Browsing is choosing among the files already there.
    const auto browsable = [](TVCloudService& service) { return service.file_list().size() >= 2; };

    m_icloudGroup->setVisible(TVWindow::has_icloud());
    if (TVWindow::has_icloud()) {
        m_icloudCheck->setChecked(has_link(m_db, TVCloudInstance::E_ICloud));
        m_icloudCheck->setEnabled(m_icloudCheck->isChecked() || TViCloudService::has_icloud());
        m_icloudBrowse->setEnabled(browsable(*TViCloudService::instance()));
    }

    TVGoogleService* google = TVGoogleService::instance();
    m_googleGroup->setVisible(TVWindow::has_gdrive() && google->is_available());
    if (m_googleGroup->isVisibleTo(this)) {
        const bool linked = has_link(m_db, TVCloudInstance::E_GDrive);
        m_googleCheck->setChecked(linked);
        if (google->is_authorised()) {
            m_googleInit->setText("Sign Out");
            m_googleBrowse->setEnabled(browsable(*TVGCloudService::instance()));
            m_googleCheck->setEnabled(true);
        } else {
            m_googleInit->setText("Sign In");
            m_googleBrowse->setEnabled(false);
            m_googleCheck->setEnabled(linked);
        }
    }

    m_shareGroup->setVisible(TVWindow::has_cloudshare());
    if (TVWindow::has_cloudshare()) {
        m_shareCheck->setChecked(has_link(m_db, TVCloudInstance::E_LocalShare));
        m_shareBrowse->setEnabled(browsable(*TVLocalService::instance()));
    }

    const int links = m_db != nullptr ? m_db->get_nexternals() : 0;
    m_autoCheck->setChecked(links == 0 || !m_db->get_external_no(links - 1)->get_manual());
}

int TVCloudSettingsFormQt::read_form() const
{
    try {
        if (m_db == nullptr)
            return tvwarning(TVErrC_InvalidState, TVLOCATION,
                             "The cloud settings have no database to change.");
        const bool manual = !m_autoCheck->isChecked();
        if (TVWindow::has_icloud())
            TV_PASS_ON(read_service(TVCloudInstance::E_ICloud, m_icloudCheck->isChecked(),
                                    *TViCloudService::instance(), manual));
        // Without the program's registration the group is hidden, and a
        // Drive link stays as it is.
        if (TVWindow::has_gdrive() && TVGoogleService::instance()->is_available())
            TV_PASS_ON(read_service(TVCloudInstance::E_GDrive, m_googleCheck->isChecked(),
                                    *TVGCloudService::instance(), manual));
        if (TVWindow::has_cloudshare())
            TV_PASS_ON(read_service(TVCloudInstance::E_LocalShare, m_shareCheck->isChecked(),
                                    *TVLocalService::instance(), manual));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVCloudSettingsFormQt::read_service(int type, bool on, TVCloudService& service,
                                        bool manual) const
{
    try {
        if (!on) {
            m_db->remove_external(type);
            return TVErrC_ok;
        }
        TVExternalDB* link = m_db->get_external_type(type);
        if (link == nullptr) {
            // Data in the cloud comes in whole to a database that holds
            // nothing of the user's yet, and is merged into one that does.
            const std::string name = tv_basename(m_db->get_filename());
            const bool in_cloud = !service.file_list().empty();
            const int mode = in_cloud && !m_db->has_user_data() ? 1 : 2;
            TV_PASS_ON(m_db->add_external(type, name, mode, link));
            // The mirror runs from now on (after the sign-in, if that is
            // still to come).
            if (type == TVCloudInstance::E_GDrive)
                TV_PASS_ON(TVGoogleService::instance()->start());
        }
        link->set_manual(manual);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVCloudSettingsFormQt::info_pressed()
{
    const std::string details = m_db != nullptr ? m_db->get_merge_details() : std::string();
    TVMessageBoxQt::information(C_MergeTitle, details, this);
}

void TVCloudSettingsFormQt::cloud_share_toggled()
{
    do_update_display();
}

void TVCloudSettingsFormQt::do_update_display()
{
    const int result = tvslotcall::call([this] { return read_form(); });
    update_display();
    (void)tvhandle_error(result, TVSevWarning);
}

void TVCloudSettingsFormQt::google_init()
{
    TVGoogleService* google = TVGoogleService::instance();
    if (google->is_authorised()) {
        google->authorise(false);
    } else {
        if (TVWindow::is_ios())
            TVMessageBoxQt::information(
                "Google Drive",
                "After you have been through several forms, the browser will seem to take a long "
                "time to load... Return to this app and the process should complete.",
                this);
        google->authorise(true);
    }
    update_display();
}

void TVCloudSettingsFormQt::google_browse()
{
    browse(TVCloudBrowseQt::E_Google);
}

void TVCloudSettingsFormQt::icloud_browse()
{
    browse(TVCloudBrowseQt::E_ICloud);
}

void TVCloudSettingsFormQt::share_browse()
{
    browse(TVCloudBrowseQt::E_Share);
}

void TVCloudSettingsFormQt::browse(int service)
{
    if (m_manager == nullptr)
        return;
    (void)tvhandle_error(tvslotcall::call([&] { return m_manager->cloud_browse(service); }),
                         TVSevWarning);
    update_display();
}
