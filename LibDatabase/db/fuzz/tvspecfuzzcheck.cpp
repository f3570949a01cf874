#include "LibDatabase/db/fuzz/tvspecfuzzcheck.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDatabase/db/tvdbparser.h"
#include "LibDatabase/db/tvobjectspec.h"

#include <algorithm>

namespace {

struct Parsed {
    int result = 0;
    int line = 0;
    std::string message;
    int nvars = 0;
    int nchildren = 0;
    int nscripts = 0;
};

Parsed parse(TVObjectSpec& spec)
{
    Parsed parsed;
    parsed.result = spec.parse(&parsed.line);
    const TVErrDetails* details = get_tverror()->error_details();
    parsed.message = details != nullptr ? details->get_details(TVAspectUser) : "";
    get_tverror()->clear_all();
    parsed.nvars = spec.get_nvarspecs();
    parsed.nchildren = spec.get_nchildren();
    parsed.nscripts = spec.get_nscripts();
    return parsed;
}

} // namespace

std::string tv_spec_fuzz_check(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), std::min(size, C_SpecFuzzMaxText));
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));

    TVDBParser tokens;
    (void)tokens.tokenise(text);
    for (int last = 1; !tokens.empty(); tokens.pop_token()) {
        const int line = tokens.get_line_no();
        if (line < last || line > lines)
            return "token line " + std::to_string(line) + " after " + std::to_string(last);
        last = line;
    }

    TVObjectSpec spec("Fuzz", text);
    const Parsed first = parse(spec);
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
    }
    spec.clear_variables();
    const Parsed second = parse(spec);
    if (second.result != first.result || second.line != first.line ||
        second.message != first.message || second.nvars != first.nvars ||
        second.nchildren != first.nchildren || second.nscripts != first.nscripts)
        return "a second parse differs";

    if (first.result == TVErrC_ok) {
        TVDBObject object;
        // Expressions have no engine here: their warning is a fine answer.
        (void)object.apply_objectspec(spec);
        get_tverror()->clear_all();
    }
    return std::string();
}
