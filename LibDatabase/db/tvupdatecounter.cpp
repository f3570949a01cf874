#include "LibDatabase/db/tvupdatecounter.h"

#include "LibDate/core/tvdateutils.h"
#include "LibCore/log/tvdump.h"

#include <ostream>
#include <string>

std::atomic<long> TVUpdateCounter::m_mainCounter{0};
std::atomic<long> TVUpdateCounter::m_lastTime{0};

long TVUpdateCounter::clock_seconds()
{
    static const TVDate epoch(1970, 0, 0, 0, 0, 0, 0, TVDate::C_GMT);
    return (TVDateUtils::now() - epoch).get_as_seconds();
}

TVUpdateCounter::TVUpdateCounter(const TVUpdateCounter& other)
    : m_lastUpdate(other.get_last_update())
{
}

TVUpdateCounter& TVUpdateCounter::operator=(const TVUpdateCounter& other)
{
    restore_update(other.get_last_update());
    return *this;
}

long TVUpdateCounter::tick()
{
    const long value = m_mainCounter.fetch_add(1, std::memory_order_relaxed) + 1;
    m_lastTime.store(clock_seconds(), std::memory_order_relaxed);
    return value;
}

long TVUpdateCounter::mark_update()
{
    const long value = tick();
    restore_update(value);
    stamped();
    return value;
}

long TVUpdateCounter::get_counter(bool advance)
{
    return advance ? tick() : m_mainCounter.load(std::memory_order_relaxed);
}

long TVUpdateCounter::time_since_update()
{
    return clock_seconds() - m_lastTime.load(std::memory_order_relaxed);
}

void TVUpdateCounter::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVUpdateCounter: last update " << get_last_update() << " (main "
        << get_counter(false) << ")\n";
}

std::ostream& operator<<(std::ostream& out, const TVUpdateCounter& counter)
{
    counter.dump(out, 0);
    return out;
}
