#ifndef TVDBRUN_H
#define TVDBRUN_H

// Runs the built tvdb (TV_TVDB_PATH) as a user would, through QProcess,
// with TZ=UTC0 and the rest of this process's environment.

#include <string>
#include <vector>

struct TVDBRun
{
    int m_exitCode = -1; // -1: didn't finish within 30 s, or crashed
    std::string m_out;
    std::string m_err;
};

TVDBRun run_tvdb(const std::vector<std::string>& args);

#endif // TVDBRUN_H
