#ifndef TVERRHANDLERLOGFILE_H
#define TVERRHANDLERLOGFILE_H

#include <string>

#include "LibCore/error/tverrhandler.h"

// Appends each error as a block to a log file. At the first event of a run
// the file is trimmed to its last 100 lines and a separator line starts the
// run's blocks. The file is opened and closed for every event; failure to
// open it is silent. Warnings meant for the user are not logged.
class TVErrHandlerLogfile : public TVErrHandler
{
public:
    static const int C_KeepLines = 100;
    static const char* const C_Separator;

    TVErrHandlerLogfile(const std::string& logName, bool immediate, bool intermediate, bool delayed,
                        bool manageDeletion);
    ~TVErrHandlerLogfile() override;

    void dump(std::ostream& out, int indent) const override;
    int handle(TVErrDetails& details) override;
    // Log lines go to the file too; consumed so that no other file gets them twice.
    int log(TVErrDetails& details) override;

    const std::string& get_log_name() const { return m_logName; }
    bool is_first_error() const { return m_firstError; }

private:
    void trim() const;

    std::string m_logName;
    bool m_firstError;
};

#endif
