#include "LibDatabase/tvdb/tvdbrepeatcommand.h"

#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibDatabase/tvdb/tvdbdatesettings.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateparser.h"
#include "LibDate/date/tvdaterepeat.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/date/tvrepeatconfig.h"

namespace {

// A count of occurrences: digits only, at most this many.
bool read_count(const std::string& value, int& count)
{
    const int most = TVDateRepeat::C_MaxSlots;
    if (value.empty() || value.size() > 6 || value.find_first_not_of("0123456789") != value.npos)
        return false;
    count = std::stoi(value);
    return count <= most;
}

} // namespace

void TVDBRepeatCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb repeat [options] RULE\n"
           "\n"
           "Prints the next dates of a repeat rule given in its stored text, such as\n"
           "\"T=3@N=2@D=1,4@A=32400\" (every 2 weeks on Monday and Thursday at 9:00),\n"
           "each the rule's next date after the one before.\n"
           "\n"
           "Options:\n"
           "  --from DATE     start from DATE (an expression read from the start of\n"
           "                  today, which then stands for now; default: now)\n"
           "  --count N       how many dates (default "
        << C_DefaultCount
        << ")\n"
           "  --style 0|1|2   order of numeric dates: 0 month first, 1 day first\n"
           "                  (the default), 2 year first\n"
           "  --format FORMAT the dates' format (default \""
        << C_DefaultFormat
        << "\")\n"
           "  --natural       print the rule in words instead\n"
           "  -h, --help      show this help\n"
           "\n"
           "Exit status: 0 done (a rule with no next date prints nothing), 2 a wrong\n"
           "command line or a rule that doesn't read.\n";
}

int TVDBRepeatCommand::run(const std::vector<std::string>& args, std::ostream& out,
                           std::ostream& err)
{
    TVDBDateSettings::Args options;
    if (!TVDBDateSettings::read_args("repeat", args, {"--natural"},
                                     {"--from", "--count", "--style", "--format"}, options, err))
        return C_ExitUsage;
    int count = C_DefaultCount;
    if (options.m_values.count("--count") != 0 && !read_count(options.m_values["--count"], count)) {
        err << "tvdb repeat: option '--count' takes a number from 0 to "
            << TVDateRepeat::C_MaxSlots << ", not '" << options.m_values["--count"] << "'\n";
        return C_ExitUsage;
    }
    int style = -1;
    if (options.m_values.count("--style") != 0 &&
        !TVDBDateSettings::read_style(options.m_values["--style"], style)) {
        err << "tvdb repeat: option '--style' takes 0, 1 or 2, not '"
            << options.m_values["--style"] << "'\n";
        return C_ExitUsage;
    }
    if (options.m_help) {
        usage(out);
        return C_ExitOk;
    }
    if (options.m_words.empty()) {
        err << "tvdb repeat: no rule given (see tvdb repeat --help)\n";
        return C_ExitUsage;
    }

    tv_install_date_parser();
    TVDBDateSettings::use_style(style);
    TVDate from = TVDateUtils::now();
    if (options.m_values.count("--from") != 0 &&
        !TVDBDateSettings::use_base(options.m_values["--from"], from)) {
        err << "tvdb repeat: cannot read the date '" << options.m_values["--from"] << "'\n";
        return C_ExitUsage;
    }

    std::string text;
    for (const std::string& word : options.m_words)
        text += (text.empty() ? "" : " ") + word;
    // The rule's message comes back as a value, to be printed here alone.
    TVError* error = get_tverror();
    error->set_stream(nullptr, TVSevAll);
    TVDateRepeat rule;
    if (istvwarn(rule.from_string(text))) {
        const TVErrDetails* details = error->error_details();
        err << "tvdb repeat: " << (details != nullptr ? details->get_details(TVAspectSystem) : text)
            << "\n";
        error->clear_all();
        return C_ExitUsage;
    }

    const TVRepeatConfig config;
    if (options.m_flags.count("--natural") != 0) {
        out << rule.to_natural(&config) << "\n";
        return C_ExitOk;
    }
    const auto format = options.m_values.find("--format");
    TVDate date = from;
    for (int i = 0; i < count; ++i) {
        const TVDate next = rule.next_date(date, &config);
        if (!next.is_ok() || !(next > date))
            break;
        out << next.to_string(format != options.m_values.end() ? format->second : C_DefaultFormat)
            << "\n";
        date = next;
    }
    return C_ExitOk;
}
