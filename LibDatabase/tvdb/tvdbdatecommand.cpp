#include "LibDatabase/tvdb/tvdbdatecommand.h"

#include <ostream>

#include "LibDatabase/tvdb/tvdbdatesettings.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"

namespace {

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
        } else if (!TVDBDateSettings::read_style(value, options.m_style)) {
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
    TVDBDateSettings::use_style(options.m_style);

    TVDate base;
    if (options.m_hasBase && !TVDBDateSettings::use_base(options.m_base, base)) {
        err << "tvdb date: cannot read the base date '" << options.m_base << "'\n";
        return C_ExitUsage;
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
