#ifndef TVSETTLE_H
#define TVSETTLE_H

// tv_settle: runs the event loop until done holds, for tests that wait on
// real input and output (a server on the loopback address) rather than on
// time: no sleeping, and a bound so that a fault fails instead of hanging.

#include <QCoreApplication>
#include <QElapsedTimer>

#include <functional>

inline bool tv_settle(const std::function<bool()>& done, int limit_ms = 5000)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < limit_ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}

#endif // TVSETTLE_H
