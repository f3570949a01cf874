#include "LibDatabase/tvdb/tvdbimportcommand.h"

#include "LibDatabase/db/tvdatabase.h"

#include <ostream>

void TVDBImportCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb import [--app NAME] DBFILE SOURCE\n"
           "\n"
           "Merges the objects of the database file SOURCE into DBFILE, as the\n"
           "program's Import > Merge does: they come in under new numbers, with their\n"
           "links kept, SOURCE's object specs beside DBFILE's (one of the same name\n"
           "and other text under a new name), as one operation that the program can\n"
           "undo. DBFILE is then saved. SOURCE is only read.\n"
           "\n"
           "DBFILE must not be open in the program. Exit status: 0 merged, 1 DBFILE\n"
           "or SOURCE did not load (DBFILE is left as it was), 2 a wrong command line.\n";
}

int TVDBImportCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                                  std::ostream& out, std::ostream& err)
{
    if (extra.size() != 1) {
        err << "Usage: tvdb import [--app NAME] DBFILE SOURCE\n";
        return C_ExitUsage;
    }
    if (istvwarn(db.import_db(extra[0], nullptr)) || istvwarn(db.save(false, false, true))) {
        err << "tvdb import: " << take_messages();
        return C_ExitFailed;
    }
    out << "Imported " << db.get_import_count() << " objects from " << extra[0] << " into "
        << db.get_filename() << "\n";
    return C_ExitOk;
}
