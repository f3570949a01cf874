#ifndef MATHSREPORTCOMMAND_H
#define MATHSREPORTCOMMAND_H

// MathsReportCommand: "tvdb report FILE": a maths file's progress as a
// parent reads it. A table of the exercises, active ones first and each
// group in file order: name, type, whether active, finished runs, and the
// best and latest run times in seconds ("-" before the first finished
// run). Then the current session: when it began, how many of its runs are
// still to do, and each run with its state.
//
// Best is the shortest finished run that took any time at all; latest is
// the finished run that ended last. Neither counts an unfinished run.
//
// A file that isn't a maths file ends with exit status 1.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class MathsReportCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "report"; }
    const char* summary() const override { return "show a maths file's exercises and session"; }
    void usage(std::ostream& out) const override;

protected:
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // MATHSREPORTCOMMAND_H
