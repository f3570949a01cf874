#include "LibDatabase/tvdb/tvdbfilecommand.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvlockfile.h"
#include "LibDatabase/tvdb/tvdbtoolregistry.h"
#include "LibObject/object/tvobjectindex.h"

#include <algorithm>
#include <memory>
#include <ostream>

namespace {

// What a file's first object says before anything is loaded: the class of
// its database and its application type. Both empty when the file can't be
// read or its record doesn't make a database; the load then says why.
struct FileKind
{
    std::string m_className;
    std::string m_appType;
};

FileKind peek_file(const std::string& file)
{
    FileKind kind;
    const std::string record = TVDatabase::first_object(file);
    TVObject* made = nullptr;
    const int result = record.empty() ? TVErrC_ok : TVObject::object_from_string(record, made, 0);
    const std::unique_ptr<TVObject> owned(made);
    if (istvwarn(result)) {
        get_tverror()->clear_all();
        return kind;
    }
    if (const auto* db = dynamic_cast<const TVDatabase*>(owned.get())) {
        kind.m_className = db->get_class_name();
        kind.m_appType = db->get_app_type();
    }
    return kind;
}

// A new, empty database of the class named; a plain TVDatabase for a class
// tvdb doesn't know as a database.
std::unique_ptr<TVDatabase> make_database(const std::string& className)
{
    const TVObjectIndexEntry* entry = tvclassindex()->find_name(className);
    TVObject* made = nullptr;
    if (entry != nullptr && entry->get_create_fn() != nullptr &&
        !istvwarn(entry->get_create_fn()(made, nullptr))) {
        std::unique_ptr<TVObject> owned(made);
        if (auto* db = dynamic_cast<TVDatabase*>(owned.get())) {
            owned.release();
            return std::unique_ptr<TVDatabase>(db);
        }
    }
    get_tverror()->clear_all();
    return std::make_unique<TVDatabase>();
}

} // namespace

int TVDBFileCommand::run(const std::vector<std::string>& args, std::ostream& out,
                         std::ostream& err)
{
    std::string app;
    std::vector<std::string> words;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "-h" || arg == "--help") {
            usage(out);
            return C_ExitOk;
        }
        const std::vector<std::string> own = value_options();
        const bool ownOption = std::find(own.begin(), own.end(), arg) != own.end();
        const std::vector<std::string> flags = flag_options();
        if (std::find(flags.begin(), flags.end(), arg) != flags.end()) {
            m_options[arg] = "1";
        } else if (arg == "--app" || ownOption) {
            if (i + 1 >= args.size()) {
                err << "tvdb " << name() << ": option '" << arg << "' needs a value\n";
                return C_ExitUsage;
            }
            if (ownOption) {
                m_options[arg] = args[i + 1];
                m_optionList.emplace_back(arg, args[++i]);
            } else {
                app = args[++i];
            }
        } else if (arg.size() > 1 && arg[0] == '-') {
            err << "tvdb " << name() << ": unknown option '" << arg << "' (see tvdb " << name()
                << " --help)\n";
            return C_ExitUsage;
        } else {
            words.push_back(arg);
        }
    }
    if (words.empty() || words.size() > 1 + max_extra_arguments()) {
        err << "Usage: tvdb " << name() << " [--app NAME] FILE" << extra_arguments() << "\n";
        return C_ExitUsage;
    }

    // Errors come back as values, to be printed here and nowhere else.
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    // Only what the engine said: no generic sentence for a bare warning.
    get_tverror()->set_default_message("", TVAspectUser);

    // The application object fixes the folders of the side files; it must
    // exist before anything asks for the default one, so the file is
    // looked at first without it.
    const FileKind kind = peek_file(words[0]);
    TVAppIdentity identity;
    identity.m_application = app;
    const TVDBToolRegistry::Program* program =
        TVDBToolRegistry::instance().find_program(kind.m_appType);
    if (app.empty() && program != nullptr) {
        identity.m_application = program->m_application;
        identity.m_company = program->m_company;
    }
    TVApplication application(0, nullptr, identity);
    const int ready = prepare(application, words[0], err);
    if (ready != C_ExitOk)
        return ready;
    auto db = make_database(kind.m_className);
    // A command that writes opens the file as the program does, and only
    // when the program doesn't have it open.
    TVLockFile lock;
    int result = TVErrC_ok;
    if (writable()) {
        db->set_app_type(kind.m_appType);
        if (istvwarn(lock.lock(words[0], false))) {
            get_tverror()->clear_all();
            err << "tvdb " << name() << ": " << words[0]
                << " is open in another program; close it there first.\n";
            return C_ExitFailed;
        }
        result = db->load(words[0], false, std::string(), db->has_partial(words[0]), true, true);
    } else {
        result = db->read(words[0], true, true);
    }
    if (istvwarn(result)) {
        err << "tvdb " << name() << ": " << take_messages();
        return C_ExitFailed;
    }
    // A damaged partial file doesn't stop the load, but the user should
    // hear of it.
    const std::string warnings = take_messages();
    if (!warnings.empty())
        err << "tvdb " << name() << ": " << warnings;
    // Without a partial file the load leaves the log unread.
    if (db->get_index().size() == 0) {
        const int indexResult = db->get_index().load();
        if (istvwarn(indexResult))
            err << "tvdb " << name() << ": " << take_messages();
    }
    const std::vector<std::string> extra(words.begin() + 1, words.end());
    const int status = run_loaded(*db, extra, out, err);
    if (writable() && db->is_loaded() && istvwarn(db->unload())) {
        err << "tvdb " << name() << ": " << take_messages();
        return C_ExitFailed;
    }
    return status;
}

std::string TVDBFileCommand::take_messages()
{
    // "what went wrong (where, on the way up)", then the user's sentence.
    std::string text;
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i) {
        const TVErrDetails* details = error->error_at(i);
        const std::string& system = details->get_details(TVAspectSystem);
        const std::string& user = details->get_details(TVAspectUser);
        const size_t firstEnd = system.find('\n');
        text += system.substr(0, firstEnd);
        if (firstEnd != std::string::npos) {
            std::string trail = system.substr(firstEnd + 1);
            std::replace(trail.begin(), trail.end(), '\n', ',');
            text += " (" + trail + ")";
        }
        if (!user.empty() && system.find(user) == std::string::npos)
            text += "\n  " + user;
        text += "\n";
    }
    error->clear_all();
    return text;
}
