#include "LibGui/qt/tvqtapp.h"

#include <QFileOpenEvent>

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvapplicationqt.h"
#include "LibGui/qt/tvswipegesturerecognizer.h"

TVQtApp::TVQtApp(int& argc, char** argv) : QApplication(argc, argv)
{
    TVSwipeGesture::C_TVSwipeGestureID = QGestureRecognizer::registerRecognizer(new TVSwipeGestureRecognizer);
}

TVQtApp::~TVQtApp() = default;

bool TVQtApp::event(QEvent* event)
{
    if (event->type() != QEvent::FileOpen)
        return QApplication::event(event);
    if (m_app == nullptr)
        return true;
    auto* open = static_cast<QFileOpenEvent*>(event);
    const std::string file = open->file().toStdString();
    int value = TVErrC_ok;
    try {
        if (!file.empty()) {
            value = m_app->load_file(file);
            if (istvwarn(value))
                tvsysinfo_append(TVLOCATION, "");
        } else if (!open->url().isEmpty()) {
            m_app->url_scheme(open->url());
        }
    } catch (TVErrDetails&) {
        value = get_tverror()->get_value();
        tvsysinfo_append(TVLOCATION, "");
    }
    tvhandle_error(value, TVSevWarning);
    return true;
}
