#ifndef TVDBRUN_H
#define TVDBRUN_H

// Runs a built tvdb as a user would, through QProcess, with TZ=UTC0 and
// the rest of this process's environment. Which tvdb is the test
// program's choice: it defines TV_TVDB_PATH (the framework's own for the
// framework's tests, the program's for the program's).

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct TVDBRun
{
    int m_exitCode = -1; // -1: didn't finish within 30 s, or crashed
    std::string m_out;
    std::string m_err;
};

inline TVDBRun run_tvdb(const std::vector<std::string>& args)
{
    QStringList arguments;
    for (const std::string& arg : args)
        arguments << QString::fromStdString(arg);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TZ", "UTC0");
    process.setProcessEnvironment(environment);
    process.start(QString::fromUtf8(TV_TVDB_PATH), arguments);
    TVDBRun result;
    const int timeoutMs = 30000;
    if (!process.waitForFinished(timeoutMs) || process.exitStatus() != QProcess::NormalExit)
        return result;
    result.m_exitCode = process.exitCode();
    result.m_out = process.readAllStandardOutput().toStdString();
    result.m_err = process.readAllStandardError().toStdString();
    return result;
}

// The bytes of a file, to compare before and after a command.
inline std::string tv_file_bytes(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

#endif // TVDBRUN_H
