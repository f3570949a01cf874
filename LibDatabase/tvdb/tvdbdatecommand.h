#ifndef TVDBDATECOMMAND_H
#define TVDBDATECOMMAND_H

// TVDBDateCommand: "tvdb date [--base DATE] [--style 0|1|2] [--format F]
// [--terms] EXPRESSION": evaluates a date expression and prints the date.
//
// --base is itself a date expression, read from the start of today, so
// "1/3/2021" means midnight at the start of that day; the command then
// runs as if that moment were now, which is what "Now", "Today" and
// "Tomorrow" refer to. The words of the expression may come as one
// argument or several; "--" ends the options, and an argument such as
// "-1" or "+2" is never an option.
//
// Sets the process's locale, clock hook and date parser; meant to run once
// per process.

#include "LibDatabase/tvdb/tvdbcommand.h"

class TVDBDateCommand : public TVDBCommand
{
public:
    static constexpr const char* C_DefaultFormat = "%Y-%m-%d %H:%M:%S";

    const char* name() const override { return "date"; }
    const char* summary() const override { return "evaluate a date expression"; }
    void usage(std::ostream& out) const override;
    int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) override;
};

#endif // TVDBDATECOMMAND_H
