#include "LibComms/thread/tvcondvar.h"

#include <climits>
#include <ostream>

#include "LibCore/log/tvdump.h"

TVCondVar::TVCondVar() = default;

TVCondVar::TVCondVar(const TVCondVar&)
{
}

TVCondVar& TVCondVar::operator=(const TVCondVar&)
{
    return *this;
}

TVCondVar::~TVCondVar() = default;

bool TVCondVar::operator==(const TVCondVar&) const
{
    return true;
}

bool TVCondVar::wait_signal(int milliseconds)
{
    // ULONG_MAX is QWaitCondition's "forever".
    const unsigned long limit = milliseconds < 0 ? ULONG_MAX : static_cast<unsigned long>(milliseconds);
    m_mutex.lock();
    const bool woken = m_condition.wait(&m_mutex, limit);
    m_mutex.unlock();
    return woken;
}

void TVCondVar::send_signal()
{
    m_condition.wakeAll();
}

void TVCondVar::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVCondVar Object:\n";
}

std::ostream& operator<<(std::ostream& out, const TVCondVar& condVar)
{
    condVar.dump(out, 0);
    return out;
}
