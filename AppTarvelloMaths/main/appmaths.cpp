#include "AppTarvelloMaths/main/appmaths.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <memory>
#include <ostream>

#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/qt/art/mathsimages.h"
#include "AppTarvelloMaths/qt/mathsmainqt.h"
#include "LibComms/cloud/tvcloudservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamfile.h"
#include "LibCore/param/tvparamvaluegroup.h"
#include "LibDate/date/tvdateparser.h"

const char* const AppMaths::C_FileExtension = ".tvmaths";

TVAppIdentity AppMaths::identity()
{
    TVAppIdentity id;
    id.m_application = "TarvelloMaths";
    id.m_title = "Tarvello Maths";
    id.m_extension = C_FileExtension;
    id.m_release = "2.0.0";
    id.m_tag = "TarvelloMaths-2-0-0-8";
    id.m_date = "02-Nov-2022";
    id.m_description = "Maths Tutorials and Exercises";
    id.m_logo = ":///TarvelloMathsImages/images/128/TarvelloMaths.png";
    id.m_company = "Tarvello";
    id.m_domain = "tarvello.org";
    id.m_copyright = "Copyright (c) 2022 Tarvello";
    id.m_authors = "The Tarvello Maths developers";
    id.m_email = "maths@tarvello.org";
    id.m_web = "https://tarvello.org";
    id.m_website = "https://tarvello.org/maths";
    return id;
}

AppMaths::AppMaths(int argc, char** argv, TVQtApp& app) : TVApplicationQt(argc, argv, identity(), app)
{
    // The pictures, icons and help pages sit in a static library.
    maths_init_images();
    // The launcher entry's name, by which a Wayland desktop gives the
    // windows their icon and groups them under the program.
    QGuiApplication::setDesktopFileName("org.tarvello.Maths");
    m_mathsDB.clear();
}

AppMaths::~AppMaths()
{
    // The window refers to the database: it goes first.
    delete m_mainWindow.data();
}

void AppMaths::dump(std::ostream& out, int indent) const
{
    TVApplication::dump(out, indent);
    TVDump dump("AppMaths", out, indent);
    dump.add_entry("mathsDB", m_mathsDB);
}

int AppMaths::load_file(const std::string& file)
{
    m_mathsDB = file;
    m_openRequest = file;
    return TVErrC_ok;
}

int AppMaths::parameters(TVParam& /*param*/, TVParamCmdLine& cmdline, TVParamFile& file)
{
    for (TVParamCmdLine* target : {&cmdline, static_cast<TVParamCmdLine*>(&file)}) {
        TVParamValueGroup& group = target->add_value_group("", "", "Specify the maths DB to load");
        group.add_option_group("DB", "Options for standard database mode.");
        group.add_value(std::make_unique<TVParamValue>("maths", "Name of the maths DB file.", false, &m_mathsDB));
    }
    return TVErrC_ok;
}

int AppMaths::run()
{
    try {
        if (!m_openRequest.empty())
            m_mathsDB = m_openRequest;
        // Reminders and schedules read dates as text.
        tv_install_date_parser();
        // The cloud services, before the file comes in. The program's
        // registration with Google is the user's configuration; without
        // it there is no Drive.
        TVParam* param = tvparam();
        TV_PASS_ON(TVCloudService::start_services(
            param->get_system_value(TVGoogleService::C_ClientIdTag),
            param->get_system_value(TVGoogleService::C_ClientSecretTag)));
        m_db = std::make_unique<MathsDB>();
        MathsDB::add_database(m_db.get());
        m_mainWindow = new MathsMainQt(*m_db, nullptr);
        m_mainWindow->setAttribute(Qt::WA_DeleteOnClose);
        TV_PASS_ON(m_mainWindow->start(m_mathsDB, false, 60000, 300000, "maths", 0));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
