#include "LibDatabase/tvdb/tests/tvdbrun.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

TVDBRun run_tvdb(const std::vector<std::string>& args)
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
