#include "LibDatabase/tvdb/tvdbcheckcommand.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbtransaction.h"

#include <map>
#include <ostream>

void TVDBCheckCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb check [--app NAME] FILE\n"
           "\n"
           "Loads FILE read-only, with its partial file and transaction log, and\n"
           "prints its application type, next id, objects by class and log.\n"
           "\n"
           "  --app NAME  the application whose folders hold the side files\n"
           "\n"
           "Exit status: 0 loaded, 1 the load failed (its message on stderr),\n"
           "2 a wrong command line.\n";
}

int TVDBCheckCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& /*extra*/,
                                 std::ostream& out, std::ostream& /*err*/)
{
    // Sorted by class name, so that the output is the same on every run.
    std::map<std::string, std::pair<int, int>> classes; // live, deleted
    for (int i = 0; i < db.get_nobjects(); ++i) {
        const TVDBObject* object = db.get_object_by_index(i);
        auto& count = classes[object->get_class_name()];
        ++(object->is_deleted() ? count.second : count.first);
    }
    out << "file: " << db.get_filename() << "\n"
        << "application type: " << db.get_app_type() << "\n"
        << "next id: " << db.next_id() << "\n"
        << "objects: " << db.get_nobjects() << "\n";
    for (const auto& entry : classes) {
        out << "  " << entry.first << ": " << entry.second.first;
        if (entry.second.second > 0)
            out << " (+" << entry.second.second << " deleted)";
        out << "\n";
    }
    const TVDBIndex& index = db.get_index();
    int undone = 0;
    for (int id = 0; id < index.size(); ++id)
        if (index.get_status(id) != 0)
            ++undone;
    out << "transactions: " << index.size() << " (" << undone << " undone)\n"
        << "last save: " << index.get_last_save() << "\n";
    // Undo and redo positions will join here once the engine keeps them.
    return C_ExitOk;
}
