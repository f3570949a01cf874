#include "LibDatabase/tvdb/tvdbsynccommand.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvlog.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"

#include <ostream>

namespace {
// Pulls as the program's timer does: until two asks in a row find nothing
// new (the first ask for a new peer's file only marks it wanted).
constexpr int C_MaxPulls = 50;
} // namespace

void TVDBSyncCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb sync [--app NAME] FILE --share DIR [--host NAME]\n"
           "\n"
           "One round of sync between FILE and the shared folder DIR, as the program\n"
           "that owns FILE does it: DIR becomes that program's shared folder, FILE is\n"
           "linked to it if it isn't yet, every other device's copy in DIR is pulled\n"
           "(ignored, merged, or taking the place of FILE's data when FILE has nothing\n"
           "the other lacks; the data replaced stays as FILE's newest backup), and a\n"
           "save writes FILE's own copy to DIR. Prints what each pull did.\n"
           "\n"
           "  --share DIR  the shared folder (a folder the devices' own sync keeps equal)\n"
           "  --host NAME  write under this device name instead of the machine's\n"
           "  --app NAME   the application whose folders hold FILE's side files\n"
           "\n"
           "FILE must not be open in the program. Exit status: 0 done, 1 FILE did not\n"
           "load or DIR is missing or can't be written (FILE is left as it was),\n"
           "2 a wrong command line.\n";
}

int TVDBSyncCommand::prepare(TVApplication& application, const std::string& file,
                             std::ostream& err)
{
    const std::string share = m_options["--share"];
    if (share.empty()) {
        err << "Usage: tvdb sync [--app NAME] FILE --share DIR [--host NAME]\n";
        return C_ExitUsage;
    }
    if (!tv_dir_exists(share)) {
        err << "tvdb sync: the shared folder " << share << " does not exist; " << file
            << " is left as it was.\n";
        return C_ExitFailed;
    }
    if (!tv_dir_writable(share)) {
        err << "tvdb sync: the shared folder " << share << " can't be written; " << file
            << " is left as it was.\n";
        return C_ExitFailed;
    }
    TVCloudService::override_host(m_options["--host"]);
    // The program's own settings: the folder chosen here is the one the
    // program syncs with from now on.
    if (istvwarn(application.setup_config()))
        get_tverror()->clear_all();
    if (istvwarn(TVLocalService::set_syncdir(share))) {
        err << "tvdb sync: " << take_messages();
        return C_ExitFailed;
    }
    get_tverror()->clear_all();
    return C_ExitOk;
}

int TVDBSyncCommand::run_loaded(TVDatabase& db, const std::vector<std::string>&,
                                std::ostream& out, std::ostream& err)
{
    const std::string name = tv_basename(db.get_filename());
    bool linked = false;
    for (int i = 0; i < db.get_nexternals(); ++i)
        linked = linked || (db.get_external_no(i)->get_dbtype() == TVCloudInstance::E_LocalShare &&
                            db.get_external_no(i)->get_name() == name);
    const std::string before = tvlog()->read(TVDatabase::C_DatabaseService);
    if (!linked) {
        TVExternalDB* link = nullptr;
        if (istvwarn(db.add_external(TVCloudInstance::E_LocalShare, name, 2, link))) {
            err << "tvdb sync: " << take_messages();
            return C_ExitFailed;
        }
        out << "Linked " << db.get_filename() << " to " << TVLocalService::get_syncdir() << "\n";
    }
    for (int i = 0; i < C_MaxPulls; ++i) {
        if (istvwarn(db.pull_all(!db.needs_save()))) {
            err << "tvdb sync: " << take_messages();
            return C_ExitFailed;
        }
        if (db.sync_state() == 1 && !db.has_ext_data() && !db.has_ext_data())
            break;
    }
    const int saved = db.save(true, true, true);
    const std::string after = tvlog()->read(TVDatabase::C_DatabaseService);
    std::string lines =
        after.compare(0, before.size(), before) == 0 ? after.substr(before.size()) : after;
    while (!lines.empty() && lines.front() == '\n')
        lines.erase(0, 1);
    out << lines;
    if (!lines.empty() && lines.back() != '\n')
        out << "\n";
    // A push that failed leaves FILE saved here and says why.
    const std::string messages = take_messages();
    if (istvwarn(saved) || !messages.empty()) {
        err << "tvdb sync: " << messages;
        return C_ExitFailed;
    }
    return C_ExitOk;
}
