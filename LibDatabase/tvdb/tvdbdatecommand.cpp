#include "LibDatabase/tvdb/tvdbdatecommand.h"

#include <cctype>
#include <ostream>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"

namespace {

// The day format entry of TVLocale::C_Option that stands for each date
// style: "mm/dd/yy", "dd/mm/yy", "yyyy-mm-dd".
const int C_StyleFormat[] = {4, 0, 7};
const int C_StyleCount = 3;

// The moment that --base makes "now".
long s_baseSeconds = 0;

void base_clock(long& seconds, int& micro)
{
    seconds = s_baseSeconds;
    micro = 0;
}

long seconds_since_1970(const TVDate& date)
{
    const int epochYear = 1970;
    return (date - TVDate(epochYear, 0, 0, 0, TVDate::C_GMT)).get_as_seconds();
}

// "-x" and "--word" are options; "-", "-1", "+2" and "-.5" are words of
// the expression.
bool is_option(const std::string& arg)
{
    if (arg.size() < 2 || arg[0] != '-')
        return false;
    return arg[1] == '-' || std::isalpha(static_cast<unsigned char>(arg[1])) != 0;
}

struct Options
{
    std::string m_base;
    bool m_hasBase = false;
    int m_style = -1;
    std::string m_format = TVDBDateCommand::C_DefaultFormat;
    bool m_terms = false;
    bool m_help = false;
    std::vector<std::string> m_words;
};

} // namespace

void TVDBDateCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb date [options] EXPRESSION\n"
           "\n"
           "Prints the date that EXPRESSION gives, such as \"Tomorrow 3pm\", \"+1 Week\",\n"
           "\"NEXT Monday 9:00\", \"(Mon|Thu) 9:00\" or \"12/3/2021\".\n"
           "\n"
           "Options:\n"
           "  --base DATE     evaluate as if it were DATE (an expression read from the\n"
           "                  start of today; default: now)\n"
           "  --style 0|1|2   order of numeric dates: 0 month first, 1 day first\n"
           "                  (the default), 2 year first\n"
           "  --format FORMAT the date's format (default \""
        << C_DefaultFormat
        << "\")\n"
           "  --terms         print the expression's terms and its text instead\n"
           "  -h, --help      show this help\n"
           "\n"
           "Exit status: 0 done, 1 the expression gives the invalid date, 2 a wrong\n"
           "command line.\n";
}

int TVDBDateCommand::run(const std::vector<std::string>& args, std::ostream& out,
                         std::ostream& err)
{
    Options options;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || !is_option(arg)) {
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
        if (arg == "--terms") {
            options.m_terms = true;
            continue;
        }
        // Options with a value: "--base X" or "--base=X".
        std::string option = arg;
        std::string value;
        bool hasValue = false;
        size_t equals = arg.find('=');
        if (equals != std::string::npos) {
            option = arg.substr(0, equals);
            value = arg.substr(equals + 1);
            hasValue = true;
        }
        if (option != "--base" && option != "--style" && option != "--format") {
            err << "tvdb date: unknown option '" << option << "' (see tvdb date --help)\n";
            return C_ExitUsage;
        }
        if (!hasValue) {
            if (i + 1 >= args.size()) {
                err << "tvdb date: option '" << option << "' needs a value\n";
                return C_ExitUsage;
            }
            value = args[++i];
        }
        if (option == "--base") {
            options.m_base = value;
            options.m_hasBase = true;
        } else if (option == "--format") {
            options.m_format = value;
        } else if (value.size() == 1 && value[0] >= '0' && value[0] < '0' + C_StyleCount) {
            options.m_style = value[0] - '0';
        } else {
            err << "tvdb date: option '--style' takes 0, 1 or 2, not '" << value << "'\n";
            return C_ExitUsage;
        }
    }
    if (options.m_help) {
        usage(out);
        return C_ExitOk;
    }
    if (options.m_words.empty()) {
        err << "tvdb date: no expression given (see tvdb date --help)\n";
        return C_ExitUsage;
    }

    tv_install_date_parser();
    if (options.m_style >= 0)
        tvlocale()->set_day_format(C_StyleFormat[options.m_style]);

    TVDate base;
    if (options.m_hasBase) {
        TVDate today = TVDateUtils::start_day(TVDateUtils::now());
        base = TVDateParser::parse_date(options.m_base).apply(today, nullptr);
        if (!base.is_ok()) {
            err << "tvdb date: cannot read the base date '" << options.m_base << "'\n";
            return C_ExitUsage;
        }
        s_baseSeconds = seconds_since_1970(base);
        TVDateUtils::set_clock(&base_clock);
    }

    std::string text;
    for (const std::string& word : options.m_words)
        text += (text.empty() ? "" : " ") + word;
    const TVDateExp exp = TVDateParser::parse_date(text);
    if (options.m_terms) {
        for (const TVDateExpTerm& term : exp.get_terms())
            out << term << "\n";
        out << "text: " << exp.to_string() << "\n";
        return C_ExitOk;
    }

    const TVDate date = exp.apply(base, nullptr);
    if (date.is_invalid()) {
        out << "invalid date\n";
        return C_ExitFailed;
    }
    if (date.is_blank()) {
        out << "blank date\n";
        return C_ExitOk;
    }
    out << date.to_string(options.m_format) << "\n";
    return C_ExitOk;
}
