#include "LibDatabase/db/tvdbhost.h"

#include <atomic>

namespace {
// Atomic: the update checker reads it from its own thread.
std::atomic<const TVDBHost*> s_host{nullptr};
} // namespace

void TVDBHost::install(const TVDBHost* host)
{
    s_host.store(host);
}

const TVDBHost* TVDBHost::installed()
{
    return s_host.load();
}

const TVObjectSpec* TVDBHost::objectspec(const TVDatabase&, int) const
{
    return nullptr;
}

TVDBObject* TVDBHost::database_object(TVDatabase&) const
{
    return nullptr;
}
