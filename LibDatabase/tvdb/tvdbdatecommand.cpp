#include "LibDatabase/tvdb/tvdbdatecommand.h"

#include <ostream>

#include "LibDatabase/tvdb/tvdbdatesettings.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"

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
    TVDBDateSettings::Args options;
    if (!TVDBDateSettings::read_args("date", args, {"--terms"}, {"--base", "--style", "--format"},
                                     options, err))
        return C_ExitUsage;
    int style = -1;
    if (options.m_values.count("--style") != 0 &&
        !TVDBDateSettings::read_style(options.m_values["--style"], style)) {
        err << "tvdb date: option '--style' takes 0, 1 or 2, not '" << options.m_values["--style"]
            << "'\n";
        return C_ExitUsage;
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
    TVDBDateSettings::use_style(style);

    TVDate base;
    if (options.m_values.count("--base") != 0 &&
        !TVDBDateSettings::use_base(options.m_values["--base"], base)) {
        err << "tvdb date: cannot read the base date '" << options.m_values["--base"] << "'\n";
        return C_ExitUsage;
    }

    std::string text;
    for (const std::string& word : options.m_words)
        text += (text.empty() ? "" : " ") + word;
    const TVDateExp exp = TVDateParser::parse_date(text);
    if (options.m_flags.count("--terms") != 0) {
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
    const auto format = options.m_values.find("--format");
    out << date.to_string(format != options.m_values.end() ? format->second : C_DefaultFormat)
        << "\n";
    return C_ExitOk;
}
