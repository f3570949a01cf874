#include "LibDatabase/tvdb/tvdbscriptcommand.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDatabase/db/tvdbscript.h"

#include <QCoreApplication>

#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>

void TVDBScriptCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb script [--app NAME] FILE ID SCRIPT\n"
           "\n"
           "Loads FILE read-only and runs SCRIPT, a script's text or @PATH for the\n"
           "text of a file, against the object of id ID; prints what it returns.\n"
           "Nothing the script changes is saved. Prompts take their defaults.\n"
           "\n"
           "  --app NAME  the application whose folders hold the side files\n"
           "\n"
           "Exit status: 0 done, 1 the load failed, there is no object ID, or the\n"
           "script raised an error or ran too long (its line and message are\n"
           "printed), 2 a wrong command line.\n";
}

int TVDBScriptCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                                  std::ostream& out, std::ostream& err)
{
    if (extra.size() != 2) {
        usage(err);
        return C_ExitUsage;
    }
    int id = -1;
    std::istringstream idText(extra[0]);
    if (!(idText >> id) || !idText.eof()) {
        err << "tvdb script: " << extra[0] << " is not an object id\n";
        return C_ExitUsage;
    }
    std::string text = extra[1];
    std::string name = "script";
    if (!text.empty() && text[0] == '@') {
        name = text.substr(1);
        std::ifstream in(name, std::ios::binary);
        std::ostringstream read;
        read << in.rdbuf();
        if (!in) {
            err << "tvdb script: could not read the script file " << name << "\n";
            return C_ExitFailed;
        }
        text = read.str();
    }
    TVDBObject* object = db.get_object_by_id(id);
    if (object == nullptr || object->is_deleted()) {
        err << "tvdb script: " << db.get_filename() << " has no object " << id << "\n";
        return C_ExitFailed;
    }
    // Scripts need an application object; the tool has none of its own.
    std::unique_ptr<QCoreApplication> application;
    static int argc = 1;
    static char program[] = "tvdb";
    static char* argv[] = {program, nullptr};
    if (QCoreApplication::instance() == nullptr)
        application = std::make_unique<QCoreApplication>(argc, argv);
    TVDBScript script(name, text, "");
    std::string value;
    (void)script.run_within(*object, false, &value);
    (void)take_messages();
    if (script.get_error_line() >= 0) {
        err << name << ":" << script.get_error_line() << ": " << script.get_error_text() << "\n";
        return C_ExitFailed;
    }
    out << value << "\n";
    return C_ExitOk;
}
