#include "LibDatabase/tvdb/tvdbdatesettings.h"

#include <cctype>
#include <ostream>

#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/date/tvdateparser.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

namespace {

// The day format entry of TVLocale::C_Option that stands for each date
// style: "mm/dd/yy", "dd/mm/yy", "yyyy-mm-dd".
const int C_StyleFormat[TVDBDateSettings::C_StyleCount] = {4, 0, 7};

// The moment that the base makes "now".
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

} // namespace

bool TVDBDateSettings::is_option(const std::string& arg)
{
    if (arg.size() < 2 || arg[0] != '-')
        return false;
    return arg[1] == '-' || std::isalpha(static_cast<unsigned char>(arg[1])) != 0;
}

bool TVDBDateSettings::read_style(const std::string& value, int& style)
{
    if (value.size() != 1 || value[0] < '0' || value[0] >= '0' + C_StyleCount)
        return false;
    style = value[0] - '0';
    return true;
}

void TVDBDateSettings::use_style(int style)
{
    if (style >= 0 && style < C_StyleCount)
        tvlocale()->set_day_format(C_StyleFormat[style]);
}

bool TVDBDateSettings::use_base(const std::string& text, TVDate& base)
{
    tv_install_date_parser();
    const TVDate today = TVDateUtils::start_day(TVDateUtils::now());
    const TVDate read = TVDateParser::parse_date(text).apply(today, nullptr);
    if (!read.is_ok())
        return false;
    base = read;
    s_baseSeconds = seconds_since_1970(base);
    TVDateUtils::set_clock(&base_clock);
    return true;
}

bool TVDBDateSettings::read_args(const std::string& command, const std::vector<std::string>& args,
                                 const std::set<std::string>& flags,
                                 const std::set<std::string>& valued, Args& out, std::ostream& err)
{
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || !is_option(arg)) {
            out.m_words.push_back(arg);
        } else if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "-h" || arg == "--help") {
            out.m_help = true;
        } else if (flags.count(arg) != 0) {
            out.m_flags.insert(arg);
        } else {
            const size_t equals = arg.find('=');
            const std::string option = arg.substr(0, equals);
            if (valued.count(option) == 0) {
                err << "tvdb " << command << ": unknown option '" << option << "' (see tvdb "
                    << command << " --help)\n";
                return false;
            }
            if (equals == std::string::npos && i + 1 >= args.size()) {
                err << "tvdb " << command << ": option '" << option << "' needs a value\n";
                return false;
            }
            out.m_values[option] = equals != std::string::npos ? arg.substr(equals + 1) : args[++i];
        }
    }
    return true;
}
