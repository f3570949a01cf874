#include "LibDatabase/tvdb/tvdbdumpcommand.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibObject/object/tvserialisationentry.h"

#include <cstdlib>
#include <ostream>

void TVDBDumpCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb dump [--app NAME] FILE [ID]\n"
           "\n"
           "Loads FILE read-only, with its partial file, and prints its objects in\n"
           "the serial form; with ID, only that object (0: the database's record).\n"
           "\n"
           "  --app NAME  the application whose folders hold the side files\n"
           "\n"
           "Exit status: 0 done, 1 the load failed or there is no object ID,\n"
           "2 a wrong command line.\n";
}

int TVDBDumpCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                                std::ostream& out, std::ostream& err)
{
    std::vector<const TVObject*> objects;
    if (!extra.empty()) {
        char* end = nullptr;
        const long id = std::strtol(extra[0].c_str(), &end, 10);
        const TVDBObject* object =
            *end == '\0' && !extra[0].empty() ? db.get_object_by_id(static_cast<int>(id)) : nullptr;
        if (object == nullptr) {
            err << "tvdb dump: " << db.get_filename() << " has no object " << extra[0] << "\n";
            return C_ExitFailed;
        }
        objects.push_back(object);
    } else {
        objects.push_back(&db);
        for (int i = 0; i < db.get_nobjects(); ++i)
            objects.push_back(db.get_object_by_index(i));
    }
    for (const TVObject* object : objects) {
        const int result = TVSerialisationEntry::write_tagged_class(
            TVDatabase::C_ObjectStart, *object, out, db.get_appfileversion());
        if (istvwarn(result)) {
            err << "tvdb dump: " << take_messages();
            return C_ExitFailed;
        }
    }
    return C_ExitOk;
}
