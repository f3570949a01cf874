#include "LibDatabase/qt/tvcloudbuttonqt.h"

#include "LibComms/cloud/tvcloudfile.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/base/tvwindow.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"

TVCloudButtonQt::TVCloudButtonQt(TVDBManagerQt* manager, QWidget* parent)
    : QPushButton(parent), m_manager(manager)
{
    setObjectName("cloudButton");
    set_defaults(true);
}

void TVCloudButtonQt::set_defaults(bool)
{
    setFlat(true);
    const bool mobile = TVWindow::is_mobile();
    setIconSize(mobile ? QSize(30, 30) : QSize(24, 24));
    setFixedSize(mobile ? QSize(42, 40) : QSize(28, 28));
    setToolTip("Save to the cloud now.");
    set_icon(C_CloudOK);
    connect(this, &QPushButton::clicked, this, &TVCloudButtonQt::push);
    if (m_manager != nullptr)
        connect(m_manager, &TVDBManagerQt::push_state_changed, this,
                &TVCloudButtonQt::update_state);
    if (TVWindow::has_gdrive())
        connect(TVGoogleService::instance(), &TVGoogleService::state_changed, this,
                &TVCloudButtonQt::update_state);
}

void TVCloudButtonQt::set_icon(const char* icon)
{
    if (m_icon == icon)
        return;
    m_icon = icon;
    setIcon(QIcon(icon));
}

void TVCloudButtonQt::update_state()
{
    if (m_manager == nullptr)
        return;
    if (!m_manager->has_cloud()) {
        hide();
        return;
    }
    show();
    m_needsPush = m_manager->needs_push();
    switch (m_manager->get_database().get_cloud_state()) {
    case TVCloudFile::E_StateInitialising:
        return set_icon(C_CloudInit);
    case TVCloudFile::E_StateOff:
        return set_icon(C_CloudOff);
    case TVCloudFile::E_StateDownloading:
        return set_icon(C_CloudDown);
    case TVCloudFile::E_StateUploading:
        return set_icon(C_CloudUp);
    default:
        return set_icon(m_needsPush ? C_CloudPush : C_CloudOK);
    }
}

void TVCloudButtonQt::push()
{
    if (m_manager == nullptr)
        return;
    if (m_manager->get_database().get_cloud_state() == TVCloudFile::E_StateOff) {
        TVMessageBoxQt::information("Push to Cloud", "Cloud service not available.", this);
        update_state();
        return;
    }
    const int result = tvslotcall::call([this] { return m_manager->user_push(); });
    if (tvhandle_error(result, TVSevError) > 2)
        return;
    update_state();
}
