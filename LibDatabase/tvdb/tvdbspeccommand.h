#ifndef TVDBSPECCOMMAND_H
#define TVDBSPECCOMMAND_H

// TVDBSpecCommand: "tvdb spec FILE.tvo": reads a spec file as an import
// would, compiles its specs (with the default specs beside them, as in a
// database) and prints each of the file's specs back in its export form.
// A file or a spec that fails prints the parser's message, which names
// the file and line, and exits 1. Nothing is written.

#include "LibDatabase/tvdb/tvdbcommand.h"

class TVDBSpecCommand : public TVDBCommand
{
public:
    const char* name() const override { return "spec"; }
    const char* summary() const override { return "check a spec file and print its specs"; }
    void usage(std::ostream& out) const override;
    int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) override;
};

#endif // TVDBSPECCOMMAND_H
