#ifndef TVDBDATESETTINGS_H
#define TVDBDATESETTINGS_H

// TVDBDateSettings: what the commands that read dates share: which words
// are options, the order of numeric dates (--style), and a base date that
// stands for now (--base, --from).
//
// use_base sets the process's clock hook and installs the date parser;
// meant for a command that runs once per process.

#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

class TVDate;

class TVDBDateSettings
{
public:
    static constexpr int C_StyleCount = 3;

    // "-x" and "--word" are options; "-", "-1", "+2" and "-.5" are words of
    // an expression.
    static bool is_option(const std::string& arg);
    // "0", "1" or "2": month, day or year first.
    static bool read_style(const std::string& value, int& style);
    // Puts the style into the locale; -1 leaves the locale's own.
    static void use_style(int style);
    // text as a date expression read from the start of today, so that
    // "1/3/2021" means midnight at the start of that day; that moment then
    // stands for now. False, and nothing changed, if it isn't a real date.
    static bool use_base(const std::string& text, TVDate& base);

    // A command line of expression words and options: words are those that
    // aren't options, and all after "--".
    struct Args
    {
        std::vector<std::string> m_words;
        std::set<std::string> m_flags;
        std::map<std::string, std::string> m_values; // "--x V" or "--x=V"
        bool m_help = false;
    };
    // False, with the message on err, for an option that is neither a flag
    // nor valued, or a valued one without its value.
    static bool read_args(const std::string& command, const std::vector<std::string>& args,
                          const std::set<std::string>& flags,
                          const std::set<std::string>& valued, Args& out, std::ostream& err);
};

#endif // TVDBDATESETTINGS_H
