#include "LibDatabase/qt/tvcloudbrowseqt.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibGui/base/tvmessagebox.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibObject/object/tvtrail.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QProgressDialog>
#include <QTimer>

#include <functional>
#include <vector>

namespace {

std::string& wait_text()
{
    static std::string text;
    return text;
}

// Runs the event loop until done holds (true), or the user cancels or the
// cloud stays silent too long (false).
bool wait_for(QWidget* parent, const char* text, const std::function<bool()>& done)
{
    if (done())
        return true;
    QProgressDialog dialog(text, "Cancel", 0, 0, parent);
    dialog.setObjectName("cloudWait");
    dialog.setWindowTitle("Cloud");
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumDuration(0);
    wait_text() = text;
    QEventLoop loop;
    QElapsedTimer clock;
    clock.start();
    bool found = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        found = done();
        if (found || clock.elapsed() > TVCloudBrowseQt::C_WaitLimitMs)
            loop.quit();
    });
    QObject::connect(&dialog, &QProgressDialog::canceled, &loop, &QEventLoop::quit);
    poll.start(TVCloudBrowseQt::C_PollMs);
    dialog.show();
    loop.exec();
    wait_text().clear();
    return found;
}

} // namespace

const std::string& TVCloudBrowseQt::waiting()
{
    return wait_text();
}

int TVCloudBrowseQt::choose(QWidget* parent, int service, int& type, std::string& name)
{
    try {
        name.clear();
        TVCloudService* cloud = nullptr;
        if (service == E_Share) {
            const std::string picked = TVFileSelectQt::get_open_file(
                parent, "Select File", TVLocalService::get_syncdir(), "*");
            if (picked.empty())
                return TVErrC_okCancel;
            TV_PASS_ON(TVLocalService::set_syncdir(picked));
            type = TVCloudInstance::E_LocalShare;
            cloud = TVLocalService::instance();
        } else if (service == E_Google && TVGoogleService::instance()->is_available()) {
            TVGoogleService* google = TVGoogleService::instance();
            const int started = google->start();
            if (istvwarn(started))
                return tv_trail_return(started, TVLOCATION);
            google->wake_up();
            type = TVCloudInstance::E_GDrive;
            cloud = TVGCloudService::instance();
        } else {
            const char* what = service == E_Google ? "Google Drive" : "iCloud";
            return tvwarning(TVErrC_InvalidState, TVLOCATION,
                             "%s is not available on this computer.", what);
        }

        std::vector<std::string> names;
        if (!wait_for(parent, C_WaitList, [&] { return !(names = cloud->file_list()).empty(); }))
            return TVErrC_okCancel;
        name = names.front();
        if (names.size() > 1) {
            // Three at the most, beside Cancel; an empty one hides its button.
            names.resize(3);
            name = TVMessageBoxQt::start(parent, "Select File", "Which file do you want to use?",
                                         names[0], names[1], names[2],
                                         TVMessageBox::C_Cancel);
            if (name.empty() || name == "Cancel")
                return TVErrC_okCancel;
        }
        if (!wait_for(parent, C_WaitFile, [&] { return cloud->has_data(name); }))
            return TVErrC_okCancel;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
