#ifndef TVSCOPEGUARD_H
#define TVSCOPEGUARD_H

// TVScopeGuard: sets a flag true for the lifetime of the guard, to refuse
// re-entry into an operation:
//
//     static bool busy = false;
//     if (busy) return ...;
//     TVScopeGuard guard(busy);
//
// The flag must outlive the guard. It is set false on destruction whatever
// it was before, so guards on one flag don't nest.

class TVScopeGuard
{
public:
    explicit TVScopeGuard(bool& flag) : m_flag(flag) { m_flag = true; }
    ~TVScopeGuard() { m_flag = false; }

    TVScopeGuard(const TVScopeGuard&) = delete;
    TVScopeGuard& operator=(const TVScopeGuard&) = delete;

private:
    bool& m_flag;
};

#endif // TVSCOPEGUARD_H
