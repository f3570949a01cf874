#include "AppTarvelloMaths/main/appmaths.h"

#include <QCoreApplication>
#include <memory>
#include <ostream>

#include "AppTarvelloMaths/qt/art/mathsimages.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamfile.h"
#include "LibCore/param/tvparamvaluegroup.h"

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
    m_mathsDB.clear();
}

AppMaths::~AppMaths() = default;

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
    if (!m_openRequest.empty())
        m_mathsDB = m_openRequest;
    // The windows come later; until then say so once and end the loop so
    // that the program returns. The warning is settled here rather than
    // carried up, where every level would echo it again.
    const int value = tvwarnuser(TVErrC_InvalidState, TVLOCATION,
                                 "Tarvello Maths has no window yet; nothing to show for %s.",
                                 m_mathsDB.empty() ? "the last file" : m_mathsDB.c_str());
    get_tverror()->clear_all();
    QCoreApplication::exit(TVErrC_ok);
    return istvwarn(value) ? TVErrC_ok : value;
}
