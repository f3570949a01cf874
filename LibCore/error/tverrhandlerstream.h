#ifndef TVERRHANDLERSTREAM_H
#define TVERRHANDLERSTREAM_H

#include <iosfwd>

#include "LibCore/error/tverrhandler.h"

// Writes each error's user text as a line to a stream. The stream must
// outlive the handler.
class TVErrHandlerStream : public TVErrHandler
{
public:
    TVErrHandlerStream(std::ostream& stream, bool immediate, bool intermediate, bool delayed,
                       bool manageDeletion);
    ~TVErrHandlerStream() override;

    void dump(std::ostream& out, int indent) const override;
    int handle(TVErrDetails& details) override;

private:
    std::ostream& m_stream;
};

#endif
