#include "LibDatabase/db/fuzz/tvqueryfuzzcheck.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDate/date/tvdateparser.h"

#include <algorithm>
#include <memory>

namespace {

struct Parsed {
    int result = 0;
    int line = 0;
    std::string message;
    int nconditions = 0;
    int nfields = 0;
    int nprompts = 0;
};

Parsed parse(TVQuery& query)
{
    Parsed parsed;
    parsed.result = query.parse(false, &parsed.line);
    const TVErrDetails* details = get_tverror()->error_details();
    parsed.message = details != nullptr ? details->get_details(TVAspectUser) : "";
    get_tverror()->clear_all();
    parsed.nconditions = query.get_nconditions();
    parsed.nfields = query.get_nfields();
    parsed.nprompts = query.get_nprompts();
    return parsed;
}

} // namespace

std::string tv_query_fuzz_check(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data),
                           std::min(size, C_QueryFuzzMaxText));
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    tv_install_date_parser();
    const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));

    TVQuery query("Fuzz", text);
    const Parsed first = parse(query);
    if (first.result == TVErrC_ok && first.line != -1)
        return "ok with line " + std::to_string(first.line);
    if (first.result != TVErrC_ok) {
        if (!istvwarn(first.result))
            return "a plain outcome that is not ok";
        if (first.line < 1 || first.line > lines)
            return "failure on line " + std::to_string(first.line);
        const std::string prefix = "Fuzz:" + std::to_string(first.line) + ": error ";
        if (first.message.compare(0, prefix.size(), prefix) != 0)
            return "message \"" + first.message + "\"";
        return std::string();
    }
    const Parsed second = parse(query);
    if (second.result != first.result || second.line != first.line ||
        second.nconditions != first.nconditions || second.nfields != first.nfields ||
        second.nprompts != first.nprompts)
        return "a second parse differs";

    std::string written;
    if (istvwarn(query.object_to_string(written, 0)))
        return "no serial form";
    TVObject* made = nullptr;
    const int read = TVObject::object_from_string(written, made, 0);
    const std::unique_ptr<TVObject> back(made);
    std::string again;
    if (istvwarn(read) || back == nullptr || istvwarn(back->object_to_string(again, 0)))
        return "the serial form doesn't read back: " + written;
    if (again != written)
        return "the serial form changes on a second write";

    // Prompt values go into the text, which may then fail: a fine answer.
    if (istvwarn(query.expand_prompts())) {
        get_tverror()->clear_all();
        return std::string();
    }
    TVDatabase db;
    TVQueryResult result;
    if (istvwarn(query.execute(db, result))) {
        get_tverror()->clear_all();
        return std::string();
    }
    if (result.get_ncolumns() != result.get_nfields())
        return "columns and fields differ";
    return std::string();
}
