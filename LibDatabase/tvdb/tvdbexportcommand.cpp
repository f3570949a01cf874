#include "LibDatabase/tvdb/tvdbexportcommand.h"

#include "LibDatabase/db/tvdatabase.h"

#include <ostream>

void TVDBExportCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb export [--app NAME] DBFILE OUT [--app-type TYPE]\n"
           "\n"
           "Writes the whole of DBFILE (with the changes of its partial file) to OUT,\n"
           "a database file that another installation can open. OUT is written whole\n"
           "or not at all, and read back before the command ends. DBFILE is only read.\n"
           "\n"
           "  --app-type TYPE  the application type the copy claims (DBFILE keeps its own)\n"
           "  --app NAME       the application whose folders hold DBFILE's side files\n"
           "\n"
           "Exit status: 0 written, 1 DBFILE did not load or OUT could not be written,\n"
           "2 a wrong command line.\n";
}

int TVDBExportCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                                  std::ostream& out, std::ostream& err)
{
    if (extra.size() != 1) {
        err << "Usage: tvdb export [--app NAME] DBFILE OUT [--app-type TYPE]\n";
        return C_ExitUsage;
    }
    const std::string type = m_options["--app-type"];
    if (istvwarn(db.export_db(extra[0], nullptr, true, type))) {
        err << "tvdb export: " << take_messages();
        return C_ExitFailed;
    }
    int live = 0;
    for (int i = 0; i < db.get_nobjects(); ++i)
        live += db.get_object_by_index(i)->is_deleted() ? 0 : 1;
    out << "Exported " << live << " objects of " << db.get_filename() << " to " << extra[0];
    if (!type.empty())
        out << " as a " << type << " data file";
    out << "\n";
    return C_ExitOk;
}
