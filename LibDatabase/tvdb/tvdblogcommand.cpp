#include "LibDatabase/tvdb/tvdblogcommand.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbtransaction.h"

#include <ostream>

void TVDBLogCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb log [--app NAME] FILE\n"
           "\n"
           "Loads FILE read-only and prints its transaction log: id, status and\n"
           "operation of each transaction, and the last full save's mark.\n"
           "\n"
           "  --app NAME  the application whose folders hold the side files\n"
           "\n"
           "Exit status: 0 done, 1 the load failed, 2 a wrong command line.\n";
}

int TVDBLogCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& /*extra*/,
                               std::ostream& out, std::ostream& /*err*/)
{
    const TVDBIndex& index = db.get_index();
    for (int id = 0; id < index.size(); ++id) {
        const TVDBTransaction* transaction = index.get_transaction(id);
        out << id << " " << (index.get_status(id) == 0 ? "active" : "undone") << " "
            << (transaction != nullptr ? transaction->get_operation() : std::string()) << "\n";
    }
    out << "last save: " << index.get_last_save() << "\n";
    return C_ExitOk;
}
