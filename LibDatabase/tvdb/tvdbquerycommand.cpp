#include "LibDatabase/tvdb/tvdbquerycommand.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvqueryprompt.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDate/date/tvdateparser.h"

#include <memory>
#include <ostream>

void TVDBQueryCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb query [--app NAME] FILE QUERY [--prompt TITLE=VALUE]... [--csv]\n"
           "\n"
           "Loads FILE read-only, with its partial file, runs QUERY on it and prints\n"
           "the table it gives, headers first. QUERY is the query's text, or @PATH\n"
           "for a file that holds it (doc/query-language.md gives the language).\n"
           "\n"
           "  --prompt TITLE=VALUE  the value of the query's prompt TITLE; a prompt\n"
           "                        not given keeps its default (may repeat)\n"
           "  --csv                 comma-separated values instead of aligned columns\n"
           "  --app NAME            the application whose folders hold the side files\n"
           "\n"
           "Exit status: 0 done, 1 the load failed or the query is wrong (the\n"
           "message gives its line), 2 a wrong command line.\n";
}

int TVDBQueryCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                                 std::ostream& out, std::ostream& err)
{
    if (extra.empty()) {
        err << "Usage: tvdb query [--app NAME] FILE QUERY [--prompt TITLE=VALUE]... [--csv]\n";
        return C_ExitUsage;
    }
    // Dates in conditions and prompts are date expressions ("1 June", "today -7").
    tv_install_date_parser();
    std::string text = extra[0];
    std::string source = "query";
    const bool fromFile = !text.empty() && text[0] == '@';
    if (fromFile) {
        source = text.substr(1);
        if (istvwarn(tv_db_read_file(source, text))) {
            err << "tvdb query: " << take_messages();
            return C_ExitFailed;
        }
    }
    const std::unique_ptr<TVQuery> query(db.create_query());
    query->set_name(source);
    query->set_text(text);
    if (fromFile)
        query->set_file_info(source, 0);
    int result = query->parse(false, nullptr);
    for (const auto& [option, value] : m_optionList) {
        if (istvwarn(result))
            break;
        const size_t sep = value.find('=');
        TVQueryPrompt* prompt =
            sep == std::string::npos ? nullptr : query->get_prompt_by_name(value.substr(0, sep));
        if (prompt == nullptr) {
            err << "tvdb query: the query has no prompt \"" << value.substr(0, sep)
                << "\" (give --prompt TITLE=VALUE)\n";
            return C_ExitUsage;
        }
        prompt->supply_value(value.substr(sep + 1));
        prompt->pop_supplied();
    }
    if (!istvwarn(result))
        result = query->expand_prompts();
    TVQueryResult table;
    if (!istvwarn(result))
        result = query->execute(db, table);
    if (istvwarn(result)) {
        err << "tvdb query: " << take_messages();
        return C_ExitFailed;
    }
    if (m_options.count("--csv") != 0)
        table.write_csv(out);
    else
        table.write_text(out);
    return C_ExitOk;
}
