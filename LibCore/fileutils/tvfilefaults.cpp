#include "LibCore/fileutils/tvfilefaults.h"

#include <atomic>
#include <utility>

namespace {
// Atomic so that a worker thread asking mid-operation sees either hook
// whole; installing still belongs to quiet moments (see the header).
std::atomic<TVFileFaults*> s_current{nullptr};
} // namespace

TVFileFaults::TVFileFaults(FailFn fail)
    : m_fail(std::move(fail))
    , m_previous(s_current.exchange(this))
{
}

TVFileFaults::~TVFileFaults()
{
    s_current.store(m_previous);
}

bool TVFileFaults::should_fail(E_FileOp op, const std::string& path, const std::string& target)
{
    const TVFileFaults* faults = s_current.load();
    return faults != nullptr && faults->m_fail && faults->m_fail(op, path, target);
}
