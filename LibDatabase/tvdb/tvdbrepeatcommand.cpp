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

struct Options
{
    std::string m_from;
    bool m_hasFrom = false;
    int m_count = TVDBRepeatCommand::C_DefaultCount;
    int m_style = -1;
    std::string m_format = TVDBRepeatCommand::C_DefaultFormat;
    bool m_natural = false;
    bool m_help = false;
    std::vector<std::string> m_words;
};

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
    Options options;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || !TVDBDateSettings::is_option(arg)) {
            options.m_words.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        if (arg == "-h" || arg == "--help") {
            options.m_help = true;
            continue;
        }
        if (arg == "--natural") {
            options.m_natural = true;
            continue;
        }
        // Options with a value: "--from X" or "--from=X".
        std::string option = arg;
        std::string value;
        bool hasValue = false;
        size_t equals = arg.find('=');
        if (equals != std::string::npos) {
            option = arg.substr(0, equals);
            value = arg.substr(equals + 1);
            hasValue = true;
        }
        if (option != "--from" && option != "--count" && option != "--style" &&
            option != "--format") {
            err << "tvdb repeat: unknown option '" << option << "' (see tvdb repeat --help)\n";
            return C_ExitUsage;
        }
        if (!hasValue) {
            if (i + 1 >= args.size()) {
                err << "tvdb repeat: option '" << option << "' needs a value\n";
                return C_ExitUsage;
            }
            value = args[++i];
        }
        if (option == "--from") {
            options.m_from = value;
            options.m_hasFrom = true;
        } else if (option == "--format") {
            options.m_format = value;
        } else if (option == "--count") {
            if (!read_count(value, options.m_count)) {
                err << "tvdb repeat: option '--count' takes a number from 0 to "
                    << TVDateRepeat::C_MaxSlots << ", not '" << value << "'\n";
                return C_ExitUsage;
            }
        } else if (!TVDBDateSettings::read_style(value, options.m_style)) {
            err << "tvdb repeat: option '--style' takes 0, 1 or 2, not '" << value << "'\n";
            return C_ExitUsage;
        }
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
    TVDBDateSettings::use_style(options.m_style);
    TVDate from = TVDateUtils::now();
    if (options.m_hasFrom && !TVDBDateSettings::use_base(options.m_from, from)) {
        err << "tvdb repeat: cannot read the date '" << options.m_from << "'\n";
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
    if (options.m_natural) {
        out << rule.to_natural(&config) << "\n";
        return C_ExitOk;
    }
    TVDate date = from;
    for (int i = 0; i < options.m_count; ++i) {
        const TVDate next = rule.next_date(date, &config);
        if (!next.is_ok() || !(next > date))
            break;
        out << next.to_string(options.m_format) << "\n";
        date = next;
    }
    return C_ExitOk;
}
