#ifndef TVDBREPEATCOMMAND_H
#define TVDBREPEATCOMMAND_H

// TVDBRepeatCommand: "tvdb repeat [--from DATE] [--count N] [--style 0|1|2]
// [--format F] [--natural] RULE": the next occurrences of a repeat rule
// given in its stored text ("T=3@N=2@D=1,4@A=32400"), one a line, each the
// rule's next date after the one before.
//
// --from is read as "tvdb date" reads its base: a date expression from the
// start of today, which then stands for now (what "Now" means in the rule's
// expressions, and what a rule of set dates drops the dates before). The
// rule's words may come as one argument or several, joined by blanks; "--"
// ends the options. Work days are Monday to Friday: tvdb has no repeat
// configuration of its own.
//
// Sets the process's locale, clock hook, date parser and error streams;
// meant to run once per process.

#include "LibDatabase/tvdb/tvdbcommand.h"

class TVDBRepeatCommand : public TVDBCommand
{
public:
    static constexpr const char* C_DefaultFormat = "%Y-%m-%d %H:%M:%S";
    static constexpr int C_DefaultCount = 5;

    const char* name() const override { return "repeat"; }
    const char* summary() const override { return "list the next dates of a repeat rule"; }
    void usage(std::ostream& out) const override;
    int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) override;
};

#endif // TVDBREPEATCOMMAND_H
