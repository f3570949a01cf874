#include "LibDatabase/tvdb/tvdbspeccommand.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvobjectspec.h"

#include <ostream>
#include <set>

namespace {

// The user's sentence of every pending error, newest first; clears them.
std::string take_user_messages()
{
    std::string text;
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i) {
        const std::string& user = error->error_at(i)->get_details(TVAspectUser);
        if (!user.empty())
            text += user + "\n";
    }
    error->clear_all();
    return text;
}

} // namespace

void TVDBSpecCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb spec FILE.tvo\n"
           "\n"
           "Reads the object specs of FILE.tvo, compiles them as a database would\n"
           "(with the default specs \"Default\" and \"TopLevel\" beside them) and prints\n"
           "each spec of the file in its export form. Nothing is written.\n"
           "\n"
           "Exit status: 0 every spec compiled, 1 the file or a spec failed (the\n"
           "message names the file and line), 2 a wrong command line.\n";
}

int TVDBSpecCommand::run(const std::vector<std::string>& args, std::ostream& out,
                         std::ostream& err)
{
    if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
        usage(out);
        return C_ExitOk;
    }
    if (args.size() != 1 || args[0].empty() || args[0][0] == '-') {
        usage(err);
        return C_ExitUsage;
    }
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    TVDatabase db;
    int result = db.import_specs(args[0]);
    std::set<std::string> fromFile;
    for (int i = 0; i < db.get_nobjectspecs(); ++i)
        fromFile.insert(db.get_objectspec_by_index(i)->get_name());
    if (!istvwarn(result))
        result = db.create_default_spec();
    if (!istvwarn(result))
        result = db.parse_objectspecs(true);
    if (istvwarn(result)) {
        err << "tvdb spec: " << take_user_messages();
        return C_ExitFailed;
    }
    for (const TVObjectSpec* spec : db.get_specs(true))
        if (fromFile.count(spec->get_name()) != 0)
            spec->export_spec(out);
    return C_ExitOk;
}
