#ifndef TVPARAMERRHANDLER_H
#define TVPARAMERRHANDLER_H

// TVParamErrHandler: while the parameters are parsed, turns the user's
// wrong input (a user warning with TVParam::TVErrC_ParamInvalid) into
// "Error: <text>", an empty line and the usage text on a stream, and
// consumes it. Everything else passes on. The stream, if given, must
// outlive the handler.

#include <iosfwd>
#include <string>

#include "LibCore/error/tverrhandler.h"

class TVParamErrHandler : public TVErrHandler
{
public:
    TVParamErrHandler(const std::string& usage, std::ostream* out, bool immediate, bool intermediate,
                      bool delayed, bool manageDeletion);
    ~TVParamErrHandler() override;

    void dump(std::ostream& out, int indent) const override;
    int handle(TVErrDetails& details) override;

private:
    std::string m_usage;
    std::ostream* m_out;
};

#endif // TVPARAMERRHANDLER_H
